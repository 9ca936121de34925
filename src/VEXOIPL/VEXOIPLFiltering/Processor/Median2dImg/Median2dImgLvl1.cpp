#include "VEXOIPL/VEXOIPLFiltering/Processor/Median2dImg/Median2dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/HistoO1Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1MedianXStrip2dImg/HistoO1MedianXStrip2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K55Median2dImg/K55Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Median2dImg/LevelUse.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl1.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Median2dImgLvl1> registrator;

/// Wider images are cut along X, so that the histograms of all columns of a strip stay in the caches.
constexpr std::size_t widestUncut = 999;

}  // namespace

processor::ChoiceColl Median2dImgLvl1::foreseeChoices() const {
  const Step first = chooseByHalfSizes();
  if (first.make != &Median2dImgLvl1::statsMsr) return {first.choice};
  const auto levels = foreseeLevelUse(getStorage<attr::InImg>()->getBufferType(),
                                      getStorage<attr::InOutOptAllow8bitsCompression>());
  if (!levels) return {first.choice};
  return {first.choice, chooseByLevels(*levels).choice};
}

BoolResult Median2dImgLvl1::retrieveProvider(const core::BasePriority&, std::size_t step,
                                             Provider& provider) {
  if (_lastStepTaken) return true;
  const Step next = step == 0 ? chooseByHalfSizes() : chooseByRange();
  _lastStepTaken = next.make != &Median2dImgLvl1::statsMsr;
  recordChoice(next.choice);
  provider = (this->*next.make)();
  return true;
}

void Median2dImgLvl1::clearIntermediateData() {
  _lastStepTaken = false;
  _stats.reset();
  _range.reset();
}

Median2dImgLvl1::Step Median2dImgLvl1::chooseByHalfSizes() const {
  const std::uint32_t hx = getStorage<attr::InHalfKnlSizeX>(), hy = getStorage<attr::InHalfKnlSizeY>();
  if (hx == 1 && hy == 1)
    return {processor::choiceOf<K33Median2dImgLvl1>("both half sizes are 1"), &Median2dImgLvl1::k33Median};
  if (hx == 2 && hy == 2)
    return {processor::choiceOf<K55Median2dImgLvl1>("both half sizes are 2"), &Median2dImgLvl1::k55Median};
  return {processor::choiceOf<glbmsr::StatsMsrLvl1>("for half sizes " + std::to_string(hx) + " and " +
                                                    std::to_string(hy) + " the range of the samples decides"),
          &Median2dImgLvl1::statsMsr};
}

Median2dImgLvl1::Step Median2dImgLvl1::chooseByRange() {
  _range = makeMeasuredRange(_stats->minimum.getValue(), _stats->maximum.getValue());
  return chooseByLevels(decideLevelUse(getStorage<attr::InImg>()->getBufferType(),
                                       getStorage<attr::InOutOptAllow8bitsCompression>(), *_range));
}

Median2dImgLvl1::Step Median2dImgLvl1::chooseByLevels(const LevelUse& levels) const {
  if (!levels.used)
    return {processor::choiceOf<GenericMedian2dImgLvl1>(levels.reason), &Median2dImgLvl1::genericMedian};
  const std::size_t width = getStorage<attr::InImg>()->getSizeX();
  const std::string reason =
      levels.reason + ", and the image is " + std::to_string(width) + " columns wide, ";
  if (width <= widestUncut)
    return {processor::choiceOf<HistoO1Median2dImgLvl1>(reason + "under 1000"),
            &Median2dImgLvl1::histoO1Median};
  return {processor::choiceOf<HistoO1MedianXStrip2dImgLvl1>(reason + "over 999"),
          &Median2dImgLvl1::histoO1MedianXStrip};
}

Median2dImgLvl1::Provider Median2dImgLvl1::k33Median() {
  return processor::makeSingleActionProvider(
      processor::prepareChild<K33Median2dImgLvl1, attr::InImg, attr::OutImg>(*this));
}

Median2dImgLvl1::Provider Median2dImgLvl1::k55Median() {
  return processor::makeSingleActionProvider(
      processor::prepareChild<K55Median2dImgLvl1, attr::InImg, attr::OutImg>(*this));
}

Median2dImgLvl1::Provider Median2dImgLvl1::histoO1Median() {
  const auto child = processor::prepareChild<HistoO1Median2dImgLvl1, attr::InImg, attr::InHalfKnlSizeX,
                                             attr::InHalfKnlSizeY, attr::OutImg>(*this);
  child->set<attr::InInputRange>(_range);
  return processor::makeSingleActionProvider(child);
}

Median2dImgLvl1::Provider Median2dImgLvl1::histoO1MedianXStrip() {
  const auto child = processor::prepareChild<HistoO1MedianXStrip2dImgLvl1, attr::InImg, attr::InHalfKnlSizeX,
                                             attr::InHalfKnlSizeY, attr::OutImg>(*this);
  child->set<attr::InInputRange>(_range);
  return processor::makeSingleActionProvider(child);
}

Median2dImgLvl1::Provider Median2dImgLvl1::genericMedian() {
  return processor::makeSingleActionProvider(
      processor::prepareChild<GenericMedian2dImgLvl1, attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                              attr::OutImg>(*this));
}

Median2dImgLvl1::Provider Median2dImgLvl1::statsMsr() {
  _stats = boost::make_shared<attr::StatsResult>();
  const auto child = processor::prepareChild<glbmsr::StatsMsrLvl1, attr::InImg>(*this);
  child->set<attr::OutStatsResult>(_stats);
  return processor::makeSingleActionProvider(child);
}

namespace {

using Call = processor::CallForms<Median2dImgLvl1, attr::OutImg, attr::InImg, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY>;
// The permission is an input, and what has become of it the result.
using CompressingCall = processor::CallForms<Median2dImgLvl1, attr::InOutOptAllow8bitsCompression,
                                             attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                             attr::OutImg, attr::InOutOptAllow8bitsCompression>;

}  // namespace

boost::shared_ptr<image::BaseImage> median2dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                                                std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY) {
  return Call::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}

void median2dImg(const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
                 std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}

boost::shared_ptr<Median2dImgLvl1> median2dImg_async(const boost::shared_ptr<const image::BaseImage>& inImg,
                                                     std::uint32_t inHalfKnlSizeX,
                                                     std::uint32_t inHalfKnlSizeY) {
  return Call::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY);
}

boost::shared_ptr<Median2dImgLvl1> median2dImg_async(const boost::shared_ptr<const image::BaseImage>& inImg,
                                                     std::uint32_t inHalfKnlSizeX,
                                                     std::uint32_t inHalfKnlSizeY,
                                                     const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg);
}

bool median2dImg_allow8bitsCompression(const boost::shared_ptr<const image::BaseImage>& inImg,
                                       std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
                                       const boost::shared_ptr<image::BaseImage>& outImg) {
  return CompressingCall::run(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg, true);
}

boost::shared_ptr<Median2dImgLvl1> median2dImg_allow8bitsCompression_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<image::BaseImage>& outImg) {
  return CompressingCall::start(inImg, inHalfKnlSizeX, inHalfKnlSizeY, outImg, true);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<Median2dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
