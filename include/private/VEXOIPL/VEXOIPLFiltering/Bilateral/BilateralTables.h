#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralClass.h"
#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralParameters.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/StatsResult.h"
#include "VEXOProcessing/Attributes.h"

namespace vexo::imaproc::filter {

/// The tables of a call, built once and read by all its pieces.
struct BilateralTables {
  std::uint32_t halfSize;
  double scale;
  boost::shared_ptr<const attr::Floats> space, range;
};

/// The half size of a call: `given` unless that is 0, otherwise 1.5 deviations, rounded; 0 for a deviation
/// that is negative or NaN.
double bilateralHalfSize(std::uint32_t given, double spaceSigma);

/// statistics: null for an 8-bit image, and where InOptInputRange is given.
VEXO_API BilateralTables makeBilateralTables(const processor::BaseProcessor& level1,
                                             image::eImageBufferType input,
                                             const boost::shared_ptr<const attr::StatsResult>& statistics,
                                             eBilateralWindow window);

/// The tables as kernels read them; fails when they do not fit the margins of the window.
BoolResult makeBilateralParameters(const attr::Floats& space, const attr::Floats& range, double scale,
                                   const image::StripMargins& margins, bool walk,
                                   BilateralParameters& parameters);

}  // namespace vexo::imaproc::filter
