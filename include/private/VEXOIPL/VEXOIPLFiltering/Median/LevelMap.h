#pragma once

namespace vexo::imaproc::filter {

/// How the samples of a range become 256 levels, and levels samples of the output: plain data, for kernels.
struct LevelMap {
  bool exact;  ///< one level per integer; otherwise level = (sample - minimum) * scale, truncated
  /// Exact: samples up to `first` get the level `offset`, each further one the next. `first` is a value of
  /// the input's type.
  long long first;
  unsigned offset;
  double minimum, scale;
  unsigned char samples[256 * 4];  ///< the sample of each level, in the output's type
};

}  // namespace vexo::imaproc::filter
