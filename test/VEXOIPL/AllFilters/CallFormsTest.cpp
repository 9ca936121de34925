// The functions of all filters: each form must hand its arguments to the parameters that the manual says, and
// give what the processor gives.

#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral2dImg/Bilateral2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Bilateral3dImg/Bilateral3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution2dImg/Convolution2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Convolution3dImg/Convolution3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/DespeckleFilter2dImg/DespeckleFilter2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing2dImg/GaussianSmoothing2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GaussianSmoothing3dImg/GaussianSmoothing3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian2dImg/GenericMedian2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/GenericMedian3dImg/GenericMedian3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoMedian3dImg/HistoMedian3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1Median2dImg/HistoO1Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoO1MedianXStrip2dImg/HistoO1MedianXStrip2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/HistoOkMedian2dImg/HistoOkMedian2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K33Median2dImg/K33Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/K55Median2dImg/K55Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dImg/MeanSmoothing2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing2dMaskImg/MeanSmoothing2dMaskImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dImg/MeanSmoothing3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/MeanSmoothing3dMaskImg/MeanSmoothing3dMaskImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Median2dImg/Median2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/Median3dImg/Median3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization2dImg/PearsonColocalization2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/PearsonColocalization3dImg/PearsonColocalization3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral2dImg/SeparatedBilateral2dImgLvl1.h"
#include "VEXOIPL/VEXOIPLFiltering/Processor/SeparatedBilateral3dImg/SeparatedBilateral3dImgLvl1.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl1.h"
#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl1.h"
#include "tools/Filters.h"
#include "tools/ImageChecks.h"

namespace vexo::imaproc {
namespace {

using namespace attr;
using namespace filter;
using namespace glbmsr;
using namespace logic;
using namespace test;

using ImageHandle = boost::shared_ptr<image::BaseImage>;
using StatsHandle = boost::shared_ptr<StatsResult>;

ImageHandle makeOutput(const ImageHandle& like) {
  return randomImage(like->getGeometry(), like->getBufferType(), 99);
}
StatsHandle makeOutput(const StatsHandle&) {
  return boost::make_shared<StatsResult>();
}
void expectSame(const ImageHandle& expected, const ImageHandle& found) {
  EXPECT_TRUE(sameBits(image::hostImage(expected, "expected"), image::hostImage(found, "found")));
}
void expectSame(const StatsHandle& expected, const StatsHandle& found) {
  EXPECT_EQ(dataItemToText(*expected), dataItemToText(*found));
}

/// Calls with the values of the parameters Ins of a filter, in the order of the arguments, must give what the
/// filter gives, whose result is Out.
template <class Out, class... Ins, class Run, class Start>
void expectCreating(const FilterPtr& filter, const Run& run, const Start& start) {
  SCOPED_TRACE(filter->getObjectName() + " with " + std::to_string(sizeof...(Ins)) + " arguments");
  processor::executeSyncRun(filter);
  const auto expected = filter->getStorage<Out>();
  expectSame(expected, run(filter->getStorage<Ins>()...));
  auto running = start(filter->getStorage<Ins>()...);
  expectSame(expected, getAsyncProcessorOutput(running));
  running.reset();
  expectFailure({"null"}, [&] { getAsyncProcessorOutput(running); });
}
/// The same, with those that fill an output.
template <class Out, class... Ins, class Run, class Start>
void expectForms(const FilterPtr& filter, const Run& run, const Start& start) {
  expectCreating<Out, Ins...>(filter, run, start);
  SCOPED_TRACE(filter->getObjectName() + " with " + std::to_string(sizeof...(Ins)) +
               " arguments and an output");
  const auto expected = filter->getStorage<Out>();
  const auto filled = makeOutput(expected), filledLater = makeOutput(expected);
  run(filter->getStorage<Ins>()..., filled);
  expectSame(expected, filled);
  EXPECT_EQ(filledLater, getAsyncProcessorOutput(start(filter->getStorage<Ins>()..., filledLater)));
  expectSame(expected, filledLater);
  expectFailure({Out::info().name, "null"}, [&] { run(filter->getStorage<Ins>()..., decltype(filled)()); });
}

/// With the optional parameters, or without them.
FilterPtr make(const std::string& name, bool withOptional = false) {
  return makeFilter("vexo::imaproc::" + name + "Lvl1", {23, 14, 5}, eImageBufferType::UInt8, withOptional);
}

TEST(CallForms, OfMeans) {
  expectForms<OutImg, InImg, InHalfKnlSizeX, InHalfKnlSizeY>(
      make("filter::MeanSmoothing2dImg"), [](auto... a) { return meanSmoothing2dImg(a...); },
      [](auto... a) { return meanSmoothing2dImg_async(a...); });
  expectForms<OutImg, InImg3d, InHalfKnlSizeX, InHalfKnlSizeY, InHalfKnlSizeZ>(
      make("filter::MeanSmoothing3dImg"), [](auto... a) { return meanSmoothing3dImg(a...); },
      [](auto... a) { return meanSmoothing3dImg_async(a...); });
  expectForms<OutImg, InImg, InMaskImg, InHalfKnlSizeX, InHalfKnlSizeY>(
      make("filter::MeanSmoothing2dMaskImg"), [](auto... a) { return meanSmoothing2dMaskImg(a...); },
      [](auto... a) { return meanSmoothing2dMaskImg_async(a...); });
  expectForms<OutImg, InImg3d, InBinImg3d, InHalfKnlSizeX, InHalfKnlSizeY, InHalfKnlSizeZ>(
      make("filter::MeanSmoothing3dMaskImg"), [](auto... a) { return meanSmoothing3dMaskImg(a...); },
      [](auto... a) { return meanSmoothing3dMaskImg_async(a...); });
}

TEST(CallForms, OfConvolutions) {
  expectForms<OutImg, InImg, InKnlXY, InNormalize>(
      make("filter::Convolution2dImg"), [](auto... a) { return convolution2dImg(a...); },
      [](auto... a) { return convolution2dImg_async(a...); });
  expectForms<OutImg, InImg, InKnlXY, InNormalize, InOptConvolBorder2d>(
      make("filter::Convolution2dImg", true), [](auto... a) { return convolution2dImg(a...); },
      [](auto... a) { return convolution2dImg_async(a...); });
  expectForms<OutImg, InImg3d, InKnlXYZ, InNormalize>(
      make("filter::Convolution3dImg"), [](auto... a) { return convolution3dImg(a...); },
      [](auto... a) { return convolution3dImg_async(a...); });
  expectForms<OutImg, InImg3d, InKnlXYZ, InNormalize, InOptConvolBorder3d>(
      make("filter::Convolution3dImg", true), [](auto... a) { return convolution3dImg(a...); },
      [](auto... a) { return convolution3dImg_async(a...); });
}

TEST(CallForms, OfGaussians) {
  expectForms<OutImg, InImg, InStdDevX, InStdDevY, InOptSmoothingGaussianCoverage>(
      make("filter::GaussianSmoothing2dImg", true), [](auto... a) { return gaussianSmoothing2dImg(a...); },
      [](auto... a) { return gaussianSmoothing2dImg_async(a...); });
  const FilterPtr round2d = make("filter::GaussianSmoothing2dImg");  // one deviation for all axes
  round2d->set<InStdDevY>(round2d->getStorage<InStdDevX>());
  expectCreating<OutImg, InImg, InStdDevX>(
      round2d, [](auto... a) { return gaussianSmoothing2dImg(a...); },
      [](auto... a) { return gaussianSmoothing2dImg_async(a...); });
  expectForms<OutImg, InImg3d, InStdDevX, InStdDevY, InStdDevZ, InOptSmoothingGaussianCoverage>(
      make("filter::GaussianSmoothing3dImg", true), [](auto... a) { return gaussianSmoothing3dImg(a...); },
      [](auto... a) { return gaussianSmoothing3dImg_async(a...); });
  const FilterPtr round3d = make("filter::GaussianSmoothing3dImg");  // one deviation for all axes
  round3d->set<InStdDevY>(round3d->getStorage<InStdDevX>());
  round3d->set<InStdDevZ>(round3d->getStorage<InStdDevX>());
  expectCreating<OutImg, InImg3d, InStdDevX>(
      round3d, [](auto... a) { return gaussianSmoothing3dImg(a...); },
      [](auto... a) { return gaussianSmoothing3dImg_async(a...); });
}

TEST(CallForms, OfMedians) {
  expectForms<OutImg, InImg>(
      make("filter::K33Median2dImg"), [](auto... a) { return k33Median2dImg(a...); },
      [](auto... a) { return k33Median2dImg_async(a...); });
  expectForms<OutImg, InImg>(
      make("filter::K55Median2dImg"), [](auto... a) { return k55Median2dImg(a...); },
      [](auto... a) { return k55Median2dImg_async(a...); });
  expectForms<OutImg, InImg, InHalfKnlSizeX, InHalfKnlSizeY>(
      make("filter::GenericMedian2dImg"), [](auto... a) { return genericMedian2dImg(a...); },
      [](auto... a) { return genericMedian2dImg_async(a...); });
  expectForms<OutImg, InImg3d, InHalfKnlSizeX, InHalfKnlSizeY, InHalfKnlSizeZ>(
      make("filter::GenericMedian3dImg"), [](auto... a) { return genericMedian3dImg(a...); },
      [](auto... a) { return genericMedian3dImg_async(a...); });
  expectForms<OutImg, InImg, InHalfKnlSizeX, InHalfKnlSizeY, InInputRange>(
      make("filter::HistoO1Median2dImg"), [](auto... a) { return histoO1Median2dImg(a...); },
      [](auto... a) { return histoO1Median2dImg_async(a...); });
  expectForms<OutImg, InImg, InHalfKnlSizeX, InHalfKnlSizeY, InInputRange>(
      make("filter::HistoO1MedianXStrip2dImg"), [](auto... a) { return histoO1MedianXStrip2dImg(a...); },
      [](auto... a) { return histoO1MedianXStrip2dImg_async(a...); });
  expectForms<OutImg, InImg, InHalfKnlSizeX, InHalfKnlSizeY, InInputRange>(
      make("filter::HistoOkMedian2dImg"), [](auto... a) { return histoOkMedian2dImg(a...); },
      [](auto... a) { return histoOkMedian2dImg_async(a...); });
  expectForms<OutImg, InImg3d, InHalfKnlSizeX, InHalfKnlSizeY, InHalfKnlSizeZ, InInputRange>(
      make("filter::HistoMedian3dImg"), [](auto... a) { return histoMedian3dImg(a...); },
      [](auto... a) { return histoMedian3dImg_async(a...); });
  expectForms<OutImg, InImg, InHalfKnlSizeX, InHalfKnlSizeY>(
      make("filter::Median2dImg"), [](auto... a) { return median2dImg(a...); },
      [](auto... a) { return median2dImg_async(a...); });
  expectForms<OutImg, InImg3d, InHalfKnlSizeX, InHalfKnlSizeY, InHalfKnlSizeZ>(
      make("filter::Median3dImg"), [](auto... a) { return median3dImg(a...); },
      [](auto... a) { return median3dImg_async(a...); });
}

TEST(CallForms, OfBilateralFilters) {
  expectCreating<OutImg, InImg, InSpaceSigma, InRangeSigma>(
      make("filter::Bilateral2dImg"), [](auto... a) { return bilateral2dImg(a...); },
      [](auto... a) { return bilateral2dImg_async(a...); });
  expectForms<OutImg, InImg, InOptHalfKnlSize, InSpaceSigma, InRangeSigma>(
      make("filter::Bilateral2dImg", true), [](auto... a) { return bilateral2dImg(a...); },
      [](auto... a) { return bilateral2dImg_async(a...); });
  expectCreating<OutImg, InImg3d, InSpaceSigma, InRangeSigma>(
      make("filter::Bilateral3dImg"), [](auto... a) { return bilateral3dImg(a...); },
      [](auto... a) { return bilateral3dImg_async(a...); });
  expectForms<OutImg, InImg3d, InOptHalfKnlSize, InSpaceSigma, InRangeSigma>(
      make("filter::Bilateral3dImg", true), [](auto... a) { return bilateral3dImg(a...); },
      [](auto... a) { return bilateral3dImg_async(a...); });
  expectCreating<OutImg, InImg, InSpaceSigma, InRangeSigma>(
      make("filter::SeparatedBilateral2dImg"), [](auto... a) { return separatedBilateral2dImg(a...); },
      [](auto... a) { return separatedBilateral2dImg_async(a...); });
  expectForms<OutImg, InImg, InOptHalfKnlSize, InSpaceSigma, InRangeSigma>(
      make("filter::SeparatedBilateral2dImg", true), [](auto... a) { return separatedBilateral2dImg(a...); },
      [](auto... a) { return separatedBilateral2dImg_async(a...); });
  expectCreating<OutImg, InImg3d, InSpaceSigma, InRangeSigma>(
      make("filter::SeparatedBilateral3dImg"), [](auto... a) { return separatedBilateral3dImg(a...); },
      [](auto... a) { return separatedBilateral3dImg_async(a...); });
  expectForms<OutImg, InImg3d, InOptHalfKnlSize, InSpaceSigma, InRangeSigma>(
      make("filter::SeparatedBilateral3dImg", true), [](auto... a) { return separatedBilateral3dImg(a...); },
      [](auto... a) { return separatedBilateral3dImg_async(a...); });
}

TEST(CallForms, OfOthers) {
  expectForms<OutImg, InImg, InHalfKnlSizeX, InHalfKnlSizeY, InFactor>(
      make("filter::DespeckleFilter2dImg"), [](auto... a) { return despeckleFilter2dImg(a...); },
      [](auto... a) { return despeckleFilter2dImg_async(a...); });
  expectForms<OutRealImg, InImg1, InImg2>(
      make("filter::PearsonColocalization2dImg"), [](auto... a) { return pearsonColocalization2dImg(a...); },
      [](auto... a) { return pearsonColocalization2dImg_async(a...); });
  expectForms<OutRealImg, InImg3d1, InImg3d2>(
      make("filter::PearsonColocalization3dImg"), [](auto... a) { return pearsonColocalization3dImg(a...); },
      [](auto... a) { return pearsonColocalization3dImg_async(a...); });
  expectForms<OutImg, InImg1, InImg2, InMaskImg>(
      make("logic::MaskImgImg"), [](auto... a) { return maskImgImg(a...); },
      [](auto... a) { return maskImgImg_async(a...); });
  expectForms<OutStatsResult, InImg>(
      make("glbmsr::StatsMsr"), [](auto... a) { return statsMsr(a...); },
      [](auto... a) { return statsMsr_async(a...); });
}

}  // namespace
}  // namespace vexo::imaproc
