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
  /// One call: reads `in`, fills `out` (of the same geometry).
  std::function<void(const boost::shared_ptr<const image::BaseImage>& in,
                     const boost::shared_ptr<image::BaseImage>& out)>
      ours;
#ifdef VEXO_HAS_OPENCV
  std::function<void(const cv::Mat& in, cv::Mat& out)> peer;
#endif
};

/// Adds a line; called by static objects of the files of this folder, one file per filter family.
struct AddCase {
  explicit AddCase(Case line);
};

}  // namespace vexo::bench
