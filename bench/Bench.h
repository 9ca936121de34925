#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "VEXOImage/Image.h"

#ifdef VEXO_HAS_OPENCV
#include <opencv2/core.hpp>
#endif

namespace vexo::bench {

/// One line of the table: our filter and, where there is one, the peer's, on the same image in the same
/// process.
struct Case {
  std::string filter;  ///< with its parameters: "mean, half 5"
  image::eImageBufferType type;
  image::ImageGeometry geometry;
  std::optional<image::eImageBufferType> outType = std::nullopt;  ///< the input's, unless it is set
  unsigned largest = 0xffff;  ///< samples are random, from 0 to this, a power of 2 less 1, and the type
  /// One call: reads `in`, fills `out` (of the same geometry).
  std::function<void(const image::ConstImagePtr& in, const image::ImagePtr& out)> ours;
#ifdef VEXO_HAS_OPENCV
  std::function<void(const cv::Mat& in, cv::Mat& out)> peer;
#endif
  /// Another line of the table that this one is measured against, when it has no peer: time per sample, times
  /// `work`.
  struct Yardstick {
    std::string filter;
    image::eImageBufferType type;
    double work = 1;
  };
  std::optional<Yardstick> yardstick = std::nullopt;
};

/// Adds a line; called by static objects of the files of this folder, one file per filter family.
struct AddCase {
  explicit AddCase(Case line);
};

}  // namespace vexo::bench
