#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "VEXOCore/Action.h"
#include "VEXOCore/BaseDynamicObject.h"
#include "VEXOProcessing/Attribute.h"
#include "VEXOProcessing/OutputInitializer.h"
#include "VEXOProcessing/ProcessingMessages.h"
#include "VEXOProcessing/Rule.h"

namespace vexo::processor {

enum class eProcessorRulePolicy { WithRules = 0, WithoutRules = 1 };

/// How the strips of a third-level class are cut: each but the last has at least `minStripLength` positions
/// on the axis of the cut, and at least `lengthPerMargin` times the kernel margin, so that few positions are
/// read twice. Nothing else decides the cut, so that results do not depend on the number of threads.
struct ProcessorDispatchPolicy {
  std::size_t minStripLength = 64;
  std::size_t lengthPerMargin = 8;
};

class BaseProcessor;

/// What a processor class states once for all its objects; see ProcessorClass.
struct ProcessorClassInfo {
  const std::string& typeName;
  const std::string& objectName;
  const std::string& (*getToolTip)();
  std::uint32_t version;
  ProcessorDispatchPolicy dispatchPolicy;
  AttributeColl (*createAttributes)();
  AttributeColl sample;  ///< attributes as they are made, to be looked at
  BaseProcessor* (*createNew)();
  boost::shared_ptr<BaseProcessor> (*createShared)();
  ModuleRaise raise;
};

/// The child that a processor runs to do its work, by class name without namespace, and what speaks for it.
struct ChildChoice {
  std::string child;
  std::string reason;
};
using ChoiceColl = std::vector<ChildChoice>;

template <class Child>
ChildChoice choiceOf(std::string reason) {
  return {Child::getObjectNameStr(), std::move(reason)};
}

/// A filter, or a step of one: an object with typed attributes that can be checked and run.
///
/// Life: made empty; init() creates attributes and rules; set<A>() gives values; run() checks, creates
/// missing outputs and computes; getStorage<A>() reads the results. It may be run again with other values.
/// One caller at a time.
class VEXO_API BaseProcessor : public core::BaseAction, public BaseDynamicObject {
public:
  ~BaseProcessor() override;

  BoolResult init(eProcessorRulePolicy rulePolicy = eProcessorRulePolicy::WithRules);
  bool isInitialised() const { return _initialised; }
  eProcessorRulePolicy getRulePolicy() const { return _rulePolicy; }

  virtual const ProcessorClassInfo& getClassInfo() const = 0;
  const std::string& getClassName() const final { return getClassInfo().typeName; }
  const std::string& getObjectName() const { return getClassInfo().objectName; }
  const std::string& getToolTip() const { return getClassInfo().getToolTip(); }
  std::uint32_t getClassVersion() const { return getClassInfo().version; }
  BaseDynamicObject* createNew() const final { return getClassInfo().createNew(); }
  boost::shared_ptr<BaseDynamicObject> createShared() const final { return getClassInfo().createShared(); }
  const ProcessorDispatchPolicy& getDispatchPolicy() const { return _dispatchPolicy; }

  /// In declaration order; empty before init().
  const AttributeColl& getAttributes() const { return _attributes; }
  /// Null when there is none of that name.
  boost::shared_ptr<BaseAttribute> findAttribute(const std::string& name) const;

  /// Throws, and leaves the old value, when the processor has no such attribute, when it is running, or when
  /// the attribute refuses the value (a null handle, a number out of range).
  template <class A>
  void set(const typename A::StorageType& value) {
    const boost::shared_ptr<BaseAttribute>& attribute = accessOfClass(typeid(A), A::info());
    checkNotRunning();
    static_cast<A&>(*attribute).setStorage(value);
    noteNewValue(*attribute);
  }
  /// The value or the default; a null handle when there is neither. Throws when the processor has no such
  /// attribute.
  template <class A>
  typename A::StorageType getStorage() const {
    return static_cast<const A&>(*accessOfClass(typeid(A), A::info())).getStorage();
  }
  /// Asks for an optional output that its initializer can create: each run that is not given one makes it. A
  /// copy asks for it, too; the serial form does not.
  template <class A>
  void request() {
    requestOutput(*accessAttribute<A>());
  }
  void requestOutput(const BaseAttribute& output);
  /// The attribute itself, for rules, initializers and splits. A value given through it is not checked
  /// against a run in progress, whose pieces may read it at any time.
  template <class A>
  boost::shared_ptr<A> accessAttribute() const {
    return boost::static_pointer_cast<A>(accessOfClass(typeid(A), A::info()));
  }

  /// What a run checks before it starts: mandatory inputs are set, no output overlaps an input in memory (but
  /// may be the same image), the rule holds. Throws the reason. Outputs that the run before created are
  /// dropped first: the next run creates its own.
  void checkCall();
  /// What the rule says of the present values.
  BoolResult checkRule() const { return _rule ? _rule->check() : BoolResult(true); }
  /// Where there are several implementations: those that the last run has chosen, in order, also when it
  /// failed; before a run with the attributes as they are now, those that the attributes alone decide, none
  /// while a mandatory input is missing. A value given through an attribute itself does not end what a run
  /// has left. Throws during a run.
  ChoiceColl explain() const;
  /// Geometry and type of the output image of that name, given or to be created; throws when it cannot be
  /// told yet.
  ImageOutputInitializer::Description describeOutput(const BaseImageAttribute& output) const;

  /// Attribute values and settings of a processor of the same class. False when it is of another, or not
  /// initialised.
  BoolResult copy(const BaseDynamicObject& other) override;
  bool hasCopySupport() const override { return true; }

  /// Serial form: a section named by the class with "version" and the attributes that are set, but for
  /// created outputs. Reading refuses a greater version with false, anything else that is wrong with an
  /// UnHandleException; either way the object stays as it was.
  virtual void write(BaseOArchive& archive) const;
  virtual BoolResult read(BaseIArchive& archive);

  /// Fails the run for a reason of the filter's own, as the exception of its module.
  [[noreturn]] void raiseFailure(const boost::source_location& where, const std::string& why) const;

  /// Runs as a part of another run, in its threads.
  void runNested(const core::RunShare& share) { execute(share); }

protected:
  virtual void initAttributeColl(AttributeColl& attributes, OutputInitializerColl& outputInitializers);
  virtual BoolResult initDerived(AttributeColl& attributes, OutputInitializerColl& outputInitializers,
                                 ProcessorDispatchPolicy& dispatchPolicy, RulePtr& rule,
                                 eProcessorRulePolicy rulePolicy);
  virtual void initOutputs(OutputInitializerColl&) const {}
  virtual RulePtr createRule() const { return none(); }

  /// What a step costs beside the others, in any unit: its part of the progress. Asked before each step.
  virtual double getStepCost(std::size_t) const { return 1; }
  /// Called before and after the work of a run.
  virtual BoolResult preProcess() { return true; }
  virtual void clearIntermediateData() {}
  /// What the attributes alone decide of the choices that a run makes; the mandatory ones have values.
  virtual ChoiceColl foreseeChoices() const { return {}; }
  /// Called where a run chooses. The reason tells of the chosen child alone, no class name of another.
  void recordChoice(ChildChoice choice) { _choices.push_back(std::move(choice)); }
  /// The work.
  virtual void process(const core::RunShare& share) = 0;

  void execute(const core::RunShare& share) final;
  std::string getRunName() const final { return getObjectName(); }

private:
  void checkNotRunning() const;
  void checkNow();
  boost::shared_ptr<BaseAttribute> findMissingInput() const;
  const boost::shared_ptr<BaseAttribute>& accessOfClass(const std::type_info& attributeClass,
                                                        const AttributeInfo& info) const;
  [[noreturn]] void raiseNoSuchAttribute(const std::string& attributeName) const;
  void checkOverlaps() const;
  void noteNewValue(const BaseAttribute& attribute);
  BoolResult copyValues(const BaseProcessor& other);
  bool isCreated(const BaseAttribute& attribute) const;
  bool isRequested(const BaseAttribute& attribute) const;
  boost::shared_ptr<BaseOutputInitializer> findInitializer(const BaseAttribute& attribute) const;
  void createMissingOutputs();
  void dropCreatedOutputs();
  void releaseWorkImages();

  bool _initialised = false;
  eProcessorRulePolicy _rulePolicy = eProcessorRulePolicy::WithRules;
  AttributeColl _attributes;
  OutputInitializerColl _outputInitializers;
  ProcessorDispatchPolicy _dispatchPolicy;
  RulePtr _rule;
  /// Outputs that the last run created, not the caller, with what it created.
  std::vector<std::pair<boost::shared_ptr<BaseAttribute>, boost::shared_ptr<const image::BaseImage>>>
      _createdOutputs;
  std::vector<const BaseAttribute*> _requested;  ///< optional outputs
  ChoiceColl _choices;                           ///< of the last run
  bool _choicesAreOfNow = false;                 ///< whether that run had the present attributes
  AttributeColl _emptyWork;                      ///< work images that were not set when the run began
};

/// Runs and waits; throws whatever made the run fail.
VEXO_API void executeSyncRun(const boost::shared_ptr<BaseProcessor>& processor);

/// Waits for a run in the background; throws the failure of the run when it failed.
VEXO_API BaseProcessor& awaitRun(BaseProcessor* processor);

}  // namespace vexo::processor
