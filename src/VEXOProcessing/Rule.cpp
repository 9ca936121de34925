#include "VEXOProcessing/Rule.h"

#include <boost/make_shared.hpp>

namespace vexo::processor {
namespace {

class FunctionRule final : public BaseRule {
public:
  explicit FunctionRule(std::function<BoolResult()> check) : _check(std::move(check)) {}
  BoolResult check() const override { return _check(); }

private:
  std::function<BoolResult()> _check;
};

}  // namespace

BaseRule::~BaseRule() = default;

RulePtr makeRule(std::function<BoolResult()> check) {
  return boost::make_shared<FunctionRule>(std::move(check));
}

RulePtr none() {
  static const auto& rule = *new RulePtr(makeRule([] { return BoolResult(true); }));
  return rule;
}

RulePtr bothHold(const RulePtr& first, const RulePtr& second) {
  return makeRule([first, second] {
    const BoolResult result = first->check();
    return result ? second->check() : result;
  });
}

RulePtr oneHolds(const RulePtr& first, const RulePtr& second) {
  return makeRule([first, second] {
    const BoolResult one = first->check();
    if (one) return one;
    const BoolResult other = second->check();
    if (other) return other;
    return BoolResult::failure(one.getMessage() + "; and " + other.getMessage());
  });
}

RulePtr If(const RulePtr& condition, const RulePtr& then, const RulePtr& otherwise) {
  return makeRule([=] { return condition->check() ? then->check() : otherwise->check(); });
}

BoolResult RuleOptionalIsSet::check() const {
  const auto attribute = _attribute.lock();
  if (attribute && attribute->isSet()) return true;
  return BoolResult::failure(attribute ? attribute->getName() + " is not set" : "the attribute is gone");
}

}  // namespace vexo::processor

namespace vexo::imaproc {
namespace {

using processor::BaseImageAttribute;

processor::RulePtr match(const boost::weak_ptr<const BaseImageAttribute>& first,
                         const boost::weak_ptr<const BaseImageAttribute>& second, bool alsoType) {
  return processor::makeRule([=]() -> BoolResult {
    const auto a = first.lock(), b = second.lock();
    if (!a || !b) return BoolResult::failure("the attribute is gone");
    const auto imageA = a->getImage(), imageB = b->getImage();
    if (!imageA || !imageB) return true;
    if (imageA->getGeometry() != imageB->getGeometry())
      return BoolResult::failure(a->getName() + " and " + b->getName() + " differ in size: " +
                                 toString(imageA->getGeometry()) + " and " + toString(imageB->getGeometry()));
    if (alsoType && imageA->getBufferType() != imageB->getBufferType())
      return BoolResult::failure(a->getName() + " and " + b->getName() +
                                 " differ in type: " + toString(imageA->getBufferType()) + " and " +
                                 toString(imageB->getBufferType()));
    return true;
  });
}

}  // namespace

processor::RulePtr matchSize(const boost::weak_ptr<const BaseImageAttribute>& first,
                             const boost::weak_ptr<const BaseImageAttribute>& second) {
  return match(first, second, false);
}

processor::RulePtr matchSizeAndType(const boost::weak_ptr<const BaseImageAttribute>& first,
                                    const boost::weak_ptr<const BaseImageAttribute>& second) {
  return match(first, second, true);
}

processor::RulePtr isReal32(const boost::weak_ptr<const BaseImageAttribute>& image) {
  return processor::makeRule([image]() -> BoolResult {
    const auto attribute = image.lock();
    const auto given = attribute ? attribute->getImage() : nullptr;
    if (!given || given->getBufferType() == image::eImageBufferType::Real32) return true;
    return BoolResult::failure(attribute->getName() + " must be a float32 image, not " +
                               toString(given->getBufferType()));
  });
}

bool isInSitu(const boost::shared_ptr<const BaseImageAttribute>& input,
              const boost::shared_ptr<const BaseImageAttribute>& output) {
  const auto in = input->getImage(), out = output->getImage();
  return in && out && image::isSameBuffer(*in, *out);
}

}  // namespace vexo::imaproc
