#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl3.h"

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo {
namespace portable {
extern const processor::KernelTable maskImgImg;
}
namespace sse2 {
extern const processor::KernelTable maskImgImg;
}
namespace avx2 {
extern const processor::KernelTable maskImgImg;
}
namespace avx512 {
extern const processor::KernelTable maskImgImg;
}
}  // namespace vexo

namespace vexo::imaproc::logic {
namespace {

const processor::ProcessorRegistrator<MaskImgImgLvl3> registrator;
const processor::ProcessorRegistrator<MaskImgImg3dLvl3> registrator3d;

const std::vector<processor::KernelObject> objects = {{{eIS_Standard}, portable::maskImgImg},
                                                      {{eIS_SSE2}, sse2::maskImgImg},
                                                      {{eIS_AVX2}, avx2::maskImgImg},
                                                      {{eIS_AVX512}, avx512::maskImgImg}};
const processor::KernelRegistrator kernels(MaskImgImgLvl3::retrieveFunctionSelector(), objects);
const processor::KernelRegistrator kernels3d(MaskImgImg3dLvl3::retrieveFunctionSelector(), objects);

}  // namespace
}  // namespace vexo::imaproc::logic
