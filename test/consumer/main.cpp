#include <VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h>
#include <VEXOImageIO/ImageIO.h>
#include <VEXOMath/Kernel.h>
#include <VEXOProcessing/Call.h>
#include <VEXOProcessing/ProcessorFactory.h>
#include <VEXOSerialization/JsonArchive.h>

#include <iostream>

// Uses a piece of every module, as a user does: what is not exported fails here.
using namespace vexo;

namespace {

bool isRight(bool right, const char* what) {
  if (!right) std::cerr << what << " is wrong\n";
  return right;
}

}  // namespace

int main(int, char** argv) {
  // A ramp of slope 1 keeps its value inside.
  const auto ramp = image::Image::create({9, 9}, image::eImageBufferType::UInt8);
  for (int y = 0; y < 9; ++y)
    for (int x = 0; x < 9; ++x) ramp->getRow<std::uint8_t>(y)[x] = static_cast<std::uint8_t>(x);
  const auto smooth = imaproc::filter::meanSmoothing2dImg(ramp, 2, 1);
  const image::Image& result = image::hostImage(smooth, "smooth");

  const std::string path = std::string(argv[0]) + ".tif";
  image::io::writeImage(result, path);

  KernelXY kernel;
  const BoolResult parsed = KernelXY::fromText("0,0,1;1,0,2", kernel);

  const auto named =
      processor::ProcessorFactory::createProcessor("vexo::imaproc::filter::MeanSmoothing2dImgLvl1");
  named->init();
  named->set<imaproc::attr::InHalfKnlSizeX>(7);
  JsonOArchive out;
  named->write(out);
  JsonIArchive in(out.getText());
  const auto again = processor::prepareCall<imaproc::filter::MeanSmoothing2dImgLvl1>();
  const BoolResult read = again->read(in);

  bool refused = false;
  try {
    imaproc::filter::meanSmoothing2dImg(nullptr, 1, 1);
  } catch (const BaseException&) {
    refused = true;
  }
  const bool right = isRight(result.getRow<std::uint8_t>(4)[4] == 4, "the mean") &
                     isRight(image::io::readImage(path)->getSizeX() == 9, "the file") &
                     isRight(parsed && kernel.getWeightSum() == 3, "the kernel") &
                     isRight(read && again->getStorage<imaproc::attr::InHalfKnlSizeX>() == 7, "the archive") &
                     isRight(refused, "the refusal");
  return right ? 0 : 1;
}
