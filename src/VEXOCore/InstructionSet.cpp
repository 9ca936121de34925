#include "VEXOCore/InstructionSet.h"

namespace vexo::core {

bool isAvailable(eInstructionSet set) {
  switch (set) {
    case eIS_Standard:
      return true;
#if defined(__x86_64__)
    // These built-ins also ask the operating system whether it saves the wide registers.
    case eIS_SSE2:
      return __builtin_cpu_supports("sse2");
    case eIS_AVX:
      return __builtin_cpu_supports("avx");
    case eIS_FMA3:
      return __builtin_cpu_supports("fma");
    case eIS_AVX2:
      return __builtin_cpu_supports("avx2");
    case eIS_AVX512:
      return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("avx512f") &&
             __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
             __builtin_cpu_supports("avx512vl");
#endif
    default:
      return false;
  }
}

const std::vector<NamedInstructionSets>& namedInstructionSets() {
  static const auto& sets = *new std::vector<NamedInstructionSets>{
      {"standard", {eIS_Standard}},        {"sse2", {eIS_SSE2}},    {"avx", {eIS_AVX}}, {"avx2", {eIS_AVX2}},
      {"fma3_avx2", {eIS_FMA3, eIS_AVX2}}, {"avx512", {eIS_AVX512}}};
  return sets;
}

std::string toString(const std::set<eInstructionSet>& sets) {
  std::string joined;
  for (const auto& named : namedInstructionSets())
    if (named.sets == sets) return named.name;
  for (const eInstructionSet set : sets)
    for (const auto& named : namedInstructionSets())
      if (named.sets == std::set<eInstructionSet>{set})
        joined += (joined.empty() ? "" : "+") + std::string(named.name);
  return joined;
}

}  // namespace vexo::core
