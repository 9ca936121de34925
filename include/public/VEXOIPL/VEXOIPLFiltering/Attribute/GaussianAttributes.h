#pragma once

#include "VEXOProcessing/Attributes.h"

namespace vexo::imaproc::attr {

/// Gaussian smoothing: standard deviations in samples.
template <class Derived>
struct StdDev : processor::Attribute<Derived, float> {
  static BoolResult check(float value) {
    const BoolResult finite = processor::checkFinite(value);
    if (!finite || value >= 0) return finite;
    return BoolResult::failure(ScalarText<float>::toText(value) + " is negative");
  }
};
struct InStdDevX : StdDev<InStdDevX> {
  static constexpr char toolTip[] = "Standard deviation along X, in pixels; 0 leaves this axis as it is";
};
struct InStdDevY : StdDev<InStdDevY> {
  static constexpr char toolTip[] = "Standard deviation along Y, in pixels; 0 leaves this axis as it is";
};
struct InStdDevZ : StdDev<InStdDevZ> {
  static constexpr char toolTip[] = "Standard deviation along Z, in slices; 0 leaves this axis as it is";
};

/// How much of a Gaussian its kernel covers.
struct GaussianCoverage : BaseDataItemNode {
  GaussianCoverage(float coverageValue = 0.997f, std::uint32_t maxHalf = 0)
      : BaseDataItemNode("GaussianCoverage", "How much of a Gaussian its kernel covers") {
    add(coverage);
    add(maxHalfKnlSize);
    coverage.setValue(coverageValue);
    maxHalfKnlSize.setValue(maxHalf);
  }
  /// In ]0, 1[.
  DataItemLeaf<float> coverage{"coverage",
                               "Part of the area under the Gaussian that the kernel covers, in ]0, 1["};
  DataItemLeaf<std::uint32_t> maxHalfKnlSize{"maxHalfKnlSize",
                                             "Largest half size of the kernel; 0 sets no limit"};
};
struct InOptSmoothingGaussianCoverage
    : processor::Attribute<InOptSmoothingGaussianCoverage, boost::shared_ptr<const GaussianCoverage>> {
  static constexpr char toolTip[] = "How much of the Gaussian the kernel covers";
  static StorageType defaultValue() {
    static const auto& item = *new StorageType(boost::make_shared<const GaussianCoverage>());
    return item;
  }
  static BoolResult check(const StorageType& item) {
    const float coverage = item ? item->coverage.getValue() : 0.5f;
    if (coverage > 0 && coverage < 1) return true;  // comparisons with NaN are false
    return BoolResult::failure("coverage: " + item->coverage.getText() + " is not in ]0, 1[");
  }
};

}  // namespace vexo::imaproc::attr
