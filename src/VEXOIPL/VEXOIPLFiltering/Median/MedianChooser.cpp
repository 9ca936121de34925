#include "VEXOIPL/VEXOIPLFiltering/Median/MedianChooser.h"

#include "VEXOIPL/VEXOIPLFiltering/Median/LevelUse.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl1.h"
#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::filter {
namespace {

image::ConstImagePtr inputOf(const processor::BaseProcessor& median) {
  return LevelImages(median).inputs.front();
}

}  // namespace

MedianChooser::Step MedianChooser::measureFor(const std::string& halfSizes) {
  return {processor::choiceOf<glbmsr::StatsMsrLvl1>("for half sizes " + halfSizes +
                                                    " the range of the samples decides"),
          nullptr};
}

processor::ChoiceColl MedianChooser::foreseeChoices() const {
  const Step first = chooseByHalfSizes();
  if (first.run) return {first.choice};
  const auto levels =
      foreseeLevelUse(inputOf(*this)->getBufferType(), getStorage<attr::InOutOptAllow8bitsCompression>());
  if (!levels) return {first.choice};
  return {first.choice, chooseByLevels(*levels).choice};
}

BoolResult MedianChooser::retrieveProvider(const core::BasePriority&, std::size_t step,
                                           core::ProviderPtr& provider) {
  if (_lastStepTaken) return true;
  const Step next = step == 0 ? chooseByHalfSizes() : chooseByRange();
  _lastStepTaken = static_cast<bool>(next.run);
  recordChoice(next.choice);
  provider = next.run ? next.run() : glbmsr::statsMsrStep(inputOf(*this), _stats);
  return true;
}

// Measuring is a small part of any median that follows it.
double MedianChooser::getStepCost(std::size_t step) const {
  const bool measures = !chooseByHalfSizes().run;
  return step == 0 ? 1 : measures ? 40 : 0;
}

MedianChooser::Step MedianChooser::chooseByRange() {
  _range = makeMeasuredRange(_stats->minimum.getValue(), _stats->maximum.getValue());
  const LevelUse levels = decideLevelUse(inputOf(*this)->getBufferType(),
                                         getStorage<attr::InOutOptAllow8bitsCompression>(), *_range);
  noteLevels(levels);
  return chooseByLevels(levels);
}

void MedianChooser::clearIntermediateData() {
  _lastStepTaken = false;
  _stats.reset();
  _range.reset();
}

}  // namespace vexo::imaproc::filter
