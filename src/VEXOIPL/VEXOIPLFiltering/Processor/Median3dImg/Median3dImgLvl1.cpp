#include "VEXOIPL/VEXOIPLFiltering/Processor/Median3dImg/Median3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Median/LevelUse.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLvl1.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<Median3dImgLvl1> registrator;

using Call = processor::CallForms<Median3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ>;
// The permission is an input, and what has become of it the result.
using CompressingCall =
    processor::CallForms<Median3dImgLvl1, attr::InOutOptAllow8bitsCompression, attr::InImg3d,
                         attr::InHalfKnlSizeX, attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ, attr::OutImg,
                         attr::InOutOptAllow8bitsCompression>;

}  // namespace

MedianChooser::Step Median3dImgLvl1::chooseByHalfSizes() const {
  const std::uint32_t hx = getStorage<attr::InHalfKnlSizeX>(), hy = getStorage<attr::InHalfKnlSizeY>(),
                      hz = getStorage<attr::InHalfKnlSizeZ>();
  if (hx == 1 && hy == 1 && hz == 1)
    return {processor::choiceOf<GenericMedian3dImgLvl1>("all half sizes are 1"),
            [this] { return runChild<GenericMedian3dImgLvl1>(*this); }};
  return measureFor(std::to_string(hx) + ", " + std::to_string(hy) + " and " + std::to_string(hz));
}

MedianChooser::Step Median3dImgLvl1::chooseByLevels(const LevelUse& levels) const {
  if (!levels.used)
    return {processor::choiceOf<GenericMedian3dImgLvl1>(levels.reason),
            [this] { return runChild<GenericMedian3dImgLvl1>(*this); }};
  return {processor::choiceOf<HistoMedian3dImgLvl1>(levels.reason),
          [this] { return runChild<HistoMedian3dImgLvl1>(*this, with<attr::InInputRange>(getRange())); }};
}

void Median3dImgLvl1::noteLevels(const LevelUse& levels) {
  if (levels.fits) accessAttribute<attr::InOutOptAllow8bitsCompression>()->setStorage(false);
}

image::ImagePtr median3dImg(const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX,
                            std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ) {
  return Call::run(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}
void median3dImg(const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX,
                 std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ, const image::ImagePtr& outImg) {
  Call::fill(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}
boost::shared_ptr<Median3dImgLvl1> median3dImg_async(const image::ConstImagePtr& inImg3d,
                                                     std::uint32_t inHalfKnlSizeX,
                                                     std::uint32_t inHalfKnlSizeY,
                                                     std::uint32_t inHalfKnlSizeZ) {
  return Call::start(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}
boost::shared_ptr<Median3dImgLvl1> median3dImg_async(const image::ConstImagePtr& inImg3d,
                                                     std::uint32_t inHalfKnlSizeX,
                                                     std::uint32_t inHalfKnlSizeY,
                                                     std::uint32_t inHalfKnlSizeZ,
                                                     const image::ImagePtr& outImg) {
  return Call::startFill(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}
bool median3dImg_allow8bitsCompression(const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX,
                                       std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                                       const image::ImagePtr& outImg) {
  return CompressingCall::run(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg, true);
}
boost::shared_ptr<Median3dImgLvl1> median3dImg_allow8bitsCompression_async(
    const image::ConstImagePtr& inImg3d, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    std::uint32_t inHalfKnlSizeZ, const image::ImagePtr& outImg) {
  return CompressingCall::start(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg, true);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<Median3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
