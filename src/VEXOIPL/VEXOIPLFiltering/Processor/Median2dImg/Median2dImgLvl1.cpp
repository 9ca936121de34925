#include "VEXOIPL/VEXOIPLFiltering/Processor/Median2dImg/Median2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Median/LevelUse.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/HistoO1Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1MedianXStrip2dImg/HistoO1MedianXStrip2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K55Median2dImg/K55Median2dImgLvl1.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<Median2dImgLvl1> registrator;

using Call = processor::CallForms<Median2dImgLvl1, attr::OutImg, attr::InImg, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY>;
// The permission is an input, and what has become of it the result.
using CompressingCall = processor::CallForms<Median2dImgLvl1, attr::InOutOptAllow8bitsCompression,
                                             attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                             attr::OutImg, attr::InOutOptAllow8bitsCompression>;

/// Wider images are cut along X, so that the histograms of all columns of a strip stay in the caches.
constexpr std::size_t widestUncut = 999;

}  // namespace

MedianChooser::Step Median2dImgLvl1::chooseByHalfSizes() const {
  const std::uint32_t hx = getStorage<attr::InHalfKnlSizeX>(), hy = getStorage<attr::InHalfKnlSizeY>();
  if (hx == 1 && hy == 1)
    return {processor::choiceOf<K33Median2dImgLvl1>("both half sizes are 1"),
            [this] { return runChild<K33Median2dImgLvl1>(*this); }};
  if (hx == 2 && hy == 2)
    return {processor::choiceOf<K55Median2dImgLvl1>("both half sizes are 2"),
            [this] { return runChild<K55Median2dImgLvl1>(*this); }};
  return measureFor(std::to_string(hx) + " and " + std::to_string(hy));
}

MedianChooser::Step Median2dImgLvl1::chooseByLevels(const LevelUse& levels) const {
  if (!levels.used)
    return {processor::choiceOf<GenericMedian2dImgLvl1>(levels.reason),
            [this] { return runChild<GenericMedian2dImgLvl1>(*this); }};
  const std::size_t width = getStorage<attr::InImg>()->getSizeX();
  const std::string reason =
      levels.reason + ", and the image is " + std::to_string(width) + " columns wide, ";
  if (width <= widestUncut)
    return {processor::choiceOf<HistoO1Median2dImgLvl1>(reason + "under 1000"),
            [this] { return runChild<HistoO1Median2dImgLvl1>(*this, with<attr::InInputRange>(getRange())); }};
  return {processor::choiceOf<HistoO1MedianXStrip2dImgLvl1>(reason + "over 999"), [this] {
            return runChild<HistoO1MedianXStrip2dImgLvl1>(*this, with<attr::InInputRange>(getRange()));
          }};
}

image::ImagePtr median2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                            std::uint32_t inHalfKnlSizeY) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}
void median2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                 std::uint32_t inHalfKnlSizeY, const image::ImagePtr& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}
boost::shared_ptr<Median2dImgLvl1> median2dImg_async(const image::ConstImagePtr& inImg,
                                                     std::uint32_t inHalfKnlSizeX,
                                                     std::uint32_t inHalfKnlSizeY) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}
boost::shared_ptr<Median2dImgLvl1> median2dImg_async(const image::ConstImagePtr& inImg,
                                                     std::uint32_t inHalfKnlSizeX,
                                                     std::uint32_t inHalfKnlSizeY,
                                                     const image::ImagePtr& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}
bool median2dImg_allow8bitsCompression(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                       std::uint32_t inHalfKnlSizeY, const image::ImagePtr& outImg) {
  return CompressingCall::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg, true);
}
boost::shared_ptr<Median2dImgLvl1> median2dImg_allow8bitsCompression_async(const image::ConstImagePtr& inImg,
                                                                           std::uint32_t inHalfKnlSizeX,
                                                                           std::uint32_t inHalfKnlSizeY,
                                                                           const image::ImagePtr& outImg) {
  return CompressingCall::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg, true);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<Median2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
