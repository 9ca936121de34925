#pragma once

#include <map>

#include "VEXOProcessing/FunctionSelector.h"
#include "VEXOProcessing/ProcessorClass.h"

namespace vexo::processor {

/// The parsers of a third-level processor, by the name of the strip attribute that they parse.
struct DataParserColl {
  std::map<std::string, image::InputStripParser> inputs;
  std::map<std::string, image::OutputStripParser> outputs;
};

/// Third level: runs the kernel that fits the sample types and the allowed instruction sets on one strip.
class VEXO_API BaseProcessingAlgorithm : public BaseProcessor {
public:
  virtual const AlgorithmFunctionSelector& getFunctionSelector() const = 0;
  virtual AlgorithmFunctionSelector& accessFunctionSelector() = 0;
  virtual ForcedInstructionSets& accessForcedInstructionSets() = 0;

  /// Restricts the kernels of the class, for every instance, to those that need no other than the given sets.
  void forceInstructionSets(const InstructionSetsIdentifier& sets) {
    accessForcedInstructionSets().force(sets);
  }
  void releaseForcedInstructionSets() { accessForcedInstructionSets().release(); }
  /// Empty when nothing is forced.
  virtual InstructionSetsIdentifier getForcedInstructionSets() const = 0;

protected:
  /// One parser per strip attribute; border: mirror.
  virtual void initDataParserColl(DataParserColl& parsers) const;
  void clearDataParserColl() { _parsers = {}; }
  template <class A>
  image::InputStripParser& accessParser() {
    return _parsers.inputs.at(A::info().name);
  }
  /// The sample types that decide on the kernel: those of the first strip to read and the first to write.
  virtual void getDataTypeIdColl(DataTypeIdentifierColl& types) const;
  /// What the kernel finds in ProcessingInfo::parameters; lives until the run has ended.
  virtual const void* getKernelParameters() const { return nullptr; }

  BoolResult preProcess() override;
  virtual BoolResult preProcessStrip() { return true; }
  void clearIntermediateData() override { clearDataParserColl(); }
  void process(const core::RunShare& share) override;

private:
  void checkStrips() const;
  BoolResult runFunction(const AlgorithmFunction& function, const core::RunState& state);

  DataParserColl _parsers;
};

/// Supplies the members that every third-level class has, on top of those of ProcessorClass. Source is the
/// class whose kernel source serves this one.
template <class Derived, class Source = Derived>
class VEXO_API KernelProcessorClass : public ProcessorClass<Derived, BaseProcessingAlgorithm> {
public:
  using KernelSource = Source;

  static AlgorithmFunctionSelector& retrieveFunctionSelector() {
    static auto& selector = *new AlgorithmFunctionSelector;
    return selector;
  }
  const AlgorithmFunctionSelector& getFunctionSelector() const override { return retrieveFunctionSelector(); }
  AlgorithmFunctionSelector& accessFunctionSelector() override { return retrieveFunctionSelector(); }
  static ForcedInstructionSets& retrieveForcedInstructionSets() {
    static auto& sets = *new ForcedInstructionSets;
    return sets;
  }
  ForcedInstructionSets& accessForcedInstructionSets() override { return retrieveForcedInstructionSets(); }
  InstructionSetsIdentifier getForcedInstructionSets() const override {
    return retrieveForcedInstructionSets().get();
  }

  /// Runs the function of exactly these sample types and this instruction set on a strip.
  template <class TIn, class TOut, eInstructionSet IS>
  BoolResult genericProcessFunction(const ProcessingInfo& info) {
    DataTypeIdentifierColl types;
    types.add(boost::make_shared<imaproc::ImageBufferTypeIdentifier>(image::bufferTypeOf<TIn>()));
    types.add(boost::make_shared<imaproc::ImageBufferTypeIdentifier>(image::bufferTypeOf<TOut>()));
    const AlgorithmFunction found = retrieveFunctionSelector().select(types, {IS});
    if (!found.function) return BoolResult::failure("no such function");
    const char* failure = found.function(info);
    return failure ? BoolResult::failure(failure) : BoolResult(true);
  }
};

/// The kernels of one object, and the instruction sets they were compiled for.
struct KernelObject {
  InstructionSetsIdentifier sets;
  const KernelTable& table;
};
/// Those of a third-level class: its kernel source, as compiled for each instruction set. Every x86-64 has
/// SSE2, and the portable object uses it.
template <class Lvl3>
std::vector<KernelObject> kernelObjects() {
  return {
    {{eIS_Standard}, portable::Kernels<Lvl3>::table()},
#if defined(__x86_64__) && !defined(VEXO_PORTABLE_KERNELS)
        {{eIS_SSE2}, portable::Kernels<Lvl3>::table()}, {{eIS_AVX}, avx::Kernels<Lvl3>::table()},
        {{eIS_AVX2}, avx2::Kernels<Lvl3>::table()}, {{eIS_AVX512}, avx512::Kernels<Lvl3>::table()},
#endif
  };
}

/// Registers the functions of kernel objects with a third-level class while it exists: those that the
/// processor can run.
class VEXO_API KernelRegistrator {
public:
  KernelRegistrator(AlgorithmFunctionSelector& selector, const std::vector<KernelObject>& objects);
};

/// Third level on the GPU: every image attribute that is set must be a GPU image.
class VEXO_API BaseGpuProcessingAlgorithm : public BaseProcessor {
protected:
  virtual BoolResult processOnGpu() = 0;
  void process(const core::RunShare& share) override;
};

}  // namespace vexo::processor
