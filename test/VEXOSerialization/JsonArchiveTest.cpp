#include "VEXOSerialization/JsonArchive.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>

#include "VEXOCore/BaseException.h"

namespace {

using namespace vexo;
using Bytes = std::vector<unsigned char>;

/// The message of the UnHandleException that the call throws; empty when it throws none.
template <class Call>
std::string failureOf(const Call& call) {
  try {
    call();
  } catch (const UnHandleException& failure) {
    return failure.getMessage();
  }
  return "";
}

std::string parseFailure(const std::string& text, const JsonLimits& limits = {}) {
  return failureOf([&] { JsonIArchive(text, limits); });
}

template <class T>
T readBack(const T& value) {
  JsonOArchive out;
  out.write("x", value);
  T back{};
  JsonIArchive(out.getText()).read("x", back);
  return back;
}

template <class T>
class JsonNumber : public testing::Test {};
using NumberTypes = testing::Types<std::uint32_t, std::int32_t, std::uint64_t, float, double>;
TYPED_TEST_SUITE(JsonNumber, NumberTypes);

TYPED_TEST(JsonNumber, ReadsBackBitEqual) {
  using Limits = std::numeric_limits<TypeParam>;
  std::vector<TypeParam> values = {Limits::lowest(), Limits::min(), Limits::max(), TypeParam(0),
                                   TypeParam(1)};
  std::mt19937_64 random(7);
  while (values.size() < 5000) {
    const std::uint64_t bits = random();
    TypeParam value;
    std::memcpy(&value, &bits, sizeof value);
    if (std::is_integral_v<TypeParam> || std::isfinite(double(value))) values.push_back(value);
  }
  if (!std::is_integral_v<TypeParam>)
    for (const auto value : {Limits::denorm_min(), Limits::infinity(), -Limits::infinity(), -TypeParam(0)})
      values.push_back(value);
  for (const TypeParam value : values) {
    const TypeParam back = readBack(value);
    ASSERT_EQ(std::memcmp(&back, &value, sizeof value), 0) << value << " became " << back;
  }
}

TEST(JsonArchive, KeepsNaN) {
  EXPECT_TRUE(std::isnan(readBack(std::nanf(""))));
  EXPECT_TRUE(std::isnan(readBack(std::nan(""))));
}

TEST(JsonArchive, KeepsTextsAndNames) {
  for (const std::string& text : {std::string(), std::string("nan"), std::string("\"\\/\n\t\0\x1f", 7),
                                  std::string("\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"), std::string("[{}]")}) {
    EXPECT_EQ(readBack(text), text);
    JsonOArchive out;
    out.write(text, true);
    EXPECT_TRUE(JsonIArchive(out.getText()).has(text));
  }
}

TEST(JsonArchive, KeepsBytesOfAnyLength) {
  Bytes bytes;
  for (int size = 0; size < 300; ++size) {
    JsonOArchive out;
    out.writeBytes("x", bytes);
    Bytes back(1);
    JsonIArchive(out.getText()).readBytes("x", back);
    ASSERT_EQ(back, bytes);
    bytes.push_back(static_cast<unsigned char>(255 - size * 37));
  }
}

TEST(JsonArchive, KeepsTheOrderOfItems) {
  JsonOArchive out;
  for (const char* name : {"z", "a", "m"}) out.write(name, "");
  const std::string text = out.getText();
  EXPECT_LT(text.find("\"z\""), text.find("\"a\""));
  EXPECT_LT(text.find("\"a\""), text.find("\"m\""));
}

TEST(JsonArchive, WritesBytesInTheCommonBase64Alphabet) {
  JsonOArchive out;
  out.writeBytes("x", {'M', 'a', 0xfb, 0xff});
  std::string text;
  JsonIArchive(out.getText()).read("x", text);
  EXPECT_EQ(text, "TWH7/w==");
}

/// Sections within sections, of every kind of item.
std::string sample() {
  JsonOArchive out;
  out.write("bool", true);
  out.write("text", "a\"b\\u00e9\xc3\xa9");
  {
    ArchiveSectionManager<JsonOArchive> outer(out, "outer");
    out.write("int", -12);
    ArchiveSectionManager<JsonOArchive> inner(out, "inner");
    out.write("float", 1.5e-7f);
    out.writeBytes("bytes", {1, 2, 3, 4});
  }
  out.write("last", std::uint64_t(18446744073709551615u));
  return out.getText();
}

TEST(JsonArchive, SectionsNest) {
  JsonIArchive in(sample());
  EXPECT_FALSE(in.has("inner"));
  in.openSection("outer");
  in.openSection("inner");
  EXPECT_TRUE(in.has("bytes"));
  EXPECT_FALSE(in.has("bool"));
  bool value;
  EXPECT_NE(failureOf([&] { in.read("bool", value); }).find("outer/inner/bool"), std::string::npos);
  in.closeSection();
  in.closeSection();
  in.read("bool", value);
  EXPECT_TRUE(value);
  EXPECT_NE(failureOf([&] { in.closeSection(); }), "");
  EXPECT_NE(failureOf([&] { in.openSection("bool"); }).find("'bool'"), std::string::npos);
  EXPECT_NE(failureOf([&] { in.openSection("none"); }).find("'none'"), std::string::npos);
}

TEST(JsonArchive, OpenSectionsAppearAsClosed) {
  JsonOArchive out;
  out.openSection("a");
  EXPECT_TRUE(JsonIArchive(out.getText()).has("a"));
}

TEST(JsonArchive, WritingRefusesMisuse) {
  JsonOArchive out;
  out.write("a", 1.0);
  EXPECT_NE(failureOf([&] { out.write("a", true); }).find("'a'"), std::string::npos);
  EXPECT_NE(failureOf([&] { out.openSection("a"); }).find("'a'"), std::string::npos);
  EXPECT_NE(failureOf([&] { out.closeSection(); }), "");
  EXPECT_NE(failureOf([&] { out.write("b", "\xff"); }).find("'b'"), std::string::npos);
  EXPECT_NE(failureOf([&] { out.write("\xc3", 1.0); }), "");
  EXPECT_NE(failureOf([&] { out.openSection("\xc3"); }), "");
  EXPECT_FALSE(JsonIArchive(out.getText()).has("b"));
}

/// Which readers accept a JSON value: b(ool) u(int32) i(int32) U(int64) f(loat) d(ouble) s(tring) B(ytes).
struct Acceptance {
  const char* json;
  const char* readers;
};
void PrintTo(const Acceptance& acceptance, std::ostream* out) {
  *out << acceptance.json;
}

class JsonTyping : public testing::TestWithParam<Acceptance> {};

TEST_P(JsonTyping, OnlyMatchingTypesRead) {
  const JsonIArchive in(std::string("{\"x\":") + GetParam().json + "}");
  std::string accepted;
  const auto tryReading = [&](char reader, auto value) {
    const auto before = value;
    const std::string failure = failureOf([&] {
      if constexpr (std::is_same_v<decltype(value), Bytes>)
        in.readBytes("x", value);
      else
        in.read("x", value);
    });
    if (failure.empty()) {
      accepted += reader;
    } else {
      EXPECT_NE(failure.find("'x'"), std::string::npos) << failure;
      EXPECT_EQ(value, before);
    }
  };
  tryReading('b', true);
  tryReading('u', std::uint32_t(77));
  tryReading('i', std::int32_t(77));
  tryReading('U', std::uint64_t(77));
  tryReading('f', 77.f);
  tryReading('d', 77.);
  tryReading('s', std::string("before"));
  tryReading('B', Bytes{77});
  EXPECT_EQ(accepted, GetParam().readers);
}

INSTANTIATE_TEST_SUITE_P(
    Values, JsonTyping,
    testing::Values(Acceptance{"true", "b"}, Acceptance{"null", ""}, Acceptance{"{}", ""},
                    Acceptance{"0", "uiUfd"}, Acceptance{"-1", "ifd"}, Acceptance{"1.0", "fd"},
                    Acceptance{"1e2", "fd"}, Acceptance{"2147483647", "uiUfd"},
                    Acceptance{"2147483648", "uUfd"}, Acceptance{"-2147483648", "ifd"},
                    Acceptance{"-2147483649", "fd"}, Acceptance{"4294967295", "uUfd"},
                    Acceptance{"4294967296", "Ufd"}, Acceptance{"18446744073709551615", "Ufd"},
                    Acceptance{"18446744073709551616", "fd"}, Acceptance{"3.4028235e38", "fd"},
                    Acceptance{"3.5e38", "d"}, Acceptance{"-3.5e38", "d"}, Acceptance{"\"\"", "sB"},
                    Acceptance{"\"1\"", "s"}, Acceptance{"\"true\"", "sB"}, Acceptance{"\"inf\"", "fds"},
                    Acceptance{"\"-inf\"", "fds"}, Acceptance{"\"Inf\"", "s"}, Acceptance{"\"AA==\"", "sB"},
                    Acceptance{"\"AAA=\"", "sB"}, Acceptance{"\"AB==\"", "s"}, Acceptance{"\"AAB=\"", "s"},
                    Acceptance{"\"A===\"", "s"}, Acceptance{"\"====\"", "s"}, Acceptance{"\"AA=A\"", "s"},
                    Acceptance{"\"AA==AAAA\"", "s"}, Acceptance{"\"AAA\"", "s"}, Acceptance{"\"AA-_\"", "s"},
                    Acceptance{"\"AAA\\u0000\"", "s"}, Acceptance{"\"AAA \"", "s"}));

class MalformedText : public testing::TestWithParam<const char*> {};

TEST_P(MalformedText, IsRefused) {
  EXPECT_NE(parseFailure(GetParam()), "");
}

INSTANTIATE_TEST_SUITE_P(Texts, MalformedText,
                         testing::Values("", " ", "1", "\"a\"", "null", "[]", "{\"a\":[]}",
                                         "{\"a\":[{\"b\":1}]}", "{}x", "{}{}", "{\"a\":1,}", "{\"a\":1e999}",
                                         "{\"a\":01}", "{\"a\":NaN}", "{\"a\":\"\xff\"}", "{'a':1}",
                                         "{\"a\":1}//", "{\"a\":\"\n\"}"));

TEST(JsonArchive, DuplicateNamesAreRefusedWithinOneSectionOnly) {
  EXPECT_NE(parseFailure("{\"a\":1,\"b\":2,\"a\":3}").find("'a'"), std::string::npos);
  EXPECT_NE(parseFailure("{\"s\":{\"q\":{},\"q\":{}}}").find("'q'"), std::string::npos);
  EXPECT_NE(parseFailure("{\"a\":1,\"\\u0061\":2}"), "");
  EXPECT_EQ(parseFailure("{\"a\":{\"a\":{\"a\":1}},\"b\":{\"a\":1}}"), "");
}

TEST(JsonArchive, EveryTruncationIsRefused) {
  const std::string text = sample();
  ASSERT_EQ(parseFailure(text), "");
  for (std::size_t size = 0; size < text.size(); ++size)
    ASSERT_NE(parseFailure(text.substr(0, size)), "") << text.substr(0, size);
}

std::string nested(std::size_t sections) {
  std::string text;
  for (std::size_t i = 0; i < sections; ++i) text += "{\"a\":";
  return text + "{}" + std::string(sections, '}');
}

TEST(JsonArchive, DepthIsBounded) {
  EXPECT_EQ(parseFailure(nested(64)), "");
  EXPECT_NE(parseFailure(nested(65)), "");
  EXPECT_EQ(parseFailure("{}", {100, 0}), "");
  EXPECT_NE(parseFailure(nested(1), {100, 0}), "");
  EXPECT_NE(parseFailure(nested(1000000)), "");
  EXPECT_NE(parseFailure(std::string(1000000, '[')), "");
  // The stack must hold whatever depth a caller allows.
  EXPECT_EQ(parseFailure(nested(1000000), {std::size_t(1) << 30, 1000000}), "");
}

TEST(JsonArchive, SizeIsBounded) {
  const std::string text = "{\"a\":1}";
  EXPECT_EQ(parseFailure(text, {text.size(), 64}), "");
  EXPECT_NE(parseFailure(text, {text.size() - 1, 64}), "");
}

TEST(JsonArchive, DamagedTextNeverDoesWorseThanThrow) {
  const std::string text = sample();
  std::mt19937 random(11);
  int refused = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string damaged = text;
    for (int flips = 1 + round % 3; flips > 0; --flips)
      damaged[random() % damaged.size()] ^= static_cast<char>(1u << random() % 8);
    refused += !failureOf([&] {
                  JsonIArchive in(damaged);
                  std::string value;
                  Bytes bytes;
                  in.read("text", value);
                  in.openSection("outer");
                  in.openSection("inner");
                  in.readBytes("bytes", bytes);
                }).empty();
  }
  EXPECT_GT(refused, 1000);
  EXPECT_LT(refused, 20000);
}

TEST(JsonArchive, ClassVersionsAreZeroUntilRegistered) {
  JsonOArchive out;
  EXPECT_EQ(out.getClassVersion("a"), 0u);
  out.registerClassVersion("a", 3);
  EXPECT_EQ(out.getClassVersion("a"), 3u);
}

}  // namespace
