#include "VEXOIPL/VEXOIPLFiltering/Pearson/PearsonLevels.h"

#include <limits>

namespace vexo::imaproc::filter {

PearsonParameters makePearsonParameters(double mean1, double mean2, double factor) {
  const auto single = static_cast<float>(factor);
  return {static_cast<float>(mean1), static_cast<float>(mean2),
          single == 0.0f ? std::numeric_limits<float>::epsilon() : single};
}

}  // namespace vexo::imaproc::filter
