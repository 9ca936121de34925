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

boost::shared_ptr<const attr::Range> MedianChooser::getRange() const {
  return _range ? _range : getStorage<attr::InOptInputRange>();
}

MedianChooser::Step MedianChooser::chooseFirst() const {
  const Step first = chooseByHalfSizes();
  const auto given = getStorage<attr::InOptInputRange>();
  return first.run || !given ? first : chooseByRange(*given);
}

processor::ChoiceColl MedianChooser::foreseeChoices() const {
  const Step first = chooseFirst();
  if (first.run) return {first.choice};
  const auto levels =
      foreseeLevelUse(inputOf(*this)->getBufferType(), getStorage<attr::InOutOptAllow8bitsCompression>());
  if (!levels) return {first.choice};
  return {first.choice, chooseByLevels(*levels).choice};
}

BoolResult MedianChooser::retrieveProvider(const core::BasePriority&, std::size_t step,
                                           core::ProviderPtr& provider) {
  if (_lastStepTaken) return true;
  const Step next = step == 0 ? chooseFirst() : chooseByRange();
  _lastStepTaken = static_cast<bool>(next.run);
  recordChoice(next.choice);
  if (const auto range = getRange(); _lastStepTaken && range && !chooseByHalfSizes().run)
    noteLevels(levelsFor(*range));
  provider = next.run ? next.run() : glbmsr::statsMsrStep(inputOf(*this), _stats);
  return true;
}

// Measuring is a small part of any median that follows it.
double MedianChooser::getStepCost(std::size_t step) const {
  const bool measures = !chooseFirst().run;
  return step == 0 ? 1 : measures ? 40 : 0;
}

LevelUse MedianChooser::levelsFor(const attr::Range& range) const {
  return decideLevelUse(inputOf(*this)->getBufferType(), getStorage<attr::InOutOptAllow8bitsCompression>(),
                        range);
}

MedianChooser::Step MedianChooser::chooseByRange(const attr::Range& range) const {
  return chooseByLevels(levelsFor(range));
}

MedianChooser::Step MedianChooser::chooseByRange() {
  _range = makeMeasuredRange(_stats->minimum.getValue(), _stats->maximum.getValue());
  return chooseByRange(*_range);
}

void MedianChooser::clearIntermediateData() {
  _lastStepTaken = false;
  _stats.reset();
  _range.reset();
}

}  // namespace vexo::imaproc::filter
