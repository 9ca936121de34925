#pragma once

#include "VEXOProcessing/Attribute.h"

namespace vexo::imaproc::attr {

/// Statistics of samples, in units of the samples.
class StatsResult : public BaseDataItemNode {
public:
  StatsResult() : BaseDataItemNode("StatsResult", "Statistics of the samples of an image") {
    add(minimum);
    add(maximum);
    add(mean);
    add(standardDeviation);
    add(sum);
    add(count);
  }

  DataItemLeaf<double> minimum{"minimum", "Smallest sample; NaN is left out, 0 when there is nothing else"};
  DataItemLeaf<double> maximum{"maximum", "Largest sample; NaN is left out, 0 when there is nothing else"};
  DataItemLeaf<double> mean{"mean", "Sum divided by count"};
  DataItemLeaf<double> standardDeviation{"standardDeviation",
                                         "Root of the mean square of the deviations from the mean"};
  DataItemLeaf<double> sum{"sum", "Sum of the samples"};
  DataItemLeaf<double> count{"count", "Number of samples, NaN included"};
};

class OutStatsResult : public processor::OutputDataItemAttribute<OutStatsResult, StatsResult> {
public:
  static constexpr char toolTip[] = "Statistics of the samples; created when not given";
};

}  // namespace vexo::imaproc::attr
