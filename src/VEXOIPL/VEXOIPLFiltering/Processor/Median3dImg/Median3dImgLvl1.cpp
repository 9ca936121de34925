#include "VEXOIPL/VEXOIPLFiltering/Processor/Median3dImg/Median3dImgLvl1.h"

#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Median2dImg/LevelUse.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl1.h"
#include "VEXOProcessing/Call.h"
#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::imaproc::filter {
namespace {

const processor::ProcessorRegistrator<Median3dImgLvl1> registrator;

}  // namespace

processor::ChoiceColl Median3dImgLvl1::foreseeChoices() const {
  const Step first = chooseByHalfSizes();
  if (first.make != &Median3dImgLvl1::statsMsr) return {first.choice};
  const auto levels = foreseeLevelUse(getStorage<attr::InImg3d>()->getBufferType(),
                                      getStorage<attr::InOutOptAllow8bitsCompression>());
  if (!levels) return {first.choice};
  return {first.choice, chooseByLevels(*levels).choice};
}

BoolResult Median3dImgLvl1::retrieveProvider(const core::BasePriority&, std::size_t step,
                                             Provider& provider) {
  if (_lastStepTaken) return true;
  const Step next = step == 0 ? chooseByHalfSizes() : chooseByRange();
  _lastStepTaken = next.make != &Median3dImgLvl1::statsMsr;
  recordChoice(next.choice);
  provider = (this->*next.make)();
  return true;
}

void Median3dImgLvl1::clearIntermediateData() {
  _lastStepTaken = false;
  _stats.reset();
  _range.reset();
}

Median3dImgLvl1::Step Median3dImgLvl1::chooseByHalfSizes() const {
  const std::uint32_t hx = getStorage<attr::InHalfKnlSizeX>(), hy = getStorage<attr::InHalfKnlSizeY>(),
                      hz = getStorage<attr::InHalfKnlSizeZ>();
  if (hx == 1 && hy == 1 && hz == 1)
    return {processor::choiceOf<GenericMedian3dImgLvl1>("all half sizes are 1"),
            &Median3dImgLvl1::genericMedian};
  return {processor::choiceOf<glbmsr::StatsMsrLvl1>("for half sizes " + std::to_string(hx) + ", " +
                                                    std::to_string(hy) + " and " + std::to_string(hz) +
                                                    " the range of the samples decides"),
          &Median3dImgLvl1::statsMsr};
}

Median3dImgLvl1::Step Median3dImgLvl1::chooseByRange() {
  _range = makeMeasuredRange(_stats->minimum.getValue(), _stats->maximum.getValue());
  const LevelUse levels = decideLevelUse(getStorage<attr::InImg3d>()->getBufferType(),
                                         getStorage<attr::InOutOptAllow8bitsCompression>(), *_range);
  if (levels.fits) accessAttribute<attr::InOutOptAllow8bitsCompression>()->setStorage(false);
  return chooseByLevels(levels);
}

Median3dImgLvl1::Step Median3dImgLvl1::chooseByLevels(const LevelUse& levels) const {
  if (levels.used)
    return {processor::choiceOf<HistoMedian3dImgLvl1>(levels.reason), &Median3dImgLvl1::histoMedian};
  return {processor::choiceOf<GenericMedian3dImgLvl1>(levels.reason), &Median3dImgLvl1::genericMedian};
}

Median3dImgLvl1::Provider Median3dImgLvl1::histoMedian() {
  const auto child = processor::prepareChild<HistoMedian3dImgLvl1, attr::InImg3d, attr::InHalfKnlSizeX,
                                             attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ, attr::OutImg>(*this);
  child->set<attr::InInputRange>(_range);
  return processor::makeSingleActionProvider(child);
}

Median3dImgLvl1::Provider Median3dImgLvl1::genericMedian() {
  return processor::makeSingleActionProvider(
      processor::prepareChild<GenericMedian3dImgLvl1, attr::InImg3d, attr::InHalfKnlSizeX,
                              attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ, attr::OutImg>(*this));
}

Median3dImgLvl1::Provider Median3dImgLvl1::statsMsr() {
  _stats = boost::make_shared<attr::StatsResult>();
  const auto child = processor::prepareCall<glbmsr::StatsMsrLvl1, attr::InImg, attr::OutStatsResult>(
      getStorage<attr::InImg3d>(), _stats);
  return processor::makeSingleActionProvider(child);
}

namespace {

using Call = processor::CallForms<Median3dImgLvl1, attr::OutImg, attr::InImg3d, attr::InHalfKnlSizeX,
                                  attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ>;
// The permission is an input, and what has become of it the result.
using CompressingCall =
    processor::CallForms<Median3dImgLvl1, attr::InOutOptAllow8bitsCompression, attr::InImg3d,
                         attr::InHalfKnlSizeX, attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ, attr::OutImg,
                         attr::InOutOptAllow8bitsCompression>;

}  // namespace

boost::shared_ptr<image::BaseImage> median3dImg(const boost::shared_ptr<const image::BaseImage>& inImg3d,
                                                std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
                                                std::uint32_t inHalfKnlSizeZ) {
  return Call::run(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}

void median3dImg(const boost::shared_ptr<const image::BaseImage>& inImg3d, std::uint32_t inHalfKnlSizeX,
                 std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                 const boost::shared_ptr<image::BaseImage>& outImg) {
  Call::fill(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}

boost::shared_ptr<Median3dImgLvl1> median3dImg_async(const boost::shared_ptr<const image::BaseImage>& inImg3d,
                                                     std::uint32_t inHalfKnlSizeX,
                                                     std::uint32_t inHalfKnlSizeY,
                                                     std::uint32_t inHalfKnlSizeZ) {
  return Call::start(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}

boost::shared_ptr<Median3dImgLvl1> median3dImg_async(const boost::shared_ptr<const image::BaseImage>& inImg3d,
                                                     std::uint32_t inHalfKnlSizeX,
                                                     std::uint32_t inHalfKnlSizeY,
                                                     std::uint32_t inHalfKnlSizeZ,
                                                     const boost::shared_ptr<image::BaseImage>& outImg) {
  return Call::startFill(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}

bool median3dImg_allow8bitsCompression(const boost::shared_ptr<const image::BaseImage>& inImg3d,
                                       std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
                                       std::uint32_t inHalfKnlSizeZ,
                                       const boost::shared_ptr<image::BaseImage>& outImg) {
  return CompressingCall::run(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg, true);
}

boost::shared_ptr<Median3dImgLvl1> median3dImg_allow8bitsCompression_async(
    const boost::shared_ptr<const image::BaseImage>& inImg3d, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
    const boost::shared_ptr<image::BaseImage>& outImg) {
  return CompressingCall::start(inImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg, true);
}

boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<Median3dImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
