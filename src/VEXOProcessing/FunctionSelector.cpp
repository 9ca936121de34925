#include "VEXOProcessing/FunctionSelector.h"

#include <algorithm>

#include "VEXOCore/Log.h"

namespace vexo::processor {

BaseDataTypeIdentifier::~BaseDataTypeIdentifier() = default;

std::vector<unsigned> DataTypeIdentifierColl::getIds() const {
  std::vector<unsigned> ids;
  for (const auto& type : _types) ids.push_back(type->getId());
  return ids;
}

std::string DataTypeIdentifierColl::getNames() const {
  std::string names;
  for (const auto& type : _types) names += (names.empty() ? "" : ", ") + type->getName();
  return names;
}

bool InstructionSetsIdentifier::isWithin(const InstructionSetsIdentifier& allowed) const {
  return std::includes(allowed._sets.begin(), allowed._sets.end(), _sets.begin(), _sets.end());
}

AlgorithmFunctionEfficiency::AlgorithmFunctionEfficiency(const InstructionSetsIdentifier& sets)
    : _efficiency(0) {
  // The values of the enumeration grow with the width of the vectors; FMA3 with AVX2 comes after AVX2 alone.
  for (const eInstructionSet set : sets.getSets()) _efficiency = std::max(_efficiency, 2u * set);
  _efficiency += static_cast<unsigned>(sets.getSets().size() > 1);
}

bool AlgorithmFunctionSelector::isSupported(const InstructionSetsIdentifier& sets) {
  return std::all_of(sets.getSets().begin(), sets.getSets().end(), core::isAvailable);
}

void AlgorithmFunctionSelector::registerFunction(const AlgorithmFunctionIdentifier& identifier) {
  const std::lock_guard<std::mutex> lock(_mutex);
  _functions[identifier.types.getIds()].push_back(identifier);
}

AlgorithmFunction AlgorithmFunctionSelector::select(const DataTypeIdentifierColl& types,
                                                    const InstructionSetsIdentifier& allowed) const {
  const std::lock_guard<std::mutex> lock(_mutex);
  const auto found = _functions.find(types.getIds());
  const AlgorithmFunctionIdentifier* best = nullptr;
  if (found != _functions.end())
    for (const AlgorithmFunctionIdentifier& candidate : found->second)
      if ((allowed.isEmpty() || candidate.sets.isWithin(allowed)) &&
          (!best || candidate.efficiency > best->efficiency))
        best = &candidate;
  return best ? best->function : AlgorithmFunction();
}

std::size_t AlgorithmFunctionSelector::getFunctionCount() const {
  const std::lock_guard<std::mutex> lock(_mutex);
  std::size_t count = 0;
  for (const auto& entry : _functions) count += entry.second.size();
  return count;
}

namespace {

ForcedInstructionSets& forcedOfAll() {
  static auto& sets = *new ForcedInstructionSets;
  return sets;
}

}  // namespace

void forceInstructionSetsOfAll(const InstructionSetsIdentifier& sets) {
  if (!AlgorithmFunctionSelector::isSupported(sets))
    raiseError(VEXO_HERE, "VEXOProcessing", "this machine does not offer the instruction set ",
               core::toString(sets.getSets()));
  // The values of the enumeration grow with the width of the vectors.
  std::set<eInstructionSet> allowed = sets.getSets();
  if (!allowed.empty())
    for (const eInstructionSet set : {eIS_Standard, eIS_SSE2, eIS_AVX, eIS_AVX2, eIS_AVX512})
      if (set < *sets.getSets().rbegin()) allowed.insert(set);
  forcedOfAll().force(InstructionSetsIdentifier(allowed));
}

InstructionSetsIdentifier getForcedInstructionSetsOfAll() {
  return forcedOfAll().get();
}

void ForcedInstructionSets::force(const InstructionSetsIdentifier& sets) {
  const std::lock_guard<std::mutex> lock(_mutex);
  _sets = sets;
}

InstructionSetsIdentifier ForcedInstructionSets::get() const {
  const std::lock_guard<std::mutex> lock(_mutex);
  return _sets;
}

}  // namespace vexo::processor
