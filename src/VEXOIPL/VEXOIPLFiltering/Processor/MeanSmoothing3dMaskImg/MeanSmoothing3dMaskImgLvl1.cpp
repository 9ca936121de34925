#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dMaskImg/MeanSmoothing3dMaskImgLvl1.h"

#include <limits>

#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dMaskImg/MeanSmoothing3dMaskImgLevels.h"
#include "VEXOIPL/VEXOIPLLogical/MaskRule.h"
#include "VEXOProcessing/Call.h"

namespace vexo::imaproc::filter {
namespace {

const FilterRegistrator<MeanSmoothing3dMaskImgLvl1, MeanSmoothing3dMaskImgLvl2, MeanSmoothing3dMaskImgLvl3>
    registrator;

using Call = processor::CallForms<MeanSmoothing3dMaskImgLvl1, attr::OutImg, attr::InImg3d, attr::InBinImg3d,
                                  attr::InHalfKnlSizeX, attr::InHalfKnlSizeY, attr::InHalfKnlSizeZ>;

}  // namespace

processor::RulePtr MeanSmoothing3dMaskImgLvl1::createRule() const {
  return logic::matchMask(accessAttribute<attr::InImg3d>(), accessAttribute<attr::InBinImg3d>()) &&
         matchSize(accessAttribute<attr::InImg3d>(), accessAttribute<attr::OutImg>()) &&
         processor::makeRule([this]() -> BoolResult {
           // The kernel counts in 32 bits.
           const double voxels = (2.0 * getStorage<attr::InHalfKnlSizeX>() + 1) *
                                 (2.0 * getStorage<attr::InHalfKnlSizeY>() + 1) *
                                 (2.0 * getStorage<attr::InHalfKnlSizeZ>() + 1);
           if (voxels <= std::numeric_limits<std::uint32_t>::max()) return true;
           return BoolResult::failure("InHalfKnlSizeX, InHalfKnlSizeY, InHalfKnlSizeZ: a window of " +
                                      std::to_string(static_cast<long long>(voxels)) +
                                      " voxels is too large for a mask, the largest is 4294967295");
         });
}

BoolResult MeanSmoothing3dMaskImgLvl1::retrieveProvider(const core::BasePriority& priority,
                                                        core::ProviderPtr& provider) {
  provider = dispatchVolumes<MeanSmoothing3dMaskImgLvl2>(priority, *this);
  return true;
}

image::ImagePtr meanSmoothing3dMaskImg(const image::ConstImagePtr& inImg3d,
                                       const image::ConstImagePtr& inMaskImg3d, std::uint32_t inHalfKnlSizeX,
                                       std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ) {
  return Call::run(inImg3d, inMaskImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}
void meanSmoothing3dMaskImg(const image::ConstImagePtr& inImg3d, const image::ConstImagePtr& inMaskImg3d,
                            std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY,
                            std::uint32_t inHalfKnlSizeZ, const image::ImagePtr& outImg) {
  Call::fill(inImg3d, inMaskImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}
boost::shared_ptr<MeanSmoothing3dMaskImgLvl1> meanSmoothing3dMaskImg_async(
    const image::ConstImagePtr& inImg3d, const image::ConstImagePtr& inMaskImg3d,
    std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ) {
  return Call::start(inImg3d, inMaskImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ);
}
boost::shared_ptr<MeanSmoothing3dMaskImgLvl1> meanSmoothing3dMaskImg_async(
    const image::ConstImagePtr& inImg3d, const image::ConstImagePtr& inMaskImg3d,
    std::uint32_t inHalfKnlSizeX, std::uint32_t inHalfKnlSizeY, std::uint32_t inHalfKnlSizeZ,
    const image::ImagePtr& outImg) {
  return Call::startFill(inImg3d, inMaskImg3d, inHalfKnlSizeX, inHalfKnlSizeY, inHalfKnlSizeZ, outImg);
}
image::ImagePtr getAsyncProcessorOutput(const boost::shared_ptr<MeanSmoothing3dMaskImgLvl1>& processor) {
  return Call::await(processor);
}

}  // namespace vexo::imaproc::filter
