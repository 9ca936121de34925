// What must hold for every filter, whatever it computes. Filters, their images and parameters come from the
// factory and tools/Filters.h, the types that they take from the README.

#include <functional>

#include "VEXOSerialization/JsonArchive.h"
#include "tools/Filters.h"
#include "tools/ImageChecks.h"
#include "tools/Readme.h"

namespace vexo::test {
namespace {

using core::eSynchroType;

constexpr auto uint8 = eImageBufferType::UInt8, uint16 = eImageBufferType::UInt16,
               real32 = eImageBufferType::Real32;

testing::AssertionResult sameResult(const Result& a, const Result& b) {
  const std::string difference = findDifference(a, b);
  return difference.empty() ? testing::AssertionSuccess() : testing::AssertionFailure() << difference;
}

Result run(const FilterPtr& filter) {
  processor::executeSyncRun(filter);
  return resultOf(*filter);
}

Result runOn(const InstructionSetsIdentifier& sets, const FilterPtr& filter) {
  const ForcedSets forced(sets);
  return run(filter);
}

/// The result, or none when no kernel serves these sample types on the instruction sets that are forced.
std::optional<Result> runWhereServed(const FilterPtr& filter) {
  try {
    return run(filter);
  } catch (const BaseException& refused) {
    if (refused.getMessage().find("has no kernel for the sample types") == std::string::npos) throw;
    return std::nullopt;
  }
}

class AllFilters : public testing::TestWithParam<std::string> {
protected:
  const ReadmeFilter& readme() const {
    static const auto filters = readReadme(VEXO_README);
    const std::string name = shortName(GetParam());
    return filters.at(name.substr(0, name.size() - 4));
  }
  FilterPtr make(const ImageGeometry& g, eImageBufferType type, std::size_t choice = 0) const {
    return makeFilter(GetParam(), g, type, choice);
  }
  /// One with the same inputs, and an output of that type to fill.
  FilterPtr makeLike(const processor::BaseProcessor& other, eImageBufferType outType) const {
    const FilterPtr filter = processor::ProcessorFactory::createProcessor(GetParam());
    filter->init();
    for (const auto& attribute : other.getAttributes())
      if (attribute->isInput()) filter->findAttribute(attribute->getName())->copyValue(*attribute);
    if (const auto output = imageOutput(*filter)) {
      const ImageGeometry& g = imageInputs(other)[0]->getImage()->getGeometry();
      const ImagePtr image = Image::create(g, outType);
      std::memset(image->getData(), 0x5a, g.x * g.y * g.z * g.c * g.t * getSampleSize(outType));
      output->setImage(image);
    }
    return filter;
  }
  std::vector<eImageBufferType> outputsOf(eImageBufferType type) const {
    std::vector<eImageBufferType> types;
    for (const auto out : allTypes())
      if (readme().hasImage() ? readme().takesAsOutput(out, type) : out == real32) types.push_back(out);
    return types;
  }
};
INSTANTIATE_TEST_SUITE_P(Each, AllFilters, testing::ValuesIn(filterNames()),
                         [](const auto& info) { return shortName(info.param); });

/// Runs it on images with gaps, which begin at odd addresses: the same comes out, and nothing else is
/// written.
void expectSameWithGaps(const FilterPtr& filter, std::size_t offset, const Result& expected) {
  std::vector<GapImage> images;
  auto attributes = imageInputs(*filter);
  if (const auto output = imageOutput(*filter)) attributes.push_back(output);
  for (const auto& attribute : attributes) {
    images.emplace_back(*imageIn(*attribute), offset++ % 4);
    attribute->setImage(images.back().get());
  }
  EXPECT_TRUE(sameResult(run(filter), expected)) << "with gaps";
  for (const GapImage& image : images) EXPECT_TRUE(image.areGapsWhole());
}

/// Runs filters that `like` makes with the output in the memory of each input that has samples of that size.
template <class Like>
void expectSameInPlace(const Like& like, std::size_t threads, const Result& expected) {
  const FilterPtr model = like();
  if (!imageOutput(*model)) return;
  const eImageBufferType out = imageOutput(*model)->getImage()->getBufferType();
  for (std::size_t i = 0; i < imageInputs(*model).size(); ++i) {
    const ImagePtr input = imageIn(*imageInputs(*model)[i]);
    if (getSampleSize(input->getBufferType()) != getSampleSize(out)) continue;
    const GapImage both(*input, 1);
    const FilterPtr filter = like();
    imageInputs(*filter)[i]->setImage(both.get());
    imageOutput(*filter)->setImage(
        Image::wrap(both.get()->getData(), input->getGeometry(), out, both.get()->getStrides(), both.get()));
    filter->setThreadLimit(threads);
    EXPECT_TRUE(sameResult(run(filter), expected))
        << "in place of input " << i << ", " << threads << " threads";
    EXPECT_TRUE(both.areGapsWhole());
  }
}

// Lines of several vectors and a tail; in planes and volumes.
TEST_P(AllFilters, GiveTheSameBitsOnEveryInstructionSetForAllTypes) {
  for (const auto type : allTypes())
    for (const std::size_t choice : {0, 1}) {
      const FilterPtr given = make({75, 13, 4}, type, choice);
      std::vector<ImagePtr> before;
      for (const auto& input : imageInputs(*given)) before.push_back(copyOf(*imageIn(*input)));
      for (const auto out : outputsOf(type)) {
        const auto like = [&] { return makeLike(*given, out); };
        const Result expected = runOn({eIS_Standard}, like());
        for (const eInstructionSet set : {eIS_Standard, eIS_SSE2, eIS_AVX, eIS_AVX2, eIS_AVX512}) {
          if (!core::isAvailable(set)) continue;
          SCOPED_TRACE(std::string(toString(type)) + " to " + toString(out) + " on " + core::toString({set}));
          const ForcedSets forced({set});
          const auto found = runWhereServed(like());
          ASSERT_TRUE(found || (set == eIS_AVX && (type != real32 || out != real32))) << "no kernel";
          if (!found) continue;
          EXPECT_TRUE(sameResult(*found, expected));
          expectSameWithGaps(like(), set, expected);
          expectSameInPlace(like, 1, expected);
        }
      }
      for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_TRUE(sameBits(*before[i], *imageIn(*imageInputs(*given)[i]))) << "the input has changed";
    }
}

TEST_P(AllFilters, GiveTheSameBitsForNanAndInfinities) {
  const double odd[] = {NAN, -NAN, INFINITY, -INFINITY, 3e38, -3e38};
  for (const std::size_t choice : {0, 1}) {
    const FilterPtr given = make({75, 33, 3}, real32, choice);
    std::mt19937 random(5);
    for (const auto& input : imageInputs(*given)) {
      const ImagePtr image = imageIn(*input);
      if (isMask(input->getName())) continue;
      forEachSample(image->getGeometry(), [&](auto... at) {
        if (random() % 300 == 0) setSample(*image, odd[random() % 6], at...);
      });
    }
    for (const auto out : outputsOf(real32)) {
      const Result expected = runOn({eIS_Standard}, makeLike(*given, out));
      for (const auto& sets : offeredSets())
        EXPECT_TRUE(sameResult(runOn(sets, makeLike(*given, out)), expected))
            << core::toString(sets.getSets()) << " to " << toString(out);
    }
  }
}

// Images that are cut into several strips, of rows and of slices.
TEST_P(AllFilters, GiveTheSameBitsInPlaceAndOnAnyNumberOfThreads) {
  for (const ImageGeometry& g : {ImageGeometry{40, 150, 2}, {11, 9, 140, 1, 2}})
    for (const auto type : allTypes())
      for (const std::size_t choice : {0, 1}) {
        const FilterPtr given = make(g, type, choice);
        for (const auto out : outputsOf(type)) {
          const bool isUsual = !readme().hasImage() || out == readme().getDefaultOutput(type);
          if (!isUsual && getSampleSize(type) != getSampleSize(out)) continue;
          SCOPED_TRACE(std::string(toString(type)) + " to " + toString(out) + ", " + toString(g));
          const auto like = [&] { return makeLike(*given, out); };
          const FilterPtr alone = like();
          alone->setThreadLimit(1);
          const Result expected = run(alone);
          for (const std::size_t threads : {2, 3, 7}) {
            if (!isUsual) break;
            const FilterPtr together = like();
            together->setThreadLimit(threads);
            EXPECT_TRUE(sameResult(run(together), expected)) << threads << " threads";
          }
          for (const std::size_t threads : {1, 3}) expectSameInPlace(like, threads, expected);
        }
      }
}

TEST_P(AllFilters, GiveTheSameBitsOnTinyAndThinImages) {
  std::vector<ImageGeometry> shapes = {{1, 1},    {1, 40},   {40, 1},   {2, 3, 2}, {1, 1, 30}, {1, 9, 7},
                                       {9, 1, 7}, {5, 4, 6}, {1100, 3}, {3, 150},  {2, 3, 90}};
  for (std::size_t width = 2; width <= 70; ++width) shapes.push_back({width, 1 + width % 5});
  for (const ImageGeometry& shape : shapes)
    for (const auto type : {uint8, real32}) {
      SCOPED_TRACE(std::string(toString(type)) + " " + toString(shape));
      const FilterPtr given = make(shape, type);
      const auto like = [&] { return makeLike(*given, readme().getDefaultOutput(type)); };
      const Result expected = runOn({eIS_Standard}, like());
      for (const auto& sets : offeredSets()) {
        const ForcedSets forced(sets);
        expectSameWithGaps(like(), shape.x, expected);
      }
      expectSameInPlace(like, 1, expected);
    }
}

/// One volume of an image, or one plane of it.
ImagePtr partOf(const Image& image, std::size_t z, std::size_t sizeZ, std::size_t c, std::size_t t) {
  return makeImage(
      {image.getSizeX(), image.getSizeY(), sizeZ}, image.getBufferType(),
      [&](auto x, auto y, auto partZ, auto...) { return getSample(image, x, y, z + partZ, c, t); });
}

TEST_P(AllFilters, FilterEachPlaneOrVolumeOnItsOwn) {
  const ImageGeometry g{33, 20, 5, 2, 2};
  const FilterPtr whole = make(g, uint8);
  if (!imageOutput(*whole)) GTEST_SKIP() << "all samples count together";
  const bool volumes = imageInputs(*whole)[0]->getName().find("3d") != std::string::npos;
  const Result expected = run(whole);
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t c = 0; c < g.c; ++c)
      for (std::size_t z = 0; z < (volumes ? 1 : g.z); ++z) {
        const std::size_t slices = volumes ? g.z : 1;
        const FilterPtr part = make({1, 1}, uint8);
        for (std::size_t i = 0; i < imageInputs(*part).size(); ++i)
          imageInputs(*part)[i]->setImage(partOf(*imageIn(*imageInputs(*whole)[i]), z, slices, c, t));
        EXPECT_TRUE(sameBits(*run(part).images[0], *partOf(*expected.images[0], z, slices, c, t)))
            << "z " << z << " c " << c << " t " << t;
      }
}

TEST_P(AllFilters, CreateOutputsOfTheTypeThatTheReadmeStates) {
  for (const auto type : allTypes()) {
    const ImageGeometry g{20, 12, 3, 2, 2};
    const FilterPtr filter = make(g, type);
    const Result created = run(filter);
    if (readme().hasImage()) {
      ASSERT_EQ(created.images.size(), 1u);
      EXPECT_EQ(created.images[0]->getGeometry(), g);
      EXPECT_EQ(created.images[0]->getBufferType(), readme().getDefaultOutput(type));
    }
    for (const auto out : allTypes()) {
      if (!readme().hasImage()) continue;
      const FilterPtr filling = makeLike(*filter, out);
      const ImagePtr given = imageIn(*imageOutput(*filling)), before = copyOf(*given);
      if (!readme().takesAsOutput(out, type)) {
        expectFailure({imageOutput(*filling)->getName(), toString(out)}, [&] { run(filling); });
        EXPECT_TRUE(sameBits(*given, *before));
      } else if (out == readme().getDefaultOutput(type)) {
        EXPECT_TRUE(sameResult(run(filling), created));
        EXPECT_EQ(imageOutput(*filling)->getImage(), given);
      }
    }
  }
}

TEST_P(AllFilters, RunInTheBackgroundAndAgainWithOtherValues) {
  const ImageGeometry sizes[] = {{40, 70, 3}, {23, 31, 2}};
  const eImageBufferType types[] = {uint8, real32};
  const FilterPtr again = make({1, 1}, uint16);
  for (const auto synchro : {eSynchroType::Synchronous, eSynchroType::Asynchronous})
    for (const std::size_t i : {0, 1, 0}) {
      giveValues(*again, i);
      giveImages(*again, sizes[i], types[i]);
      ASSERT_TRUE(again->run(synchro));
      again->wait();
      ASSERT_NO_THROW(again->rethrowFailure());
      const Result found = resultOf(*again);
      EXPECT_TRUE(sameResult(found, run(make(sizes[i], types[i], i))));
      EXPECT_EQ(again->getProgress(), 1);
    }
}

TEST_P(AllFilters, AreCopiedAndArchivedWithTheirValues) {
  for (const std::size_t choice : {0, 1}) {
    const FilterPtr original = make({21, 14, 3}, uint16, choice);
    const auto create = [&] { return processor::ProcessorFactory::createProcessor(GetParam()); };
    const FilterPtr copy = create(), restored = create(), bare = create();
    for (const FilterPtr& filter : {copy, restored}) filter->init();
    EXPECT_TRUE(copy->copy(*original));
    EXPECT_FALSE(copy->copy(*bare)) << "not initialised";
    JsonOArchive out;
    original->write(out);
    JsonIArchive in(out.getText());
    ASSERT_TRUE(restored->read(in));
    JsonOArchive again;
    restored->write(again);
    EXPECT_EQ(again.getText(), out.getText());
    const Result expected = run(original);
    EXPECT_TRUE(sameResult(run(copy), expected)) << "copied";
    EXPECT_TRUE(sameResult(run(restored), expected)) << "archived";
  }
}

/// Calls that fail before any work: each names what is wrong, and leaves the output as it is.
class Refusals {
public:
  explicit Refusals(std::function<FilterPtr()> make) : _make(std::move(make)) {}

  template <class Spoil>
  void expect(std::initializer_list<std::string> parts, const Spoil& spoil) const {
    for (const auto synchro : {eSynchroType::Synchronous, eSynchroType::Asynchronous})
      for (const bool given : {true, false}) {
        SCOPED_TRACE(*parts.begin() + (given ? ", output given" : ""));
        const FilterPtr filter = _make();
        const auto output = imageOutput(*filter);
        if (output && !given) output->clear();
        const ImagePtr image = output ? imageIn(*output) : nullptr, before = image ? copyOf(*image) : nullptr;
        auto held = output ? output->getImage() : nullptr;
        expectFailure(parts, [&] {
          spoil(*filter);
          if (output) held = output->getImage();
          filter->run(synchro);
          filter->wait();
          filter->rethrowFailure();
        });
        EXPECT_TRUE(!image || sameBits(*image, *before));
        EXPECT_TRUE(!output || output->getImage() == held) << "an output was created";
      }
  }

private:
  std::function<FilterPtr()> _make;
};

TEST_P(AllFilters, RefuseBadCallsByNameBeforeAnyWork) {
  const ImageGeometry g{20, 10, 2}, tall{20, 11, 2};
  const FilterPtr good = make(g, real32);
  const Refusals refusals([&] { return makeLike(*good, real32); });
  const auto find = [](processor::BaseProcessor& filter, const std::string& name) {
    return boost::dynamic_pointer_cast<processor::BaseImageAttribute>(filter.findAttribute(name));
  };
  for (const auto& attribute : good->getAttributes()) {
    const std::string& name = attribute->getName();
    if (attribute->isInput() && !attribute->isOptional())
      refusals.expect({name}, [&](auto& filter) { filter.findAttribute(name)->clear(); });
    if (find(*good, name)) {
      refusals.expect({name, "null"}, [&](auto& filter) { find(filter, name)->setImage(nullptr); });
    } else if (attribute->isInput()) {
      for (const char* refused : valuesOf(*attribute).refused)
        refusals.expect({name}, [&](auto& filter) {
          // Derived from this deviation, the half size would be too large.
          if (const auto half = filter.findAttribute("InOptHalfKnlSize"); half && name != half->getName())
            half->clear();
          const BoolResult set = filter.findAttribute(name)->setText(refused);
          ASSERT_TRUE(set) << refused << " is no text of " << name;
        });
    }
  }
  for (const auto& input : imageInputs(*good)) {
    const std::string name = input->getName();
    if (input != imageInputs(*good)[0])
      refusals.expect({name, "20 x 11"}, [&](auto& filter) {
        find(filter, name)->setImage(randomImage(tall, input->getImage()->getBufferType()));
      });
    if (isMask(name))
      refusals.expect({name, "uint16"},
                      [&](auto& filter) { find(filter, name)->setImage(randomImage(g, uint16)); });
  }
  if (!imageOutput(*good)) return;
  // The output is spoiled, not one that is to be created.
  const std::string output = imageOutput(*good)->getName();
  refusals.expect({output, "20 x 11", good->getObjectName()},
                  [&](auto& filter) { find(filter, output)->setImage(randomImage(tall, real32)); });
  for (const auto& input : imageInputs(*good)) {
    const std::string name = input->getName();
    const ImagePtr memory = randomImage(tall, input->getImage()->getBufferType()), before = copyOf(*memory);
    const auto rowsFrom = [&](std::size_t y) {
      return Image::wrap(memory->getRow(y), g, memory->getBufferType(), memory->getStrides(), memory);
    };
    refusals.expect({name, output, "overlap"}, [&](auto& filter) {
      find(filter, name)->setImage(rowsFrom(0));
      find(filter, output)->setImage(rowsFrom(1));
    });
    EXPECT_TRUE(sameBits(*memory, *before));
  }
}

// Lower levels can be made by name; they must not trust what they are given.
TEST(AllLevels, RefuseToRunWithoutInputs) {
  using processor::eProcessorRulePolicy;
  for (const std::string& name : processor::ProcessorFactory::getTypeNames())
    for (const auto policy : {eProcessorRulePolicy::WithRules, eProcessorRulePolicy::WithoutRules}) {
      const FilterPtr level = processor::ProcessorFactory::createProcessor(name);
      expectFailure({level->getObjectName(), "not initialised"}, [&] { processor::executeSyncRun(level); });
      level->init(policy);
      expectFailure({level->getObjectName(), "In"}, [&] { processor::executeSyncRun(level); });
    }
}

// All find kernels, and without those of any class some filter does not: so each class is run there.
TEST(AllKernels, AreRunOnAvx) {
  if (!core::isAvailable(eIS_AVX)) GTEST_SKIP() << "no AVX here";
  ASSERT_GT(kernelClasses().size(), 20u);
  const auto allAreServed = [] {
    for (const std::string& name : filterNames())
      for (const std::size_t choice : {0, 1})
        if (!runWhereServed(makeFilter(name, {9, 8, 7}, real32, choice))) return false;
    return true;
  };
  const ForcedSets forced({eIS_AVX});
  EXPECT_TRUE(allAreServed());
  for (const KernelClass& kernels : kernelClasses()) {
    kernels->forceInstructionSets({eIS_FMA3});  // which no kernel is for
    EXPECT_FALSE(allAreServed()) << kernels->getClassName();
    kernels->forceInstructionSets({eIS_AVX});
  }
}

}  // namespace
}  // namespace vexo::test
