#include "VEXOProcessing/ProcessingAlgorithm.h"

#include <log4cplus/logger.h>

#include <type_traits>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include "VEXOCore/Buffer.h"

namespace vexo::processor {

void BaseProcessingAlgorithm::initDataParserColl(DataParserColl& parsers) const {
  for (const auto& attribute : getAttributes()) {
    if (dynamic_cast<const BaseInputStripAttribute*>(attribute.get()))
      parsers.inputs.emplace(attribute->getName(), image::InputStripParser());
    else if (dynamic_cast<const BaseOutputStripAttribute*>(attribute.get()))
      parsers.outputs.emplace(attribute->getName(), image::OutputStripParser());
  }
}

void BaseProcessingAlgorithm::getDataTypeIdColl(DataTypeIdentifierColl& types) const {
  bool read = false, written = false;
  const auto add = [&](bool& done, const auto* strips) {
    if (!strips || done) return;
    types.add(boost::make_shared<imaproc::ImageBufferTypeIdentifier>(strips->getStrip()->getBufferType()));
    done = true;
  };
  for (const auto& attribute : getAttributes())
    add(read, dynamic_cast<const BaseInputStripAttribute*>(attribute.get()));
  for (const auto& attribute : getAttributes())
    add(written, dynamic_cast<const BaseOutputStripAttribute*>(attribute.get()));
}

BoolResult BaseProcessingAlgorithm::preProcess() {
  initDataParserColl(_parsers);
  return preProcessStrip();
}

void BaseProcessingAlgorithm::process(const core::RunShare& share) {
  checkStrips();
  DataTypeIdentifierColl types;
  getDataTypeIdColl(types);
  InstructionSetsIdentifier forced = getForcedInstructionSets();
  if (forced.isEmpty()) forced = getForcedInstructionSetsOfAll();
  const AlgorithmFunction function = getFunctionSelector().select(types, forced);
  if (!function.function)
    raiseMessage<BaseException>(
        getProcessingLogger(), VEXO_HERE, eProcessorMessage::NoFunction, getObjectName(), types.getNames(),
        forced.isEmpty() ? std::string()
                         : "in the forced instruction set " + core::toString(forced.getSets()));
  if (const BoolResult done = runFunction(function, share.state); !done)
    raiseFailure(VEXO_HERE, done.getMessage());
  share.done();
}

void BaseProcessingAlgorithm::checkStrips() const {
  for (const auto& attribute : getAttributes()) {
    const auto* input = dynamic_cast<const BaseInputStripAttribute*>(attribute.get());
    const auto* output = dynamic_cast<const BaseOutputStripAttribute*>(attribute.get());
    if ((input && !input->getStrip()) || (output && !output->getStrip()))
      raiseMessage<BaseException>(getProcessingLogger(), VEXO_HERE, eProcessorMessage::MissingInput,
                                  getObjectName(), attribute->getName());
  }
}

BoolResult BaseProcessingAlgorithm::runFunction(const AlgorithmFunction& function,
                                                const core::RunState& state) {
  std::vector<image::StripSource> sources;
  std::vector<image::StripTarget> targets;
  std::vector<LoadLine> loaders;
  std::vector<StoreLine> storers;
  std::vector<boost::shared_ptr<image::OutputStrip>> outputs;
  std::vector<boost::shared_ptr<const image::InputStrip>> inputs;
  for (const auto& attribute : getAttributes()) {
    if (const auto* input = dynamic_cast<const BaseInputStripAttribute*>(attribute.get())) {
      const auto strip = input->getStrip();
      sources.push_back(_parsers.inputs.at(attribute->getName()).parse(*strip));
      sources.back().stop = state.getStopFlag();
      loaders.push_back(function.table->loaders[static_cast<int>(strip->getBufferType())]);
      inputs.push_back(strip);
    } else if (const auto* output = dynamic_cast<const BaseOutputStripAttribute*>(attribute.get())) {
      const auto strip = output->getStrip();
      targets.push_back(_parsers.outputs.at(attribute->getName()).parse(*strip));
      storers.push_back(function.table->storers[static_cast<int>(strip->getBufferType())]);
      outputs.push_back(strip);
    }
  }
  bool inPlace = false;
  for (const auto& output : outputs)
    for (const auto& input : inputs) inPlace = inPlace || input->isOverwrittenBy(*output);
  if (inPlace)  // what was just read is still cached
    for (image::StripTarget& target : targets) target.streamed = false;

  const auto isInteger = [](const auto& strips) {
    return !strips.empty() && strips.front()->getBufferType() != image::eImageBufferType::Real32;
  };
  const bool unsignedInput =
      !inputs.empty() && image::visitBufferType(inputs.front()->getBufferType(),
                                                [](auto zero) { return std::is_unsigned_v<decltype(zero)>; });
  ProcessingInfo info{sources.data(),
                      targets.data(),
                      loaders.data(),
                      storers.data(),
                      getKernelParameters(),
                      inPlace,
                      isInteger(inputs) && isInteger(outputs),
                      unsignedInput,
                      nullptr};
  HybridBuffer<> scratch(function.table->scratchSize ? function.table->scratchSize(info) : 0);
  info.scratch = scratch.data();
  const char* failure = function.function(info);
#if defined(__SSE2__)
  _mm_sfence();  // streamed writes come before what follows
#endif
  state.throwIfStopped();  // what a kernel leaves then is no result
  if (failure) return BoolResult::failure(failure);
  for (const auto& output : outputs) output->commit();
  return true;
}

KernelRegistrator::KernelRegistrator(AlgorithmFunctionSelector& selector,
                                     const std::vector<KernelObject>& objects) {
  for (const KernelObject& object : objects) {
    if (!AlgorithmFunctionSelector::isSupported(object.sets)) continue;
    const auto add = [&](KernelFunction function, std::initializer_list<int> types) {
      if (!function) return;
      AlgorithmFunctionIdentifier identifier;
      for (const int type : types)
        identifier.types.add(
            boost::make_shared<imaproc::ImageBufferTypeIdentifier>(image::eImageBufferType(type)));
      identifier.sets = object.sets;
      identifier.efficiency = AlgorithmFunctionEfficiency(object.sets).getEfficiency();
      identifier.function = {function, &object.table};
      selector.registerFunction(identifier);
    };
    for (int in = 0; in < kernelTypeCount; ++in) {
      add(object.table.inputFunctions[in], {in});
      for (int out = 0; out < kernelTypeCount; ++out) add(object.table.functions[in][out], {in, out});
    }
  }
}

void BaseGpuProcessingAlgorithm::process(const core::RunShare& share) {
  for (const auto& attribute : getAttributes()) {
    const auto* image = dynamic_cast<const BaseImageAttribute*>(attribute.get());
    if (image && image->isSet() && !image->getImage()->isGpuImage())
      raiseFailure(VEXO_HERE, attribute->getName() + " is not an image on the GPU");
  }
  if (const BoolResult done = processOnGpu(); !done) raiseFailure(VEXO_HERE, done.getMessage());
  share.done();
}

}  // namespace vexo::processor
