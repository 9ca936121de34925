#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc {
namespace {

using HolderPtr = boost::shared_ptr<processor::BaseImageAttribute>;

/// The first input image, then the others in their order.
std::vector<HolderPtr> imagesOf(const processor::BaseProcessor& processor) {
  std::vector<HolderPtr> holders;
  for (const auto& attribute : processor.getAttributes()) {
    const auto holder = boost::dynamic_pointer_cast<processor::BaseImageAttribute>(attribute);
    if (!holder || holder->getInfo().isWorkImage()) continue;
    holders.push_back(holder);
    if (holders.front()->isOutput() && holder->isInput()) std::swap(holders.front(), holders.back());
  }
  return holders;
}

using MakeInitializer = decltype(processor::makeDuplicateInitializer);

void initEach(const processor::BaseProcessor& processor, processor::OutputInitializerColl& initializers,
              MakeInitializer* make) {
  const std::vector<HolderPtr> holders = imagesOf(processor);
  for (const HolderPtr& holder : holders)
    if (!holder->isInput() && !holder->isOptional())
      initializers[holder->getName()] = make(holder, holders.front());
}

}  // namespace

processor::RulePtr matchSizes(const processor::BaseProcessor& processor) {
  const std::vector<HolderPtr> holders = imagesOf(processor);
  processor::RulePtr rule = processor::none();
  for (std::size_t i = 1; i < holders.size(); ++i) {
    const auto agrees = matchSize(holders.front(), holders[i]);
    rule = i == 1 ? agrees : rule && agrees;
  }
  return rule;
}

void duplicateInput(const processor::BaseProcessor& processor,
                    processor::OutputInitializerColl& initializers) {
  initEach(processor, initializers, processor::makeDuplicateInitializer);
}

void promoteInput(const processor::BaseProcessor& processor, processor::OutputInitializerColl& initializers) {
  initEach(processor, initializers, processor::makePromoteInitializer);
}

}  // namespace vexo::imaproc
