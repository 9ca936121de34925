#include "VEXOImage/Strip.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <tuple>

#include "tools/ImageChecks.h"

namespace {

using namespace vexo;
using namespace vexo::image;
using namespace vexo::test;

TEST(BorderIndex, FollowsTheSequence) {
  const struct {
    eBorder border;
    std::ptrdiff_t n, first, period;
    std::string letters;  // a = 0, b = 1, ...; '.' = the constant
  } sequences[] = {{eBorder::Mirror, 4, -9, 8, "aabcddcbaabcddcbaabcdd"},
                   {eBorder::Mirror, 3, -7, 6, "aabccbaabccbaabcc"},
                   {eBorder::Mirror, 2, -5, 4, "aabbaabbaabb"},
                   {eBorder::Mirror, 1, -3, 1, "aaaaaaa"},
                   {eBorder::Replicate, 4, -5, 0, "aaaaaabcddddd"},
                   {eBorder::Replicate, 1, -3, 1, "aaaaaaa"},
                   {eBorder::Circular, 4, -9, 4, "dabcdabcdabcdabcdabcda"},
                   {eBorder::Circular, 2, -3, 2, "babababa"},
                   {eBorder::Circular, 1, -3, 1, "aaaaaaa"},
                   {eBorder::Constant, 4, -3, 0, "...abcd..."},
                   {eBorder::Constant, 1, -2, 0, "..a.."}};
  for (const auto& p : sequences) {
    const auto letter = [&](std::ptrdiff_t i) {
      const std::ptrdiff_t mapped = mapBorderIndex(p.border, i, p.n);
      return mapped < 0 ? '.' : static_cast<char>('a' + mapped);
    };
    for (const std::ptrdiff_t periods : {0, -1000000007, -4, 3, 1000000007}) {
      std::string letters;
      for (std::size_t i = 0; i < p.letters.size(); ++i)
        letters += letter(p.first + static_cast<std::ptrdiff_t>(i) + periods * p.period);
      EXPECT_EQ(letters, p.letters) << periods << " periods away";
    }
    if (p.border == eBorder::Replicate || p.border == eBorder::Constant) {
      EXPECT_EQ(letter(-1000000007), p.letters.front());
      EXPECT_EQ(letter(1000000007), p.letters.back());
    }
  }
}

struct Reach {
  std::size_t before, after;
};
constexpr std::size_t length = 17;  // along the axis of the cut
const StripBounds cuts[] = {{0, length}, {0, 5, 10, length}, {0, 1, 2, 3, 16, length}};

/// Direction, border, margins on the axis of the cut.
class Strip : public testing::TestWithParam<std::tuple<int, int, Reach>> {
protected:
  int axis() const { return std::get<0>(GetParam()); }
  eStripParsingDirection direction() const { return static_cast<eStripParsingDirection>(axis()); }
  BorderPolicy border() const { return {static_cast<eBorder>(std::get<1>(GetParam())), 42}; }
  StripMargins margins() const {
    StripMargins m{{2, 1, 3}, {1, 4, 2}};
    m.before[axis()] = std::get<2>(GetParam()).before;
    m.after[axis()] = std::get<2>(GetParam()).after;
    return m;
  }
  ImageGeometry geometry() const {
    std::size_t n[3] = {4, 3, 2};
    n[axis()] = length;
    return {n[0], n[1], n[2]};
  }

  /// Compares every position of a strip and its margins, or only those outside [begin, end), with `original`.
  void compare(const StripSource& s, const Image& original, bool onlyOutside) const {
    std::size_t wrong = 0;
    std::ptrdiff_t p[3];
    for (p[2] = s.begin[2] - s.marginBefore[2]; p[2] < s.end[2] + s.marginAfter[2]; ++p[2])
      for (p[1] = s.begin[1] - s.marginBefore[1]; p[1] < s.end[1] + s.marginAfter[1]; ++p[1])
        for (p[0] = s.begin[0] - s.marginBefore[0]; p[0] < s.end[0] + s.marginAfter[0]; ++p[0]) {
          if (onlyOutside && p[axis()] >= s.begin[axis()] && p[axis()] < s.end[axis()]) continue;
          const unsigned char* sample = sourceSample(s, p[0], p[1], p[2]);
          std::int16_t value;
          std::memcpy(&value, sample ? sample : s.constant, sizeof value);
          wrong += value != getBorderSample(original, border(), p[0], p[1], p[2]);
        }
    EXPECT_EQ(wrong, 0u) << "strip [" << s.begin[axis()] << ", " << s.end[axis()] << ")";
  }
};
INSTANTIATE_TEST_SUITE_P(All, Strip,
                         testing::Combine(testing::Range(0, 3), testing::Range(0, 4),
                                          testing::Values(Reach{0, 0}, Reach{1, 1}, Reach{7, 7},
                                                          Reach{40, 40}, Reach{0, 3}, Reach{6, 1},
                                                          Reach{17, 0}, Reach{0, 18})));

TEST_P(Strip, ReadsTheImageWithItsBorder) {
  const auto original = rangeImage(geometry(), eImageBufferType::Int16, 0, 30000, 11);
  // Padded and upside down: nothing may rely on dense rows.
  std::vector<std::int16_t> memory(4000, -1);
  const ImageGeometry g = geometry();
  const auto row = static_cast<std::ptrdiff_t>(2 * g.x + 6);
  const auto image = Image::wrap(memory.data() + 2000, g, eImageBufferType::Int16,
                                 {-row, row * static_cast<std::ptrdiff_t>(g.y + 1)});
  copySamples(*original, *image);
  for (const StripBounds& bounds : cuts)
    for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
      const InputStrip strip(image, direction(), bounds[i], bounds[i + 1], margins());
      compare(strip.makeSource(border()), *original, false);
    }
}

TEST_P(Strip, InPlaceReadsWhatWasThereBefore) {
  const auto original = rangeImage(geometry(), eImageBufferType::Int16, 0, 30000, 12);
  for (const StripBounds& bounds : cuts) {
    const auto image = copyOf(*original);
    const auto copies = StripMarginCopies::create(*image, direction(), bounds, margins());
    const Reach reach = std::get<2>(GetParam());
    ASSERT_EQ(copies == nullptr, reach.before == 0 && reach.after == 0);
    for (std::size_t i = 0; i + 1 < bounds.size(); ++i) {
      const auto overwrite = [&](bool also) {
        forEachSample(geometry(), [&](std::size_t x, std::size_t y, std::size_t z, std::size_t, std::size_t) {
          const std::size_t p = axis() == 0 ? x : axis() == 1 ? y : z;
          const bool own = p >= bounds[i] && p < bounds[i + 1];
          setSample(*image, own && !also ? getSample(*original, x, y, z) : -9, x, y, z);
        });
      };
      const InputStrip strip(image, direction(), bounds[i], bounds[i + 1], margins(), copies);
      overwrite(false);
      compare(strip.makeSource(border()), *original, false);
      overwrite(true);
      compare(strip.makeSource(border()), *original, true);
    }
  }
}

TEST_P(Strip, OutputWithItsOwnBufferIsSeenAfterCommit) {
  const auto original = rangeImage(geometry(), eImageBufferType::Int16, 0, 30000, 13);
  for (const auto allocation : {eStripAllocationType::View, eStripAllocationType::OwnBuffer}) {
    const auto image = copyOf(*original), expected = copyOf(*original);
    OutputStrip strip(image, direction(), 5, 10, allocation);
    const StripTarget target = strip.makeTarget();
    forEachSample(geometry(), [&](std::size_t x, std::size_t y, std::size_t z, std::size_t, std::size_t) {
      const std::ptrdiff_t p[] = {static_cast<std::ptrdiff_t>(x), static_cast<std::ptrdiff_t>(y),
                                  static_cast<std::ptrdiff_t>(z)};
      for (int a = 0; a < 3; ++a)
        if (p[a] < target.begin[a] || p[a] >= target.end[a]) return;
      auto* sample = reinterpret_cast<std::int16_t*>(targetRow(target, p[1], p[2])) + p[0] - target.begin[0];
      EXPECT_EQ(*sample, getSample(*original, x, y, z));
      setSample(*expected, *sample = static_cast<std::int16_t>(-1 - *sample), x, y, z);
    });
    ASSERT_FALSE(sameBits(*expected, *original));
    EXPECT_TRUE(sameBits(*image, allocation == eStripAllocationType::View ? *expected : *original));
    strip.commit();
    EXPECT_TRUE(sameBits(*image, *expected));
  }
}

TEST_P(Strip, RangesOutsideAreRefused) {
  const auto image = Image::create(geometry(), eImageBufferType::UInt8);
  for (const auto& [begin, end] : {std::pair<std::size_t, std::size_t>{3, 3}, {4, 3}, {0, 18}, {17, 18}}) {
    expectFailure({"outside"}, [&, b = begin, e = end] { InputStrip(image, direction(), b, e, {}); });
    expectFailure({"outside"}, [&, b = begin, e = end] {
      OutputStrip(image, direction(), b, e, eStripAllocationType::View);
    });
  }
}

TEST(BorderConstant, IsRoundedAndSaturatedToTheType) {
  for (int type = 0; type < static_cast<int>(imageBufferTypeCount); ++type)
    visitBufferType(static_cast<eImageBufferType>(type), [](auto zero) {
      using T = decltype(zero);
      constexpr double low = std::numeric_limits<T>::lowest(), high = std::numeric_limits<T>::max();
      for (const double value : {0.1, -0.4, -2.5, 254.4, 254.5, 65535.7, 2147483647.5, 4294967296.0, 1e10,
                                 -1e300, double(-INFINITY), double(NAN)}) {
        const InputStrip strip(Image::create({2, 2}, bufferTypeOf<T>()), eStripParsingDirection::Y, 0, 2, {});
        const StripSource source = strip.makeSource(BorderPolicy(eBorder::Constant, value));
        EXPECT_EQ(sourceSample(source, -1, 0, 0), nullptr);
        T sample;
        std::memcpy(&sample, source.constant, sizeof sample);
        if constexpr (std::is_same_v<T, float>) {
          EXPECT_TRUE(sample == static_cast<float>(value) || (std::isnan(sample) && std::isnan(value)))
              << value;
        } else {
          const double whole = std::isnan(value) ? 0 : std::min(std::max(std::round(value), low), high);
          EXPECT_EQ(sample, whole) << value;
        }
      }
    });
}

}  // namespace
