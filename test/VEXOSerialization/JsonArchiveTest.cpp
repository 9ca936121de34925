
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "VEXOSerialization/JsonArchive.h"
#include "tools/Calls.h"

namespace {

using namespace vexo;
using Bytes = std::vector<unsigned char>;

template <class Call>
std::string failureOf(const Call& call) {
  return test::failureOf<UnHandleException>(call);
}
template <class Call>
void expectFailure(std::initializer_list<std::string> parts, const Call& call) {
  test::expectFailure<UnHandleException>(parts, call);
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
  if (!std::is_integral_v<TypeParam>) {
    EXPECT_TRUE(std::isnan(double(readBack(Limits::quiet_NaN()))));
  }
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
  JsonOArchive out;
  out.writeBytes("x", {'M', 'a', 0xfb, 0xff});
  EXPECT_TRUE(test::has(out.getText(), "\"TWH7/w==\""));
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
  expectFailure({"outer/inner/bool"}, [&] { in.read("bool", value); });
  in.closeSection();
  in.closeSection();
  in.read("bool", value);
  EXPECT_TRUE(value);
  expectFailure({}, [&] { in.closeSection(); });
  expectFailure({"'bool'"}, [&] { in.openSection("bool"); });
  expectFailure({"'none'"}, [&] { in.openSection("none"); });
}

TEST(JsonArchive, WritingKeepsTheOrderAndRefusesMisuse) {
  JsonOArchive out;
  for (const char* name : {"z", "a", "m"}) out.write(name, 1.0);
  expectFailure({"'a'"}, [&] { out.write("a", true); });
  expectFailure({"'a'"}, [&] { out.openSection("a"); });
  expectFailure({}, [&] { out.closeSection(); });
  expectFailure({"'b'"}, [&] { out.write("b", "\xff"); });
  expectFailure({}, [&] { out.write("\xc3", 1.0); });
  expectFailure({}, [&] { out.openSection("\xc3"); });
  out.openSection("open");
  const std::string text = out.getText();
  EXPECT_FALSE(JsonIArchive(text).has("b"));
  EXPECT_TRUE(JsonIArchive(text).has("open")) << "an open section appears as closed";
  EXPECT_LT(text.find("\"z\""), text.find("\"a\""));
  EXPECT_LT(text.find("\"a\""), text.find("\"m\""));
}

/// Which readers accept a JSON value: b(ool) u(int32) i(int32) U(int64) f(loat) d(ouble) s(tring) B(ytes).
TEST(JsonArchive, OnlyMatchingTypesRead) {
  // What the readers b(ool) u(int32) i(int32) U(int64) f(loat) d(ouble) s(tring) B(ytes) accept.
  const std::pair<const char*, std::vector<std::string>> acceptances[] = {
      {"b", {"true"}},
      {"", {"null", "{}"}},
      {"uiUfd", {"0", "2147483647"}},
      {"ifd", {"-1", "-2147483648"}},
      {"fd", {"1.0", "1e2", "-2147483649", "18446744073709551616", "3.4028235e38"}},
      {"uUfd", {"2147483648", "4294967295"}},
      {"Ufd", {"4294967296", "18446744073709551615"}},
      {"d", {"3.5e38", "-3.5e38"}},
      {"fds", {"\"inf\"", "\"-inf\""}},
      {"sB", {"\"\"", "\"true\"", "\"AA==\"", "\"AAA=\""}},
      {"s",
       {"\"1\"", "\"Inf\"", "\"AB==\"", "\"AAB=\"", "\"A===\"", "\"====\"", "\"AA=A\"", "\"AA==AAAA\"",
        "\"AAA\"", "\"AA-_\"", "\"AAA\\u0000\"", "\"AAA \""}}};
  for (const auto& [readers, values] : acceptances)
    for (const std::string& json : values) {
      const JsonIArchive in("{\"x\":" + json + "}");
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
          EXPECT_TRUE(test::has(failure, "'x'") && value == before) << json << " as " << reader;
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
      EXPECT_EQ(accepted, readers) << json;
    }
}

TEST(JsonArchive, MalformedTextIsRefused) {
  for (const char* text :
       {"", " ", "1", "\"a\"", "null", "[]", "{\"a\":[]}", "{\"a\":[{\"b\":1}]}", "{}x", "{}{}", "{\"a\":1,}",
        "{\"a\":1e999}", "{\"a\":01}", "{\"a\":NaN}", "{\"a\":\"\xff\"}", "{'a':1}", "{\"a\":1}//",
        "{\"a\":\"\n\"}", "{\"a\":1,\"\\u0061\":2}"})
    EXPECT_NE(parseFailure(text), "") << text;
  // A name may come again in another section only.
  EXPECT_TRUE(test::has(parseFailure("{\"a\":1,\"b\":2,\"a\":3}"), "'a'"));
  EXPECT_TRUE(test::has(parseFailure("{\"s\":{\"q\":{},\"q\":{}}}"), "'q'"));
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

TEST(JsonArchive, SizeAndDepthAreBounded) {
  EXPECT_EQ(parseFailure("{\"a\":1}", {7, 64}), "");
  EXPECT_NE(parseFailure("{\"a\":1}", {6, 64}), "");
  EXPECT_EQ(parseFailure(nested(64)), "");
  EXPECT_NE(parseFailure(nested(65)), "");
  EXPECT_EQ(parseFailure("{}", {100, 0}), "");
  EXPECT_NE(parseFailure(nested(1), {100, 0}), "");
  EXPECT_NE(parseFailure(nested(1000000)), "");
  EXPECT_NE(parseFailure(std::string(1000000, '[')), "");
  // The stack must hold whatever depth a caller allows.
  EXPECT_EQ(parseFailure(nested(1000000), {std::size_t(1) << 30, 1000000}), "");
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

}  // namespace
