#pragma once

#include <set>
#include <string>
#include <vector>

#include "VEXOCore/Export.h"

namespace vexo {

/// Instruction sets that kernels are compiled for.
enum eInstructionSet {
  eIS_Standard = 0,  ///< portable code, offered by every processor
  eIS_SSE2 = 1,
  eIS_AVX = 5,
  eIS_FMA3 = 6,
  eIS_AVX2 = 7,
  eIS_AVX512 = 8,  ///< the F, BW, DQ and VL parts together
};

namespace core {

/// True when the processor, and the operating system for its registers, offer the set.
VEXO_API bool isAvailable(eInstructionSet set);

/// A named combination of instruction sets, as kernels are compiled and as users force them: "standard",
/// "sse2", "avx", "avx2", "fma3_avx2", "avx512".
struct NamedInstructionSets {
  const char* name;
  std::set<eInstructionSet> sets;
};
VEXO_API const std::vector<NamedInstructionSets>& namedInstructionSets();
/// The name of a combination; members joined by "+" when it has none.
VEXO_API std::string toString(const std::set<eInstructionSet>& sets);

}  // namespace core
}  // namespace vexo
