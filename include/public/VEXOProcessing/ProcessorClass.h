#pragma once

#include <boost/make_shared.hpp>

#include "VEXOProcessing/Processor.h"

namespace vexo::processor {

/// Supplies the members that every processor class has. Derived states what only it can know:
///
///   class Despeckle final : public ProcessorClass<Despeckle, BaseAsync1Processor> {
///   public:
///     // Parameters, in declaration order.
///     using Attributes = AttributeList<attr::InImg, attr::OutImg>;
///     // Entry of a message table.
///     static constexpr auto toolTipId = eProcessorMessage::Despeckle;
///     // Where they are not the usual ones:
///     static constexpr std::uint32_t version = 2;
///     static ProcessorDispatchPolicy getDefaultDispatchPolicy();
///
///   private:
///     // Where it creates outputs, and where it has rules:
///     void initOutputs(OutputInitializerColl&) const override;
///     RulePtr createRule() const override;
///   };
template <class Derived, class Base>
class VEXO_API ProcessorClass : public Base {
public:
  static constexpr std::uint32_t version = 1;

  static Derived* createNewObject() { return new Derived; }
  BaseDynamicObject* createNew() const override { return createNewObject(); }
  static boost::shared_ptr<Derived> createSharedObject() { return boost::make_shared<Derived>(); }
  boost::shared_ptr<BaseDynamicObject> createShared() const override { return createSharedObject(); }
  static boost::shared_ptr<Derived> createProcessor() { return createSharedObject(); }
  static boost::shared_ptr<BaseProcessor> createBaseProcessor() { return createSharedObject(); }

  static const std::string& getTypeName() { return typeName<Derived>(); }
  const std::string& getClassName() const override { return getTypeName(); }
  static const std::string& getObjectNameStr() {
    static const auto& name = *new std::string(shortTypeName(getTypeName()));
    return name;
  }
  const std::string& getObjectName() const override { return getObjectNameStr(); }
  static const std::string& getToolTipStr() {
    static const auto& toolTip = *new std::string(formatMessage(Derived::toolTipId));
    return toolTip;
  }
  const std::string& getToolTip() const override { return getToolTipStr(); }
  static std::uint32_t getVersion() { return Derived::version; }
  std::uint32_t getClassVersion() const override { return getVersion(); }
  static ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {}; }

protected:
  virtual void initOutputs(OutputInitializerColl&) const {}

  void initAttributeColl(AttributeColl& attributes, OutputInitializerColl& outputInitializers) override {
    attributes = Derived::Attributes::create();
    initOutputs(outputInitializers);
  }
  BoolResult initDerived(AttributeColl& attributes, OutputInitializerColl& outputInitializers,
                         ProcessorDispatchPolicy& dispatchPolicy, RulePtr& rule,
                         eProcessorRulePolicy rulePolicy) override {
    initAttributeColl(attributes, outputInitializers);
    dispatchPolicy = Derived::getDefaultDispatchPolicy();
    rule = rulePolicy == eProcessorRulePolicy::WithoutRules ? none() : this->createRule();
    return true;
  }
};

}  // namespace vexo::processor
