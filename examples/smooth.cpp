// Smooths an image file: smooth INPUT OUTPUT HALF_SIZE
#include <cstdlib>
#include <iostream>

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"
#include "VEXOImageIO/ImageIO.h"

using namespace vexo;

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: smooth INPUT OUTPUT HALF_SIZE\n";
    return 2;
  }
  try {
    const auto half = static_cast<std::uint32_t>(std::strtoul(argv[3], nullptr, 10));
    const boost::shared_ptr<image::Image> input = image::io::readImage(argv[1]);

    // A new image of the input's size and type.
    const boost::shared_ptr<image::BaseImage> smooth = imaproc::filter::meanSmoothing2dImg(input, half, half);

    // An output of another type, made by the caller, filled in the background.
    const auto fractional = image::Image::create(input->getGeometry(), image::eImageBufferType::Real32);
    const auto running = imaproc::filter::meanSmoothing2dImg_async(input, half, half, fractional);
    imaproc::filter::getAsyncProcessorOutput(running);

    image::io::writeImage(image::hostImage(smooth, "smooth"), argv[2]);
    std::cout << "first pixel: " << fractional->getRow<float>(0)[0] << "\n";
  } catch (const vexo::BaseException& failure) {
    std::cerr << failure.what() << "\n";
    return 1;
  }
  return 0;
}
