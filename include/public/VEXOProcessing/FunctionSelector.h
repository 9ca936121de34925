#pragma once

#include <boost/shared_ptr.hpp>
#include <map>
#include <mutex>
#include <set>
#include <vector>

#include "VEXOCore/InstructionSet.h"
#include "VEXOImage/ImageBufferType.h"
#include "VEXOProcessing/Kernel/KernelTable.h"

namespace vexo::processor {

/// One of the types that a kernel function is chosen by.
class VEXO_API BaseDataTypeIdentifier {
public:
  virtual ~BaseDataTypeIdentifier();
  virtual unsigned getId() const = 0;
  virtual std::string getName() const = 0;
};

/// The types of one call of a kernel, in the order of its strips.
class VEXO_API DataTypeIdentifierColl {
public:
  void add(boost::shared_ptr<const BaseDataTypeIdentifier> type) { _types.push_back(std::move(type)); }
  std::size_t size() const { return _types.size(); }
  std::vector<unsigned> getIds() const;
  /// "uint8, float32"
  std::string getNames() const;

private:
  std::vector<boost::shared_ptr<const BaseDataTypeIdentifier>> _types;
};

/// A set of instruction sets that a function needs, or that a user allows.
class VEXO_API InstructionSetsIdentifier {
public:
  InstructionSetsIdentifier() = default;
  InstructionSetsIdentifier(std::initializer_list<eInstructionSet> sets) : _sets(sets) {}
  explicit InstructionSetsIdentifier(std::set<eInstructionSet> sets) : _sets(std::move(sets)) {}

  const std::set<eInstructionSet>& getSets() const { return _sets; }
  bool isEmpty() const { return _sets.empty(); }
  /// True when `allowed` holds every set that this one names.
  bool isWithin(const InstructionSetsIdentifier& allowed) const;

private:
  std::set<eInstructionSet> _sets;
};

/// How fast functions for these sets are, as a number to compare: the wider the vectors the better.
class VEXO_API AlgorithmFunctionEfficiency {
public:
  explicit AlgorithmFunctionEfficiency(const InstructionSetsIdentifier& sets);
  unsigned getEfficiency() const { return _efficiency; }

private:
  unsigned _efficiency;
};

/// A kernel function with the table that its line loaders and storers come from.
struct AlgorithmFunction {
  KernelFunction function = nullptr;
  const KernelTable* table = nullptr;
};

/// What a function is registered under.
struct AlgorithmFunctionIdentifier {
  DataTypeIdentifierColl types;
  InstructionSetsIdentifier sets;
  unsigned efficiency = 0;
  AlgorithmFunction function;
};

/// The registered functions of one third-level class. Thread-safe.
class VEXO_API AlgorithmFunctionSelector {
public:
  /// True when the processor offers all the sets.
  static bool isSupported(const InstructionSetsIdentifier& sets);
  void registerFunction(const AlgorithmFunctionIdentifier& identifier);
  /// The most efficient function for the types whose sets lie within the allowed ones (all when that is
  /// empty); its function is null when there is none.
  AlgorithmFunction select(const DataTypeIdentifierColl& types,
                           const InstructionSetsIdentifier& allowed) const;
  std::size_t getFunctionCount() const;

private:
  mutable std::mutex _mutex;
  std::map<std::vector<unsigned>, std::vector<AlgorithmFunctionIdentifier>> _functions;
};

/// Has all kernels of the process use this combination of instruction sets where they are compiled for it,
/// and the next one below elsewhere; an empty one ends that. What is forced for a class of its own goes
/// before. Throws when the processor does not offer it. Thread-safe.
VEXO_API void forceInstructionSetsOfAll(const InstructionSetsIdentifier& sets);
/// The sets that are allowed by it; empty when nothing is forced.
VEXO_API InstructionSetsIdentifier getForcedInstructionSetsOfAll();

/// Instruction sets that users have forced for one third-level class. Thread-safe.
class VEXO_API ForcedInstructionSets {
public:
  void force(const InstructionSetsIdentifier& sets);
  void release() { force({}); }
  InstructionSetsIdentifier get() const;

private:
  mutable std::mutex _mutex;
  InstructionSetsIdentifier _sets;
};

}  // namespace vexo::processor

namespace vexo::imaproc {

class VEXO_API ImageBufferTypeIdentifier final : public processor::BaseDataTypeIdentifier {
public:
  explicit ImageBufferTypeIdentifier(image::eImageBufferType type) : _type(type) {}
  unsigned getId() const override { return static_cast<unsigned>(_type); }
  std::string getName() const override { return image::toString(_type); }

private:
  image::eImageBufferType _type;
};

}  // namespace vexo::imaproc
