#include "VEXOIPL/VEXOIPLLogical/Processor/MaskImgImg/MaskImgImgLvl1.h"

#include <cmath>
#include <limits>

#include "VEXOIPL/VEXOIPLFiltering/TestImages.h"

namespace vexo::imaproc::logic {
namespace {

using namespace vexo::test;

const char* const kernelClass = "vexo::imaproc::logic::MaskImgImgLvl3";

/// The conversion in double, which holds every sample exactly.
double converted(double value, eImageBufferType type) {
  return image::visitBufferType(type, [&](auto zero) -> double {
    using T = decltype(zero);
    if (std::is_floating_point_v<T>) return static_cast<float>(value);
    if (std::isnan(value)) return 0;
    return std::min(std::max(std::round(value), static_cast<double>(std::numeric_limits<T>::lowest())),
                    static_cast<double>(std::numeric_limits<T>::max()));
  });
}

/// Random samples, among them the limits of all types, halves and odd values beyond 2^24.
ImagePtr edgeImage(const ImageGeometry& g, eImageBufferType type, unsigned seed) {
  const ImagePtr result = randomImage(g, type, seed);
  const std::vector<double> values = {
      0,        -1,         127,           128,   -128,  -129,       255,         256,         32767,
      32768,    -32768,     -32769,        65535, 65536, 0.5,        -0.5,        2.5,         -2.5,
      16777217, 2147483647, -2147483648.0, 1e30,  -1e30, 4294967295, 0.49999997f, 2147483648.0};
  std::size_t next = seed;
  forEachSample(g, [&](auto x, auto y, auto z, auto c, auto t) {
    if ((x + y) % 2 == 0) setSample(*result, converted(values[next++ % values.size()], type), x, y, z, c, t);
    if (type == eImageBufferType::Real32 && next % 29 == 0)
      setSample(
          *result,
          next % 2 ? std::numeric_limits<double>::quiet_NaN() : -std::numeric_limits<double>::infinity(), x,
          y, z, c, t);
  });
  return result;
}

void expectChosen(const Image& first, const Image& second, const Image& mask, const Image& out) {
  int failures = 0;
  forEachSample(out.getGeometry(), [&](auto x, auto y, auto z, auto c, auto t) {
    const Image& chosen = getSample(mask, x, y, z, c, t) != 0 ? first : second;
    const double expected = converted(getSample(chosen, x, y, z, c, t), out.getBufferType());
    const double found = getSample(out, x, y, z, c, t);
    if (found != expected && !(std::isnan(found) && std::isnan(expected)) && failures++ < 3)
      ADD_FAILURE() << "x " << x << " y " << y << " z " << z << ": " << found << " instead of " << expected;
  });
}

class MaskImgImgTypes : public ::testing::TestWithParam<eImageBufferType> {};
INSTANTIATE_TEST_SUITE_P(Types, MaskImgImgTypes, ::testing::ValuesIn(allTypes()),
                         [](const auto& info) { return image::toString(info.param); });

TEST_P(MaskImgImgTypes, AllTypesOfSecondAndOutputOnEveryInstructionSet) {
  const ImageGeometry g{1100, 3, 1, 2};
  const ImagePtr first = edgeImage(g, GetParam(), 1);
  const ImagePtr mask = randomImage(g, eImageBufferType::UInt8, 3);
  forEachSample(g, [&](auto x, auto y, auto z, auto c, auto t) {
    if (x / 3 % 2) setSample(*mask, 0, x, y, z, c, t);
  });
  for (const auto& sets : offeredSets()) {
    const ForcedSets forced(kernelClass, sets);
    for (const auto secondType : allTypes()) {
      const ImagePtr second = edgeImage(g, secondType, 2);
      for (const auto type : allTypes()) {
        SCOPED_TRACE(core::toString(sets.getSets()) + " " + image::toString(secondType) + " to " +
                     image::toString(type));
        const ImagePtr out = withGaps(*Image::create(g, type), 1);
        maskImgImg(withGaps(*first, 3), second, mask, out);
        expectChosen(*first, *second, *mask, *out);
      }
    }
  }
}

TEST_P(MaskImgImgTypes, InPlaceEqualsSeparate) {
  const ImageGeometry g{70, 200, 2};
  const ImagePtr first = edgeImage(g, GetParam(), 1), second = edgeImage(g, GetParam(), 2);
  const ImagePtr mask = randomImage(g, eImageBufferType::UInt8, 3);
  forEachSample(g, [&](auto x, auto y, auto z, auto, auto) {
    if ((x + y + z) % 2) setSample(*mask, 0, x, y, z);
  });
  for (const auto type : allTypes()) {
    SCOPED_TRACE(image::toString(type));
    const ImagePtr expected = Image::create(g, type);
    maskImgImg(first, second, mask, expected);
    if (getSampleSize(type) == getSampleSize(GetParam()))
      for (const bool intoFirst : {true, false}) {
        const ImagePtr same = copyOf(intoFirst ? *first : *second);
        const ImagePtr out = Image::wrap(same->getData(), g, type, same->getStrides(), same);
        maskImgImg(intoFirst ? same : first, intoFirst ? second : same, mask, out);
        EXPECT_TRUE(sameBits(*out, *expected)) << intoFirst;
      }
    if (type == eImageBufferType::UInt8) {
      const ImagePtr same = copyOf(*mask);
      maskImgImg(first, second, same, same);
      EXPECT_TRUE(sameBits(*same, *expected)) << "into the mask";
    }
  }
}

TEST(MaskImgImg, CallFormsAgreeAndBadCallsNameWhatIsWrong) {
  const ImageGeometry g{30, 20};
  const ImagePtr first = randomImage(g, eImageBufferType::Int16, 1);
  const ImagePtr second = randomImage(g, eImageBufferType::Real32, 2);
  const ImagePtr mask = randomImage(g, eImageBufferType::UInt8, 3);
  const auto created = maskImgImg(first, second, mask);
  EXPECT_EQ(created->getBufferType(), eImageBufferType::Int16);
  const Image& expected = image::hostImage(created, "created");
  const ImagePtr out = Image::create(g, eImageBufferType::Int16);
  EXPECT_TRUE(sameBits(
      image::hostImage(getAsyncProcessorOutput(maskImgImg_async(first, second, mask)), "async"), expected));
  EXPECT_EQ(getAsyncProcessorOutput(maskImgImg_async(first, second, mask, out)), out);
  EXPECT_TRUE(sameBits(*out, expected));

  const auto expectRefused = [](const std::function<void()>& call, const char* name, const char* words) {
    try {
      call();
      ADD_FAILURE() << words << ": nothing was thrown";
    } catch (const BaseException& failure) {
      EXPECT_NE(failure.getMessage().find(name), std::string::npos) << failure.what();
      EXPECT_NE(failure.getMessage().find(words), std::string::npos) << failure.what();
    }
  };
  const ImagePtr other = randomImage({30, 21}, eImageBufferType::UInt8);
  expectRefused([&] { maskImgImg(first, other, mask); }, "InImg2", "30 x 21");
  expectRefused([&] { maskImgImg(first, second, other); }, "InMaskImg", "30 x 21");
  expectRefused([&] { maskImgImg(first, second, mask, other); }, "OutImg", "30 x 21");
  expectRefused([&] { maskImgImg(first, second, first); }, "InMaskImg", "int16");
  expectRefused([&] { maskImgImg(first, nullptr, mask); }, "InImg2", "null");
}

TEST(LogicalMessages, TablesAreRegisteredWhenTheLibraryIsLoaded) {
  EXPECT_EQ(LogMessageManager::getInstance("VEXOIPLLogical")
                .getMessage("vexo::imaproc::logic::eProcessorMessage", 0),
            MaskImgImgLvl1::getToolTipStr());
  EXPECT_EQ(getVEXOIPLLogicalLoggerName(), "vexo.VEXOIPLLogical");
}

}  // namespace
}  // namespace vexo::imaproc::logic
