#include "VEXOProcessing/TestProcessors.h"

namespace vexo::test {

using processor::ProcessingInfo;

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

ptrdiff_t spanOf(const image::StripSource& s, int axis) {
  return s.end[axis] - s.begin[axis];
}
ptrdiff_t lineLength(const image::StripSource& s) {
  return spanOf(s, 0) + s.marginBefore[0] + s.marginAfter[0];
}

const processor::KernelTable windowSumTable = makePlainTable(windowSumKernel, windowSumScratch);
const processor::KernelRegistrator registrators[] = {
    {WindowSumXLvl3::retrieveFunctionSelector(), {{{eIS_Standard}, windowSumTable}}},
    {WindowSumYLvl3::retrieveFunctionSelector(), {{{eIS_Standard}, windowSumTable}}},
    {WindowSumZLvl3::retrieveFunctionSelector(), {{{eIS_Standard}, windowSumTable}}}};

}  // namespace

size_t windowSumScratch(const ProcessingInfo& info) {
  const image::StripSource& s = info.sources[0];
  return sizeof(float) * static_cast<size_t>(lineLength(s) + spanOf(s, 0) * spanOf(s, 1) * spanOf(s, 2));
}

const char* windowSumKernel(const ProcessingInfo& info) {
  const image::StripSource& s = info.sources[0];
  auto* line = reinterpret_cast<float*>(info.scratch);
  float* const sums = line + lineLength(s);
  // All sums first: in place, the samples that are stored are still to be read.
  float* sum = sums;
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z)
    for (ptrdiff_t y = s.begin[1]; y < s.end[1]; ++y, sum += spanOf(s, 0)) {
      std::fill_n(sum, spanOf(s, 0), 0.f);
      for (ptrdiff_t dz = -s.marginBefore[2]; dz <= s.marginAfter[2]; ++dz)
        for (ptrdiff_t dy = -s.marginBefore[1]; dy <= s.marginAfter[1]; ++dy) {
          info.loaders[0](line, s, s.begin[0] - s.marginBefore[0], y + dy, z + dz, lineLength(s));
          for (ptrdiff_t x = 0; x < spanOf(s, 0); ++x)
            for (ptrdiff_t i = 0; i <= s.marginBefore[0] + s.marginAfter[0]; ++i) sum[x] += line[x + i];
        }
    }
  sum = sums;
  for (ptrdiff_t z = s.begin[2]; z < s.end[2]; ++z)
    for (ptrdiff_t y = s.begin[1]; y < s.end[1]; ++y, sum += spanOf(s, 0))
      info.storers[0](info.targets[0], sum, s.begin[0], y, z, spanOf(s, 0));
  return nullptr;
}

boost::shared_ptr<image::Image> naiveWindowSum(const image::Image& image, std::ptrdiff_t halfX,
                                               std::ptrdiff_t halfY, std::ptrdiff_t halfZ,
                                               const image::BorderPolicy& border,
                                               image::eImageBufferType type) {
  const auto result = image::Image::create(image.getGeometry(), type);
  forEachSample(image.getGeometry(),
                [&](std::size_t x, std::size_t y, std::size_t z, std::size_t c, std::size_t t) {
                  double sum = 0;
                  for (std::ptrdiff_t dz = -halfZ; dz <= halfZ; ++dz)
                    for (std::ptrdiff_t dy = -halfY; dy <= halfY; ++dy)
                      for (std::ptrdiff_t dx = -halfX; dx <= halfX; ++dx) {
                        sum += getBorderSample(image, border, static_cast<std::ptrdiff_t>(x) + dx,
                                               static_cast<std::ptrdiff_t>(y) + dy,
                                               static_cast<std::ptrdiff_t>(z) + dz, c, t);
                      }
                  setSample(*result, sum, x, y, z, c, t);
                });
  return result;
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
  p->set<attr::InLabel>("quotes \", commas, = and a \\ \n line");
  p->set<attr::InShade>(eShade::Bright);
  p->set<attr::InRange>(range);
  p->set<attr::InKnl>(kernel);
  p->set<attr::InOutCounter>(0);
  p->set<attr::InImg>(makeRandom(geometry, image::eImageBufferType::Int16, 3, 30000));
  p->set<attr::InOutImg>(makeRandom({3, 2, 1, 2, 1}, image::eImageBufferType::UInt8, 4));
  return p;
}

}  // namespace vexo::test
