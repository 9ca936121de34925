#pragma once

#include <boost/make_shared.hpp>

#include "VEXOProcessing/Steps.h"

namespace vexo::processor {

/// How the module of a message enumeration raises; the frame does it for those that belong to none.
template <class Enum, class = void>
inline constexpr ModuleRaise raiseOf = ProcessingModule::raise;
template <class Enum>
inline constexpr ModuleRaise raiseOf<Enum, std::void_t<typename MessageMap<Enum>::Module>> =
    MessageMap<Enum>::Module::raise;

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
///
/// Nothing but names stands here: what a processor does is code of BaseProcessor, which finds the names in
/// the ProcessorClassInfo.
template <class Derived, class Base>
class VEXO_API ProcessorClass : public Base {
public:
  static constexpr std::uint32_t version = 1;

  static Derived* createNewObject() { return new Derived; }
  static boost::shared_ptr<Derived> createSharedObject() { return boost::make_shared<Derived>(); }
  static boost::shared_ptr<Derived> createProcessor() { return createSharedObject(); }
  static boost::shared_ptr<BaseProcessor> createBaseProcessor() { return createSharedObject(); }

  static const std::string& getTypeName() { return typeName<Derived>(); }
  static const std::string& getObjectNameStr() {
    static const auto& name = *new std::string(shortTypeName(getTypeName()));
    return name;
  }
  static const std::string& getToolTipStr() {
    static const auto& toolTip = *new std::string(formatMessage(Derived::toolTipId));
    return toolTip;
  }
  static std::uint32_t getVersion() { return Derived::version; }
  static ProcessorDispatchPolicy getDefaultDispatchPolicy() { return {}; }

  static const ProcessorClassInfo& classInfo() {
    static const auto& info = *new ProcessorClassInfo{getTypeName(),
                                                      getObjectNameStr(),
                                                      getToolTipStr,
                                                      Derived::version,
                                                      Derived::getDefaultDispatchPolicy(),
                                                      Derived::Attributes::create,
                                                      Derived::Attributes::create(),
                                                      [] { return static_cast<BaseProcessor*>(new Derived); },
                                                      createBaseProcessor,
                                                      raiseOf<std::decay_t<decltype(Derived::toolTipId)>>};
    return info;
  }
  const ProcessorClassInfo& getClassInfo() const override { return classInfo(); }
};

}  // namespace vexo::processor
