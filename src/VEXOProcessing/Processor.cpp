#include "VEXOProcessing/Processor.h"

#include <log4cplus/logger.h>

#include <algorithm>
#include <cstdlib>

#include "VEXOSerialization/SerializationMessages.h"

namespace vexo::processor {
namespace {

template <class... Args>
[[noreturn]] void fail(const boost::source_location& where, eProcessorMessage message, const Args&... args) {
  raiseMessage<BaseException>(getProcessingLogger(), where, message, args...);
}

/// Calls a function at the end of the scope, whichever way it is left.
template <class Function>
class AtExit {
public:
  explicit AtExit(Function function) : _function(std::move(function)) {}
  ~AtExit() { _function(); }

private:
  Function _function;
};

}  // namespace

BaseProcessor::~BaseProcessor() = default;

BoolResult BaseProcessor::init(eProcessorRulePolicy rulePolicy) {
  checkNotRunning();
  _choicesAreOfNow = false;
  _createdOutputs.clear();
  _outputInitializers.clear();
  _requested.clear();
  _attributes.clear();
  _rulePolicy = rulePolicy;
  const BoolResult result = initDerived(_attributes, _outputInitializers, _dispatchPolicy, _rule, rulePolicy);
  for (const auto& initializer : _outputInitializers) initializer.second->setRaise(getClassInfo().raise);
  for (const auto& attribute : _attributes) attribute->setOwner(&getObjectName());
  _initialised = result.isOk();
  return result;
}

void BaseProcessor::initAttributeColl(AttributeColl& attributes, OutputInitializerColl& outputInitializers) {
  attributes = getClassInfo().createAttributes();
  initOutputs(outputInitializers);
}

BoolResult BaseProcessor::initDerived(AttributeColl& attributes, OutputInitializerColl& outputInitializers,
                                      ProcessorDispatchPolicy& dispatchPolicy, RulePtr& rule,
                                      eProcessorRulePolicy rulePolicy) {
  initAttributeColl(attributes, outputInitializers);
  dispatchPolicy = getClassInfo().dispatchPolicy;
  rule = rulePolicy == eProcessorRulePolicy::WithoutRules ? none() : createRule();
  return true;
}

const boost::shared_ptr<BaseAttribute>& BaseProcessor::accessOfClass(const std::type_info& attributeClass,
                                                                     const AttributeInfo& info) const {
  for (const auto& attribute : _attributes) {
    const BaseAttribute& held = *attribute;
    if (typeid(held) == attributeClass) return attribute;
  }
  raiseNoSuchAttribute(info.name);
}

boost::shared_ptr<BaseAttribute> BaseProcessor::findAttribute(const std::string& name) const {
  for (const auto& attribute : _attributes)
    if (attribute->getName() == name) return attribute;
  return nullptr;
}

boost::shared_ptr<BaseAttribute> BaseProcessor::findMissingInput() const {
  // What goes in and out may be created, too.
  for (const auto& attribute : _attributes)
    if (attribute->isInput() && !attribute->isOptional() && !attribute->isSet() && !attribute->hasDefault() &&
        !findInitializer(*attribute))
      return attribute;
  return nullptr;
}

boost::shared_ptr<BaseOutputInitializer> BaseProcessor::findInitializer(
    const BaseAttribute& attribute) const {
  const auto found = _outputInitializers.find(attribute.getName());
  return found == _outputInitializers.end() ? nullptr : found->second;
}

void BaseProcessor::requestOutput(const BaseAttribute& output) {
  checkNotRunning();
  const auto own = findAttribute(output.getName());
  if (!own) raiseNoSuchAttribute(output.getName());
  if (!findInitializer(*own))
    fail(VEXO_HERE, eProcessorMessage::NoInitializer, getObjectName(), output.getName());
  if (!isRequested(*own)) _requested.push_back(own.get());
}

bool BaseProcessor::isRequested(const BaseAttribute& attribute) const {
  return std::find(_requested.begin(), _requested.end(), &attribute) != _requested.end();
}

void BaseProcessor::raiseFailure(const boost::source_location& where, const std::string& why) const {
  getClassInfo().raise(where, formatMessage(eProcessorMessage::RuleFailed, getObjectName(), why));
  std::abort();  // it has thrown
}

void BaseProcessor::checkNotRunning() const {
  if (isRunning()) fail(VEXO_HERE, eProcessorMessage::StillRunning, getObjectName());
}

void BaseProcessor::raiseNoSuchAttribute(const std::string& attributeName) const {
  if (!_initialised) fail(VEXO_HERE, eProcessorMessage::NotInitialised, getObjectName());
  fail(VEXO_HERE, eProcessorMessage::NoSuchAttribute, getObjectName(), cut(attributeName));
}

void BaseProcessor::checkCall() {
  checkNotRunning();
  checkNow();
}

void BaseProcessor::checkNow() {
  if (!_initialised) fail(VEXO_HERE, eProcessorMessage::NotInitialised, getObjectName());
  dropCreatedOutputs();
  if (const auto missing = findMissingInput())
    fail(VEXO_HERE, eProcessorMessage::MissingInput, getObjectName(), missing->getName());
  if (_rulePolicy == eProcessorRulePolicy::WithoutRules) return;
  checkOverlaps();
  if (const BoolResult held = _rule->check(); !held) raiseFailure(VEXO_HERE, held.getMessage());
}

void BaseProcessor::checkOverlaps() const {
  for (const auto& first : _attributes) {
    const auto* output = dynamic_cast<const BaseImageAttribute*>(first.get());
    if (!output || !output->isOutput() || !output->isSet()) continue;
    for (const auto& second : _attributes) {
      const auto* other = dynamic_cast<const BaseImageAttribute*>(second.get());
      if (!other || other == output || !other->isSet()) continue;
      const image::eOverlap overlap = image::getOverlap(*output->getImage(), *other->getImage());
      // An input may be the output; two outputs must have nothing in common.
      if (overlap == image::eOverlap::Partial || (overlap == image::eOverlap::Same && !other->isInput()))
        fail(VEXO_HERE, eProcessorMessage::OverlappingImages, getObjectName(), other->getName(),
             output->getName());
    }
  }
}

ChoiceColl BaseProcessor::explain() const {
  checkNotRunning();
  if (_choicesAreOfNow) return _choices;
  return _initialised && !findMissingInput() ? foreseeChoices() : ChoiceColl();
}

ImageOutputInitializer::Description BaseProcessor::describeOutput(const BaseImageAttribute& output) const {
  if (const auto image = output.getImage(); image && !isCreated(output))
    return {image->getGeometry(), image->getBufferType()};
  const auto initializer = boost::dynamic_pointer_cast<const ImageOutputInitializer>(findInitializer(output));
  if (!initializer) fail(VEXO_HERE, eProcessorMessage::NoInitializer, getObjectName(), output.getName());
  return initializer->describe();
}

void BaseProcessor::noteNewValue(const BaseAttribute& attribute) {
  _choicesAreOfNow = false;
  const auto isIt = [&](const auto& created) { return created.first.get() == &attribute; };
  _createdOutputs.erase(std::remove_if(_createdOutputs.begin(), _createdOutputs.end(), isIt),
                        _createdOutputs.end());
}

bool BaseProcessor::isCreated(const BaseAttribute& attribute) const {
  for (const auto& [created, image] : _createdOutputs) {
    if (created.get() != &attribute) continue;
    // The caller may have set an image of its own since.
    const auto* holder = dynamic_cast<const BaseImageAttribute*>(&attribute);
    return !holder || holder->getImage() == image;
  }
  return false;
}

void BaseProcessor::createMissingOutputs() {
  for (const auto& attribute : _attributes) {
    if (!attribute->isOutput() || attribute->isSet()) continue;
    if (attribute->isOptional() && !isRequested(*attribute)) continue;
    const auto initializer = findInitializer(*attribute);
    // Outputs that are no image, and work images, may be set by the run itself.
    if (!initializer) continue;
    try {
      initializer->initOutputAttribute();
    } catch (const OutOfMemoryException& failure) {
      raiseWith<OutOfMemoryException>(
          failure.getBytes(), ProcessingModule::name, VEXO_HERE,
          getObjectName() + ": " + attribute->getName() + ": " + failure.getMessage());
    }
    const auto holder = boost::dynamic_pointer_cast<const BaseImageAttribute>(attribute);
    _createdOutputs.emplace_back(attribute, holder ? holder->getImage() : nullptr);
  }
}

void BaseProcessor::dropCreatedOutputs() {
  for (const auto& [attribute, image] : _createdOutputs)
    if (isCreated(*attribute)) attribute->clear();
  _createdOutputs.clear();
}

void BaseProcessor::releaseWorkImages() {
  for (const auto& attribute : _emptyWork) attribute->clear();
  _emptyWork.clear();
}

void BaseProcessor::execute(const core::RunShare& share) {
  _choices.clear();
  _choicesAreOfNow = true;
  checkNow();
  for (const auto& attribute : _attributes)
    if (attribute->getInfo().isWorkImage() && !attribute->isSet()) _emptyWork.push_back(attribute);
  const AtExit cleanUp([this] {
    clearIntermediateData();
    releaseWorkImages();
  });
  try {
    createMissingOutputs();
    if (const BoolResult ready = preProcess(); !ready) raiseFailure(VEXO_HERE, ready.getMessage());
    process(share);
  } catch (...) {
    // Half a result is no result.
    dropCreatedOutputs();
    throw;
  }
}

BoolResult BaseProcessor::copy(const BaseDynamicObject& other) {
  const auto* twin = dynamic_cast<const BaseProcessor*>(&other);
  if (!twin || twin->getClassName() != getClassName())
    return BoolResult::failure(getClassName() + " cannot copy a " + other.getClassName());
  if (twin == this) return true;
  if (!twin->_initialised)
    return BoolResult::failure("the " + getClassName() + " to copy is not initialised");
  if (const BoolResult ready = init(twin->_rulePolicy); !ready) return ready;
  _dispatchPolicy = twin->_dispatchPolicy;
  setThreadLimit(twin->getThreadLimit());
  setPriority(twin->getPriority());
  return copyValues(*twin);
}

BoolResult BaseProcessor::copyValues(const BaseProcessor& other) {
  _choicesAreOfNow = false;
  _createdOutputs.clear();
  _requested.clear();
  for (std::size_t i = 0; i < _attributes.size(); ++i) {
    if (other.isRequested(*other._attributes[i])) _requested.push_back(_attributes[i].get());
    if (const BoolResult copied = _attributes[i]->copyValue(*other._attributes[i]); !copied) return copied;
    // A result stays a result: the copy will create its own rather than write over the original's.
    for (const auto& [created, image] : other._createdOutputs)
      if (created == other._attributes[i] && other.isCreated(*created))
        _createdOutputs.emplace_back(_attributes[i], image);
  }
  return true;
}

void BaseProcessor::write(BaseOArchive& archive) const {
  ArchiveSectionManager section(archive, getClassName());
  archive.write("version", getClassVersion());
  // A created output is a result, not a setting: the processor that is read back creates its own.
  for (const auto& attribute : _attributes)
    if (!isCreated(*attribute)) attribute->write(archive);
}

BoolResult BaseProcessor::read(BaseIArchive& archive) {
  checkNotRunning();
  try {
    ArchiveSectionManager section(archive, getClassName());
    std::uint32_t version = 0;
    archive.read("version", version);
    if (version == 0) raiseRefusedValue("version", "it is 0");
    if (version > getClassVersion()) {
      const std::string text =
          formatMessage(eSerializationMessage::NewerVersion, getClassName(), version, getClassVersion());
      logError(getSerializationLogger(), text, VEXO_HERE);
      return BoolResult::failure(text);
    }
    archive.registerClassVersion(getClassName(), version);
    const auto fresh = boost::static_pointer_cast<BaseProcessor>(createShared());
    fresh->init();
    for (const std::string& name : archive.getNames())
      if (name != "version" && !fresh->findAttribute(name)) fresh->raiseNoSuchAttribute(name);
    for (const auto& attribute : fresh->_attributes) attribute->read(archive);
    if (!_initialised) init();
    return copyValues(*fresh);
  } catch (const UnHandleException&) {
    throw;
  } catch (const std::exception& failure) {
    raise<UnHandleException>(
        getProcessingLogger(), VEXO_HERE,
        formatMessage(eProcessorMessage::NotSerialisable, getObjectName(), std::string(failure.what())));
  }
}

void executeSyncRun(const boost::shared_ptr<BaseProcessor>& processor) {
  if (!processor) raiseError(VEXO_HERE, "VEXOProcessing", "executeSyncRun: the processor is null");
  if (const BoolResult result = processor->run(core::eSynchroType::Synchronous); !result) {
    processor->rethrowFailure();
    raise<BaseException>(getProcessingLogger(), VEXO_HERE, result.getMessage());
  }
}

BaseProcessor& awaitRun(BaseProcessor* processor) {
  if (!processor) raiseError(VEXO_HERE, "VEXOProcessing", "getAsyncProcessorOutput: the processor is null");
  processor->wait();
  processor->rethrowFailure();
  return *processor;
}

}  // namespace vexo::processor
