// With FORGET it must not compile: nothing serves one attribute of the next level, and the compiler has to
// name it.

#include "VEXOProcessing/Levels.h"

namespace vexo::imaproc::forgotten {

struct InForgotten : processor::Attribute<InForgotten, bool> {
  static constexpr char toolTip[] = "A value";
};
class Next final : public processor::ProcessorClass<Next, processor::BaseProcessor> {
public:
  using Attributes = processor::AttributeList<attr::InSubImg2d, attr::InHalfKnlSizeX,
#ifdef FORGET
                                              InForgotten,
#endif
                                              attr::OutImg>;
  static constexpr auto toolTipId = processor::eProcessorMessage::NotSet;

private:
  void process(const core::RunShare&) override {}
};
class Level final : public processor::ProcessorClass<Level, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg, attr::InHalfKnlSizeX, attr::OutImg>;
  static constexpr auto toolTipId = processor::eProcessorMessage::NotSet;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override {
    provider = dispatchPlanes<Next>(priority, *this);
    return true;
  }
};

core::ProviderPtr use() {
  return processor::makeSingleActionProvider(Level::createProcessor());
}

}  // namespace vexo::imaproc::forgotten
