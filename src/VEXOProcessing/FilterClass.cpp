#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc {
namespace {

using processor::BaseImageAttribute;
using HolderPtr = boost::shared_ptr<BaseImageAttribute>;

/// Calls a function with the first input image and each of the others, in their order.
template <class Visit>
void forEachPair(const processor::BaseProcessor& processor, const Visit& visit) {
  const auto isImage = [](const auto& attribute) {
    return dynamic_cast<const BaseImageAttribute*>(attribute.get()) && !attribute->getInfo().isWorkImage();
  };
  HolderPtr first;
  for (const auto& attribute : processor.getAttributes())
    if (!first && attribute->isInput() && isImage(attribute))
      first = boost::static_pointer_cast<BaseImageAttribute>(attribute);
  if (!first) return;
  for (const auto& attribute : processor.getAttributes())
    if (attribute != first && isImage(attribute))
      visit(first, boost::static_pointer_cast<BaseImageAttribute>(attribute));
}

}  // namespace

processor::RulePtr matchSizes(const processor::BaseProcessor& processor) {
  processor::RulePtr rule;
  forEachPair(processor, [&](const HolderPtr& first, const HolderPtr& other) {
    const auto agrees = matchSize(first, other);
    rule = rule ? rule && agrees : agrees;
  });
  return rule ? rule : processor::none();
}

void duplicateInput(const processor::BaseProcessor& processor,
                    processor::OutputInitializerColl& initializers) {
  forEachPair(processor, [&](const HolderPtr& first, const HolderPtr& other) {
    if (other->isOutput()) initializers[other->getName()] = processor::makeDuplicateInitializer(other, first);
  });
}

void promoteInput(const processor::BaseProcessor& processor, processor::OutputInitializerColl& initializers) {
  forEachPair(processor, [&](const HolderPtr& first, const HolderPtr& other) {
    if (other->isOutput()) initializers[other->getName()] = processor::makePromoteInitializer(other, first);
  });
}

}  // namespace vexo::imaproc
