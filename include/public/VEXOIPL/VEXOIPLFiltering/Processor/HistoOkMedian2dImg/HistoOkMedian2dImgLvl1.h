#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Attribute/MedianAttributes.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: checks the call, creates the output, sends each plane to level 2.
class VEXO_API HistoOkMedian2dImgLvl1 final
    : public FilterClass<HistoOkMedian2dImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InInputRange, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::HistoOkMedian2dImgLvl1;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// histoO1Median2dImg, with the same result, by one histogram that is swept along the rows: it needs less
/// memory, and its time per pixel grows with the rows of the window. Types, ranges, levels and failures are
/// those of histoO1Median2dImg.
VEXO_API image::ImagePtr histoOkMedian2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                            std::uint32_t inHalfKnlSizeY,
                                            const boost::shared_ptr<const attr::Range>& inInputRange);
VEXO_API void histoOkMedian2dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                 std::uint32_t inHalfKnlSizeY,
                                 const boost::shared_ptr<const attr::Range>& inInputRange,
                                 const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<HistoOkMedian2dImgLvl1> histoOkMedian2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    const boost::shared_ptr<const attr::Range>& inInputRange);
VEXO_API boost::shared_ptr<HistoOkMedian2dImgLvl1> histoOkMedian2dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    const boost::shared_ptr<const attr::Range>& inInputRange, const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<HistoOkMedian2dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
