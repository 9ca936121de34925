#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLevels.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vexo::imaproc::glbmsr {
namespace {

using SignedWide = __int128;

/// Deviations are taken from the whole number next to the mean: these squares are exact, and at least twice
/// what is left to subtract.
void fillFrom(const IntegerSums& sums, attr::StatsResult& result) {
  const auto n = static_cast<SignedWide>(sums.count), sum = static_cast<SignedWide>(sums.sum);
  const SignedWide middle = (2 * sum + n) / (2 * n), rest = sum - middle * n;
  const SignedWide squares = static_cast<SignedWide>(sums.squares) - middle * (middle * n + 2 * rest);
  const double count = static_cast<double>(n), off = static_cast<double>(rest);
  const double total = static_cast<double>(sum + sums.lowest * n);
  result.minimum.setValue(static_cast<double>(sums.minimum + sums.lowest));
  result.maximum.setValue(static_cast<double>(sums.maximum + sums.lowest));
  result.mean.setValue(total / count);
  result.standardDeviation.setValue(std::sqrt((static_cast<double>(squares) - off * off / count) / count));
  result.sum.setValue(total);
  result.count.setValue(count);
}

/// One NaN for all: which sign it has depends on the order of the additions.
double oneNan(double value) {
  return std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
}

void fillFrom(const RealSums& sums, attr::StatsResult& result) {
  const bool onlyNan = sums.minimum > sums.maximum;
  const double count = static_cast<double>(sums.count), total = oneNan(valueOf(sums.sum));
  // + 0.0: which of the two zeros was met first says nothing.
  result.minimum.setValue(onlyNan ? 0.0 : sums.minimum + 0.0);
  result.maximum.setValue(onlyNan ? 0.0 : sums.maximum + 0.0);
  result.mean.setValue(total / count);
  result.standardDeviation.setValue(oneNan(std::sqrt(std::max(valueOf(sums.squares), 0.0) / count)));
  result.sum.setValue(total);
  result.count.setValue(count);
}

}  // namespace

StatsMsrSums addUp(const std::vector<boost::shared_ptr<StatsMsrSums>>& parts) {
  StatsMsrSums sums = emptySums();
  for (const auto& part : parts) add(sums, *part);
  return sums;
}

void fillResult(const StatsMsrSums& sums, attr::StatsResult& result) {
  if (sums.integers.count != 0)
    fillFrom(sums.integers, result);
  else
    fillFrom(sums.reals, result);
}

}  // namespace vexo::imaproc::glbmsr
