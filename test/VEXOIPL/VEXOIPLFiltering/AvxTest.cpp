// On AVX alone the kernels serve float32 to float32 only, so that the tests of all types pass it over.
#include <functional>

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/Bilateral2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral3dImg/Bilateral3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianSmoothing2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/HistoO1Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K55Median2dImg/K55Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothing3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral3dImg/SeparatedBilateral3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/TestImages.h"

namespace vexo::imaproc::filter {
namespace {

using namespace vexo::test;
using ImageHandle = boost::shared_ptr<const image::BaseImage>;

boost::shared_ptr<const KernelXYZ> lopsidedKernel() {
  const auto kernel = boost::make_shared<KernelXYZ>();
  kernel->insert({-2, 1, 0}, 0.5f);
  kernel->insert({0, 0, 1}, 1.5f);
  kernel->insert({1, -3, -1}, 0.25f);
  return kernel;
}

const auto range = boost::make_shared<const attr::Range>(-3000, 3000);

struct Call {
  std::vector<const char*> kernels;
  std::function<boost::shared_ptr<image::BaseImage>(ImageHandle)> run;
};
const std::vector<Call> calls = {
    {{"K33Median2dImgLvl3"}, [](auto in) { return k33Median2dImg(in); }},
    {{"K55Median2dImgLvl3"}, [](auto in) { return k55Median2dImg(in); }},
    {{"GenericMedian2dImgLvl3"}, [](auto in) { return genericMedian2dImg(in, 3, 1); }},
    {{"GenericMedian3dImgLvl3"}, [](auto in) { return genericMedian3dImg(in, 1, 1, 1); }},
    {{"HistoO1Median2dImgLvl3"}, [](auto in) { return histoO1Median2dImg(in, 8, 9, range); }},
    {{"HistoMedian3dImgLvl3"}, [](auto in) { return histoMedian3dImg(in, 2, 1, 1, range); }},
    {{"DespeckleFilter2dImgLvl3"}, [](auto in) { return despeckleFilter2dImg(in, 2, 3, 1.5); }},
    {{"Bilateral2dImgLvl3"}, [](auto in) { return bilateral2dImg(in, 2, 1.5, 900); }},
    {{"Bilateral3dImgLvl3"}, [](auto in) { return bilateral3dImg(in, 1, 1.5, 900); }},
    {{"SeparatedBilateralX3dImgLvl3", "SeparatedBilateralY3dImgLvl3", "SeparatedBilateralZ3dImgLvl3"},
     [](auto in) { return separatedBilateral3dImg(in, 3, 1.5, 900); }},
    {{"PearsonColocalization2dImgLvl3"}, [](auto in) { return pearsonColocalization2dImg(in, in); }},
    {{"Convolution2dImgLvl3"}, [](auto in) { return gaussianSmoothing2dImg(in, 2); }},
    {{"Convolution3dImgLvl3"}, [](auto in) { return convolution3dImg(in, lopsidedKernel(), false); }},
    {{"MeanSmoothing2dImgLvl3", "MeanSmoothingZ3dImgLvl3"},
     [](auto in) { return meanSmoothing3dImg(in, 3, 2, 1); }},
};

TEST(Avx, GivesTheBitsOfTheOtherInstructionSets) {
  if (!core::isAvailable(eIS_AVX)) GTEST_SKIP() << "no AVX here";
  const ImagePtr in = randomImage({141, 60, 5}, eImageBufferType::Real32);
  for (const Call& call : calls) {
    SCOPED_TRACE(call.kernels[0]);
    const auto expected = call.run(in);
    std::vector<std::unique_ptr<ForcedSets>> forced;
    for (const char* kernel : call.kernels)
      forced.push_back(std::make_unique<ForcedSets>(std::string("vexo::imaproc::filter::") + kernel,
                                                    processor::InstructionSetsIdentifier{eIS_AVX}));
    EXPECT_TRUE(sameBits(image::hostImage(call.run(in), "avx"), image::hostImage(expected, "widest")));
  }
}

}  // namespace
}  // namespace vexo::imaproc::filter
