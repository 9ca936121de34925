#include <gtest/gtest.h>

#include "VEXOImage/CudaImage.h"
#include "VEXOProcessing/TestProcessors.h"

namespace {

using namespace vexo;
using namespace vexo::processor;
using namespace vexo::imaproc;
using namespace vexo::test;
namespace attr = vexo::test::attr;
using image::ImageGeometry;
using Target = EveryKind;

/// The image that a split hands to one piece.
template <class A, class Split>
boost::shared_ptr<const image::Image> pieceOf(const Split& split, std::size_t index) {
  const auto p = makeReady<Target>();
  split.setPiece(*p, index);
  return boost::dynamic_pointer_cast<const image::Image>(p->getStorage<A>());
}

TEST(SubImageSplit, GoesThroughPlanesAndVolumesInOrder) {
  const ImageGeometry g{3, 2, 4, 3, 2};
  const auto image = rangeImage(g, image::eImageBufferType::UInt8, 0, 9, 1);
  const auto planes = planeSplit<Target, attr::InImg>(image);
  const auto volumes = volumeSplit<Target, attr::InOutImg>(image);
  ASSERT_EQ(planes->getPieceCount(), 24u);
  ASSERT_EQ(volumes->getPieceCount(), 6u);
  std::size_t plane = 0, volume = 0;
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t c = 0; c < g.c; ++c) {
      const auto whole = pieceOf<attr::InOutImg>(*volumes, volume++);
      EXPECT_EQ(whole->getGeometry(), (ImageGeometry{3, 2, 4, 1, 1}));
      EXPECT_EQ(whole->getRow(0), image->getRow(0, 0, c, t));
      for (std::size_t z = 0; z < g.z; ++z) {
        const auto one = pieceOf<attr::InImg>(*planes, plane++);
        EXPECT_EQ(one->getGeometry(), (ImageGeometry{3, 2, 1, 1, 1}));
        EXPECT_EQ(one->getRow(0), image->getRow(0, z, c, t));
      }
    }
  expectFailure({}, [] { planeSplit<Target, attr::InImg>({}); });
}

TEST(SubImageSplit, PiecesAndParsingMustFit) {
  const auto image = image::Image::create({3, 2, 4}, image::eImageBufferType::UInt8);
  BaseSubImageSplit split;
  const auto init = [&](eSubImageSplitType type, eVolumeParsingType volume) {
    return split.initBase(type, volume, eColorParsingType::ChannelByChannel,
                          eTemporalParsingType::FrameByFrame, image);
  };
  EXPECT_FALSE(init(eSubImageSplitType::Plane2d, eVolumeParsingType::WholeVolume));
  EXPECT_FALSE(init(eSubImageSplitType::Volume3d, eVolumeParsingType::SliceBySlice));
  EXPECT_TRUE(init(eSubImageSplitType::Plane2d, eVolumeParsingType::SliceBySlice));
}

TEST(Split, WantsAnImageInTheMemoryThatItCuts) {
  using OnGpu = CudaSubImageSplit<Target, attr::InImg>;
  using Strips = ImageYStrip2dSplit<WindowSumLvl3, image::BaseImage, attr::OutStrip>;
  const auto host = image::Image::create({3, 2}, image::eImageBufferType::UInt8);
  expectFailure({"InImg"}, [&] { OnGpu(host, eSubImageSplitType::Plane2d); });
  expectFailure({"GPU"}, [&] { OnGpu({}, eSubImageSplitType::Plane2d); });
  expectFailure({"OutStrip"}, [] { Strips({}, image::eStripAllocationType::View); });
}

TEST(Split, EachKindGivesThePieceItsValue) {
  const auto p = makeReady<Target>();
  const PlanIndexedSplit<Target, attr::InOffset> indexed({5, -6, 7});
  EXPECT_EQ(indexed.getPieceCount(), 3u);
  indexed.setPiece(*p, 1);
  EXPECT_EQ(p->getStorage<attr::InOffset>(), -6);
  EXPECT_THROW(indexed.setPiece(*p, 3), std::exception);
  const auto fixed = staticNoSplit<Target, attr::InFactor>(2.5f);
  EXPECT_EQ(fixed->getPieceCount(), std::nullopt);
  fixed->setPiece(*p, 99);
  EXPECT_EQ(p->getStorage<attr::InFactor>(), 2.5f);
  const auto dynamic = dynamicNoSplit<Target, attr::InLabel>("same");
  EXPECT_FALSE(dynamic->getExtent());
  dynamic->setPiece(*p, 99);
  EXPECT_EQ(p->getStorage<attr::InLabel>(), "same");
  // A fresh object for each piece, so that pieces do not share what they write.
  const DynamicByCreationResultSplit<Target, attr::InRange> created;
  created.setPiece(*p, 0);
  const auto first = p->getStorage<attr::InRange>();
  created.setPiece(*p, 1);
  EXPECT_NE(p->getStorage<attr::InRange>(), first);
  const DynamicByCreationResultSplit<Target, attr::InCount> counted(
      [](std::size_t i) { return unsigned(i * 10); });
  counted.setPiece(*p, 4);
  EXPECT_EQ(p->getStorage<attr::InCount>(), 40u);
}

TEST(Split, OtherProcessorsAreRefused) {
  const auto split = staticNoSplit<Steps1, attr::InOptMask>({});
  EXPECT_TRUE(split->checkProcessorType(*makeReady<Steps1>()));
  EXPECT_TRUE(has(split->checkProcessorType(*makeReady<Steps2>()).getMessage(), "Steps2"));
  expectFailure({"Steps2"}, [&] { dispatchPieces<Steps2>(core::BasePriority(), split); });
  const auto strips = dynamicNoSplit<Target, attr::InBorder>(image::mirorBorder2d());
  expectFailure({"WindowSumLvl3"}, [&] { dispatchStrips<WindowSumLvl3>(core::BasePriority(), strips); });
}

TEST(Dispatcher, PieceCountsMustAgree) {
  const auto image = image::Image::create({3, 2, 4, 3}, image::eImageBufferType::UInt8);
  const auto planes = planeSplit<Target, attr::InImg>(image);
  const auto offsets = [](std::size_t n) {
    return boost::make_shared<PlanIndexedSplit<Target, attr::InOffset>>(std::vector<std::int32_t>(n, 1));
  };
  const auto same = staticNoSplit<Target, attr::InFactor>(1);
  EXPECT_EQ(dispatchPieces<Target>(core::BasePriority(), same, planes, offsets(12))->prepare(), 12u);
  EXPECT_EQ(dispatchPieces<Target>(core::BasePriority(), same)->prepare(), 1u);
  for (const std::size_t n : {0, 1, 11, 13}) {
    expectFailure({"12", std::to_string(n), "InOffset"},
                  [&] { dispatchPieces<Target>(core::BasePriority(), same, planes, offsets(n)); });
  }
}

TEST(Dispatcher, StripsMustBeCutAlongOneAxisOfOneSize) {
  using Next = WindowSumLvl3;
  using In = ImageYStrip2dSplit<Next, const image::BaseImage, attr::InKnlStrip>;
  using Out = ImageYStrip2dSplit<Next, image::BaseImage, attr::OutStrip>;
  using Across = ImageXStrip2dSplit<Next, image::BaseImage, attr::OutStrip>;
  const auto view = image::eStripAllocationType::View;
  const auto make = [](std::size_t x, std::size_t y) {
    return image::Image::create({x, y}, image::eImageBufferType::UInt8);
  };
  const auto in = boost::make_shared<In>(make(20, 20), view, centredMargins(0, 5));
  const auto count = [](const auto&... splits) {
    return dispatchStrips<Next>(core::BasePriority(), splits...)->prepare();
  };
  // Two margins are the shortest strip, whichever split comes first.
  EXPECT_EQ(count(in, boost::make_shared<Out>(make(20, 20), view)), 2u);
  EXPECT_EQ(count(boost::make_shared<Out>(make(20, 20), view), in), 2u);
  // A kernel that trusts the input's sizes would write beyond the narrower output.
  expectFailure({"OutStrip"}, [&] { count(in, boost::make_shared<Out>(make(7, 20), view)); });
  expectFailure({"OutStrip"}, [&] { count(in, boost::make_shared<Out>(make(20, 19), view)); });
  expectFailure({"OutStrip"}, [&] { count(in, boost::make_shared<Across>(make(20, 20), view)); });
}

TEST(CutIntoStrips, LieAtFixedPlacesWhateverTheLength) {
  for (std::size_t length = 1; length < 300; ++length)
    for (const std::size_t margin : {0, 1, 3, 40})
      for (const ProcessorDispatchPolicy policy : {ProcessorDispatchPolicy{1, 0}, {5, 2}, {64, 8}, {0, 0}}) {
        const image::StripBounds bounds = cutIntoStrips(length, margin, policy);
        const std::size_t strip =
            std::max<std::size_t>({policy.minStripLength, margin * policy.lengthPerMargin, 1});
        ASSERT_EQ(bounds.size(), (length + strip - 1) / strip + 1);
        for (std::size_t i = 0; i + 1 < bounds.size(); ++i) ASSERT_EQ(bounds[i], i * strip);
        ASSERT_EQ(bounds.back(), length);
      }
}

TEST(KernelMargins, AreTheReachOfTheOffsets) {
  KernelXYZ kernel;
  const auto empty = kernelMargins(kernel);
  kernel.insert({-2, 5, 1}, 1);
  kernel.insert({-1, 7, 3}, 1);
  const auto m = kernelMargins(kernel);
  EXPECT_EQ(std::vector<std::size_t>(m.before, m.before + 3), (std::vector<std::size_t>{2, 0, 0}));
  EXPECT_EQ(std::vector<std::size_t>(m.after, m.after + 3), (std::vector<std::size_t>{0, 7, 3}));
  for (int axis = 0; axis < 3; ++axis) EXPECT_EQ(empty.before[axis] + empty.after[axis], 0u);
  KernelXY flat;
  flat.insert({0, -32767}, 1);
  EXPECT_EQ(kernelMargins(flat).before[1], 32767u);
  flat.insert({0, -32768}, 1);
  expectFailure({"32768"}, [&] { kernelMargins(flat); });
  expectFailure({"40000"}, [] { centredMargins(1, 2, 40000); });
}

}  // namespace
