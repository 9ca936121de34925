#pragma once

#include "VEXOIPL/VEXOIPLFiltering/Attribute/MedianAttributes.h"
#include "VEXOIPL/VEXOIPLFiltering/VEXOIPLFilteringLogMessages.h"
#include "VEXOProcessing/FilterClass.h"

namespace vexo::imaproc::filter {

/// Level 1, the whole image: checks the call, creates the output, sends each volume to level 2.
class VEXO_API HistoMedian3dImgLvl1 final
    : public FilterClass<HistoMedian3dImgLvl1, processor::BaseAsync1Processor> {
public:
  using Attributes = processor::AttributeList<attr::InImg3d, attr::InHalfKnlSizeX, attr::InHalfKnlSizeY,
                                              attr::InHalfKnlSizeZ, attr::InInputRange, attr::OutImg>;
  static constexpr auto toolTipId = eProcessorMessage::HistoMedian3dImgLvl1;

private:
  BoolResult retrieveProvider(const core::BasePriority& priority, core::ProviderPtr& provider) override;
};

/// histoO1Median2dImg in volumes: the window has (2 halfX + 1) x (2 halfY + 1) x (2 halfZ + 1) voxels, and
/// each volume of a multi-channel image or of a time series is filtered on its own. Types, ranges, levels and
/// failures are those of histoO1Median2dImg. The time per voxel grows with the rows of the window, of all its
/// slices.
///
/// In place, the slices that strips read from each other are saved first, and each thread holds the results
/// of a strip, at least four slices: up to the memory of another image.
VEXO_API image::ImagePtr histoMedian3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                                          std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                                          const boost::shared_ptr<const attr::Range>& inInputRange);
VEXO_API void histoMedian3dImg(const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX,
                               std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
                               const boost::shared_ptr<const attr::Range>& inInputRange,
                               const image::ImagePtr& outImg);

/// As above, in the background; getAsyncProcessorOutput waits, and throws what made the run fail.
VEXO_API boost::shared_ptr<HistoMedian3dImgLvl1> histoMedian3dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    std::uint32_t inHalfKnlSizeZ, const boost::shared_ptr<const attr::Range>& inInputRange);
VEXO_API boost::shared_ptr<HistoMedian3dImgLvl1> histoMedian3dImg_async(
    const image::ConstImagePtr& inImg, std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
    std::uint32_t inHalfKnlSizeZ, const boost::shared_ptr<const attr::Range>& inInputRange,
    const image::ImagePtr& outImg);
VEXO_API image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<HistoMedian3dImgLvl1>& processor);

}  // namespace vexo::imaproc::filter
