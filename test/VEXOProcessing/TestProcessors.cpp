#include "VEXOProcessing/TestProcessors.h"

namespace vexo::test {

using processor::ProcessingInfo;

namespace {

template <class T>
void loadPlain(float* line, const image::StripSource& s, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const unsigned char* sample = image::sourceSample(s, x + i, y, z);
    T value;
    std::memcpy(&value, sample ? sample : s.constant, sizeof value);
    line[i] = static_cast<float>(value);
  }
}
template <class T>
void storePlain(const image::StripTarget& t, const float* line, ptrdiff_t x, ptrdiff_t y, ptrdiff_t z,
                ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const T value = static_cast<T>(line[i]);
    std::memcpy(image::targetRow(t, y, z) + (x - t.begin[0] + i) * t.sampleSize, &value, sizeof value);
  }
}

}  // namespace

processor::KernelTable makePlainTable(processor::KernelFunction function,
                                      size_t (*scratchSize)(const ProcessingInfo&)) {
  processor::KernelTable table = {};
  for (int in = 0; in < processor::kernelTypeCount; ++in) {
    for (auto& entry : table.functions[in]) entry = function;
    image::visitBufferType(static_cast<image::eImageBufferType>(in), [&](auto zero) {
      table.loaders[in] = loadPlain<decltype(zero)>;
      table.storers[in] = storePlain<decltype(zero)>;
    });
  }
  table.scratchSize = scratchSize;
  return table;
}

namespace {

/// The sums of a strip, line by line: all before the first is stored, as in place its samples are still read.
template <class Visit>
void forEachLine(const image::StripSource& s, float* sums, const Visit& visit) {
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z)
    for (ptrdiff_t y = s.begin[1]; y < s.end[1]; ++y, sums += s.end[0] - s.begin[0]) visit(sums, y, z);
}

const char* windowSumKernel(const ProcessingInfo& info) {
  const image::StripSource& s = info.sources[0];
  auto* const sums = reinterpret_cast<float*>(info.scratch);
  const ptrdiff_t length = s.end[0] - s.begin[0];
  forEachLine(s, sums, [&](float* sum, ptrdiff_t y, ptrdiff_t z) {
    std::vector<float> line(static_cast<size_t>(length + s.marginBefore[0] + s.marginAfter[0]));
    std::fill_n(sum, length, 0.f);
    for (ptrdiff_t dz = -s.marginBefore[2]; dz <= s.marginAfter[2]; ++dz)
      for (ptrdiff_t dy = -s.marginBefore[1]; dy <= s.marginAfter[1]; ++dy) {
        info.loaders[0](line.data(), s, s.begin[0] - s.marginBefore[0], y + dy, z + dz, line.size());
        for (ptrdiff_t x = 0; x < length; ++x)
          for (ptrdiff_t i = 0; i <= s.marginBefore[0] + s.marginAfter[0]; ++i) sum[x] += line[x + i];
      }
  });
  forEachLine(s, sums, [&](float* sum, ptrdiff_t y, ptrdiff_t z) {
    info.storers[0](info.targets[0], sum, s.begin[0], y, z, length);
  });
  return nullptr;
}
size_t windowSumScratch(const ProcessingInfo& info) {
  size_t size = sizeof(float);
  for (int axis = 0; axis < 3; ++axis)
    size *= static_cast<size_t>(info.sources[0].end[axis] - info.sources[0].begin[axis]);
  return size;
}

const processor::KernelTable windowSumTable = makePlainTable(windowSumKernel, windowSumScratch);
const processor::KernelRegistrator registrator(WindowSumLvl3::retrieveFunctionSelector(),
                                               {{{eIS_Standard}, windowSumTable}});

}  // namespace

BoolResult WindowSumLvl2::retrieveProvider(const core::BasePriority& priority, Provider& provider) {
  using namespace imaproc;
  const bool inPlace = isInSitu(accessAttribute<attr::InPart>(), accessAttribute<attr::OutPart>());
  const auto half = getStorage<attr::InHalfKnlSizeX>();
  using In = ImageXStrip2dSplit<WindowSumLvl3, const image::BaseImage, attr::InKnlStrip>;
  using Out = ImageXStrip2dSplit<WindowSumLvl3, image::BaseImage, attr::OutStrip>;
  using image::eStripAllocationType;
  provider = processor::dispatchStrips<WindowSumLvl3>(
      priority,
      boost::make_shared<In>(getStorage<attr::InPart>(),
                             inPlace ? eStripAllocationType::OwnBuffer : eStripAllocationType::View,
                             centredMargins(half, half)),
      processor::dynamicNoSplit<WindowSumLvl3, attr::InBorder>(getStorage<attr::InBorder>()),
      boost::make_shared<Out>(getStorage<attr::OutPart>(), eStripAllocationType::View));
  return true;
}

void WindowSumLvl1::initOutputs(processor::OutputInitializerColl& initializers) const {
  initializers["OutImg"] = imaproc::duplicateInOut<attr::InImg, attr::OutImg>(accessAttribute<attr::OutImg>(),
                                                                              accessAttribute<attr::InImg>());
}
processor::RulePtr WindowSumLvl1::createRule() const {
  return imaproc::matchSize(accessAttribute<attr::InImg>(), accessAttribute<attr::OutImg>());
}
BoolResult WindowSumLvl1::retrieveProvider(const core::BasePriority& priority, Provider& provider) {
  using Next = WindowSumLvl2;
  provider = processor::dispatchPieces<Next>(
      priority, imaproc::planeSplit<Next, attr::InPart>(getStorage<attr::InImg>()),
      processor::staticNoSplit<Next, attr::InHalfKnlSizeX>(getStorage<attr::InHalfKnlSizeX>()),
      processor::staticNoSplit<Next, attr::InBorder>(getStorage<attr::InBorder>()),
      imaproc::planeSplit<Next, attr::OutPart>(getStorage<attr::OutImg>()));
  return true;
}

boost::shared_ptr<WindowSumLvl1> makeSum(const boost::shared_ptr<const image::BaseImage>& in,
                                         std::uint32_t half) {
  return processor::prepareCall<WindowSumLvl1, attr::InImg, attr::InHalfKnlSizeX>(in, half);
}
boost::shared_ptr<image::Image> sumOf(const image::Image& image, image::eImageBufferType type,
                                      std::ptrdiff_t half, const image::BorderPolicy& border) {
  const auto result = image::Image::create(image.getGeometry(), type);
  forEachSample(image.getGeometry(), [&](auto x, auto y, auto... at) {
    const std::ptrdiff_t column(x), row(y);
    double sum = 0;
    for (std::ptrdiff_t v = row - half; v <= row + half; ++v)
      for (std::ptrdiff_t u = column - half; u <= column + half; ++u)
        sum += getBorderSample(image, border, u, v, at...);
    setSample(*result, sum, x, y, at...);
  });
  return result;
}
const image::Image& resultOf(const processor::BaseProcessor& p) {
  return image::hostImage(p.getStorage<attr::OutImg>(), "the result");
}

void EveryKind::initOutputs(processor::OutputInitializerColl& initializers) const {
  initializers["OutRealImg"] = imaproc::promoteUnary<attr::InImg, attr::OutRealImg>(
      accessAttribute<attr::OutRealImg>(), accessAttribute<attr::InImg>());
  initializers["OutWk2Img"] = imaproc::duplicateInOut<attr::InImg, attr::OutWk2Img>(
      accessAttribute<attr::OutWk2Img>(), accessAttribute<attr::InImg>());
}

void EveryKind::process(const core::RunShare& share) {
  const image::Image& in = image::hostImage(getStorage<attr::InImg>(), "InImg");
  image::Image& out = image::hostImage(getStorage<attr::OutRealImg>(), "OutRealImg");
  const auto optional = accessAttribute<attr::OutOptWk1Img>();
  if (!optional->isSet())
    optional->setImage(in.createSimilar(in.getGeometry(), image::eImageBufferType::Real32));
  workImagesWereThere = optional->isSet() && accessAttribute<attr::OutWk2Img>()->isSet();
  double most = -1e300;
  forEachSample(in.getGeometry(), [&](auto... at) {
    most = std::max(most, getSample(in, at...));
    setSample(out, getSample(in, at...) * getStorage<attr::InFactor>(), at...);
  });
  accessAttribute<attr::OutMaximum>()->setStorage(most);
  accessAttribute<attr::InOutCounter>()->setStorage(getStorage<attr::InOutCounter>() + 1);
  if (failAtEnd) throw std::runtime_error("failed at the end");
  share.done();
}

boost::shared_ptr<EveryKind> makeEveryKind(const image::ImageGeometry& geometry) {
  const auto p = makeReady<EveryKind>();
  const auto kernel = boost::make_shared<KernelXY>();
  kernel->insert({-2, 1}, 0.1f);
  kernel->insert({3, 0}, -4e-20f);
  const auto range = boost::make_shared<Range>();
  range->least.setValue(0.3f);
  range->closed.setValue(false);
  p->set<attr::InFlag>(true);
  p->set<attr::InCount>(4294967295u);
  p->set<attr::InOffset>(-2147483647 - 1);
  p->set<attr::InFactor>(0.5f);
  p->set<attr::InPrecise>(1.0 / 3);
  p->set<attr::InBorder>(image::constantBorder2d(-0.1));
  p->set<attr::InOptLimit>(1e-38f);
  p->set<attr::InLabel>("quotes \", commas, = and a \\ \n line");
  p->set<attr::InShade>(eShade::Bright);
  p->set<attr::InRange>(range);
  p->set<attr::InKnl>(kernel);
  p->set<attr::InOutCounter>(0);
  p->set<attr::InImg>(rangeImage(geometry, image::eImageBufferType::Int16, 0, 30000, 3));
  p->set<attr::InOutImg>(rangeImage({3, 2, 1, 2, 1}, image::eImageBufferType::UInt8, 0, 9, 4));
  return p;
}

void expectSameValues(const EveryKind& a, const EveryKind& b) {
  EXPECT_EQ(a.getStorage<attr::InFlag>(), b.getStorage<attr::InFlag>());
  EXPECT_EQ(a.getStorage<attr::InCount>(), b.getStorage<attr::InCount>());
  EXPECT_EQ(a.getStorage<attr::InOffset>(), b.getStorage<attr::InOffset>());
  EXPECT_EQ(a.getStorage<attr::InFactor>(), b.getStorage<attr::InFactor>());
  EXPECT_EQ(a.getStorage<attr::InPrecise>(), b.getStorage<attr::InPrecise>());
  EXPECT_EQ(a.getStorage<attr::InLabel>(), b.getStorage<attr::InLabel>());
  EXPECT_EQ(a.getStorage<attr::InShade>(), b.getStorage<attr::InShade>());
  EXPECT_EQ(dataItemToText(*a.getStorage<attr::InRange>()), dataItemToText(*b.getStorage<attr::InRange>()));
  EXPECT_TRUE(*a.getStorage<attr::InKnl>() == *b.getStorage<attr::InKnl>());
  EXPECT_TRUE(*a.getStorage<attr::InBorder>() == *b.getStorage<attr::InBorder>());
  EXPECT_EQ(a.getStorage<attr::InOptLimit>(), b.getStorage<attr::InOptLimit>());
}

}  // namespace vexo::test
