#include <VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h>

// A ramp of slope 1 keeps its value inside.
int main() {
  const auto ramp = vexo::image::Image::create({9, 9}, vexo::image::eImageBufferType::UInt8);
  for (int y = 0; y < 9; ++y)
    for (int x = 0; x < 9; ++x) ramp->getRow<std::uint8_t>(y)[x] = static_cast<std::uint8_t>(x);
  const auto smooth = vexo::imaproc::filter::meanSmoothing2dImg(ramp, 2, 1);
  return vexo::image::hostImage(smooth, "smooth").getRow<std::uint8_t>(4)[4] == 4 ? 0 : 1;
}
