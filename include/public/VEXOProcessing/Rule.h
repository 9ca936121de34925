#pragma once

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>
#include <functional>
#include <type_traits>

#include "VEXOProcessing/Attribute.h"

namespace vexo::processor {

/// A condition on the attributes of a processor, checked before each run.
class VEXO_API BaseRule {
public:
  virtual ~BaseRule();
  /// False with the reason when the condition does not hold.
  virtual BoolResult check() const = 0;
};

using RulePtr = boost::shared_ptr<BaseRule>;

/// A rule that calls a function.
VEXO_API RulePtr makeRule(std::function<BoolResult()> check);

/// Always holds.
VEXO_API RulePtr none();
VEXO_API RulePtr bothHold(const RulePtr& first, const RulePtr& second);
VEXO_API RulePtr oneHolds(const RulePtr& first, const RulePtr& second);

/// Both hold; the second is not checked when the first fails.
template <class A, class B>
std::enable_if_t<std::is_base_of_v<BaseRule, A> && std::is_base_of_v<BaseRule, B>, RulePtr> operator&&(
    const boost::shared_ptr<A>& first, const boost::shared_ptr<B>& second) {
  return bothHold(first, second);
}
/// One of them holds; fails with both reasons.
template <class A, class B>
std::enable_if_t<std::is_base_of_v<BaseRule, A> && std::is_base_of_v<BaseRule, B>, RulePtr> operator||(
    const boost::shared_ptr<A>& first, const boost::shared_ptr<B>& second) {
  return oneHolds(first, second);
}
/// `then` when the condition holds, `otherwise` when it does not.
VEXO_API RulePtr If(const RulePtr& condition, const RulePtr& then, const RulePtr& otherwise = none());

/// Holds when the (optional) attribute is set.
class VEXO_API RuleOptionalIsSet : public BaseRule {
public:
  explicit RuleOptionalIsSet(boost::weak_ptr<const BaseAttribute> attribute)
      : _attribute(std::move(attribute)) {}
  BoolResult check() const override;

private:
  boost::weak_ptr<const BaseAttribute> _attribute;
};

}  // namespace vexo::processor

namespace vexo::imaproc {

/// The images agree in all five sizes (and in the sample type). An image that is not set agrees with any: a
/// missing output will be created to fit.
VEXO_API processor::RulePtr matchSize(const boost::weak_ptr<const processor::BaseImageAttribute>& first,
                                      const boost::weak_ptr<const processor::BaseImageAttribute>& second);
VEXO_API processor::RulePtr matchSizeAndType(
    const boost::weak_ptr<const processor::BaseImageAttribute>& first,
    const boost::weak_ptr<const processor::BaseImageAttribute>& second);

/// The image is 32-bit float, when it is set.
VEXO_API processor::RulePtr isReal32(const boost::weak_ptr<const processor::BaseImageAttribute>& image);

/// True when both are set and are the same image buffer: the processor works in place.
VEXO_API bool isInSitu(const boost::shared_ptr<const processor::BaseImageAttribute>& input,
                       const boost::shared_ptr<const processor::BaseImageAttribute>& output);

}  // namespace vexo::imaproc
