#pragma once

#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: checks the call, creates the output, sends each plane to level 2.
class VEXO_API HistoOkMedian2dImgLvl1 final
    : public FilterClass<HistoOkMedian2dImgLvl1, processor::BaseAsync1Processor, attr::InImg> {
public:
  using Attributes = processor::AttributeList<attr::InImg, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InInputRange, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::HistoOkMedian2dImgLvl1;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority,
                              boost::shared_ptr<core::BaseActionProvider>& provider) override;
};

/// histoO1Median2dImg, with the same result, by one histogram that is swept along the rows: it needs less
/// memory, and its time per pixel grows with the rows of the window. Types, ranges, levels and failures are
/// those of histoO1Median2dImg.
VEXO_API boost::shared_ptr<image::BaseImage> histoOkMedian2dImg(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<const attr::Range>& inInputRange);
VEXO_API void histoOkMedian2dImg(const boost::shared_ptr<const image::BaseImage>& inImg,
                                 std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
                                 const boost::shared_ptr<const attr::Range>& inInputRange,
                                 const boost::shared_ptr<image::BaseImage>& outImg);

/// As above, but returns at once. The processor keeps the images alive and a failure of the run until
/// getAsyncProcessorOutput is called; only values that are refused throw here.
VEXO_API boost::shared_ptr<HistoOkMedian2dImgLvl1> histoOkMedian2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<const attr::Range>& inInputRange);
VEXO_API boost::shared_ptr<HistoOkMedian2dImgLvl1> histoOkMedian2dImg_async(
    const boost::shared_ptr<const image::BaseImage>& inImg, std::uint32_t inHalfKnlSizeX,
    std::uint32_t inHalfKnlSizeY, const boost::shared_ptr<const attr::Range>& inInputRange,
    const boost::shared_ptr<image::BaseImage>& outImg);
/// Waits for the run and returns its output; throws when the run failed.
VEXO_API boost::shared_ptr<image::BaseImage> getAsyncProcessorOutput(
    const boost::shared_ptr<HistoOkMedian2dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
