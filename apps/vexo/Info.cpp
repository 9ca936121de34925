#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <type_traits>

#include "Commands.h"
#include "Settings.h"
#include "VEXOCore/DataItem.h"
#include "VEXOImageIO/ImageIO.h"
#include "Words.h"

namespace vexo::app {

using image::Image;
using Json = nlohmann::ordered_json;

namespace {

struct Statistics {
  double minimum = 0, maximum = 0, mean = 0;
};

template <class T>
Statistics measure(const Image& image) {
  const image::ImageGeometry& g = image.getGeometry();
  std::optional<T> minimum, maximum;
  double sum = 0;
  for (std::size_t t = 0; t < g.t; ++t)
    for (std::size_t c = 0; c < g.c; ++c)
      for (std::size_t z = 0; z < g.z; ++z)
        for (std::size_t y = 0; y < g.y; ++y) {
          const T* row = image.getRow<T>(y, z, c, t);
          double rowSum = 0;  // sums of few terms, so that rounding errors stay small in large images
          for (std::size_t x = 0; x < g.x; ++x) {
            const T value = row[x];
            rowSum += static_cast<double>(value);
            if constexpr (std::is_floating_point_v<T>)
              if (std::isnan(value)) continue;
            if (!minimum || value < *minimum) minimum = value;
            if (!maximum || value > *maximum) maximum = value;
          }
          sum += rowSum;
        }
  const double count = static_cast<double>(g.x) * static_cast<double>(g.y) * static_cast<double>(g.z) *
                       static_cast<double>(g.c) * static_cast<double>(g.t);
  return {static_cast<double>(minimum.value_or(T(0))), static_cast<double>(maximum.value_or(T(0))),
          sum / count};
}

/// JSON has no NaN and no infinity: they become text.
Json toJson(double value) {
  if (!std::isfinite(value)) return ScalarText<double>::toText(std::isnan(value) ? std::fabs(value) : value);
  if (value == std::floor(value) && std::fabs(value) < 1e15) return static_cast<std::int64_t>(value);
  return value;
}

/// What the file tells of physical sizes, in the order of printing.
Json toJson(const image::io::Calibration& calibration) {
  Json json = Json::object();
  const auto add = [&json](const char* key, double value) {
    if (value > 0) json[key] = toJson(value);
  };
  add("pixelWidth", calibration.pixelWidth);
  add("pixelHeight", calibration.pixelHeight);
  add("spacing", calibration.spacing);
  if (!json.empty() && !calibration.unit.empty()) json["unit"] = calibration.unit;
  add("frameInterval", calibration.frameInterval);
  return json;
}

void printPlain(Json calibration) {
  std::string unit = calibration.value("unit", "");
  std::replace_if(
      unit.begin(), unit.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
  if (!unit.empty()) unit.insert(0, 1, ' ');
  const auto print = [&](const char* label, const Json& value, const std::string& of) {
    std::cout << label << value.dump() << of << '\n';
  };
  if (calibration.contains("pixelWidth"))
    print("pixel     ", calibration["pixelWidth"], " x " + calibration["pixelHeight"].dump() + unit);
  if (calibration.contains("spacing")) print("spacing   ", calibration["spacing"], unit);
  if (calibration.contains("frameInterval")) print("interval  ", calibration["frameInterval"], " s");
}

}  // namespace

void infoCommand(const WordList& words) {
  CLI::App app("Print geometry, sample type, minimum, maximum and mean of an image.", "vexo info");
  std::string path;
  bool json = false;
  app.add_option("IMAGE", path, "TIFF or PNG file")->required();
  app.add_flag("--json", json, "Print JSON");
  std::optional<std::string> maxImageBytes;
  addMaxImageBytes(app, maxImageBytes);
  if (!parseWords(app, words)) return;
  setMaxImageBytes(maxImageBytes);

  image::io::ImageInfo header;
  const auto image = image::io::readImage(path, &header);
  const Json calibration = toJson(header.calibration);
  const Statistics statistics = image::visitBufferType(
      image->getBufferType(), [&](auto sample) { return measure<decltype(sample)>(*image); });
  const image::ImageGeometry& g = image->getGeometry();
  const std::string type = image::toString(image->getBufferType());
  const Json minimum = toJson(statistics.minimum), maximum = toJson(statistics.maximum),
             mean = toJson(statistics.mean);
  if (json) {
    Json info = {{"x", g.x},     {"y", g.y},           {"z", g.z},           {"c", g.c},    {"t", g.t},
                 {"type", type}, {"minimum", minimum}, {"maximum", maximum}, {"mean", mean}};
    info.update(calibration);
    std::cout << info.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    return;
  }
  const auto plain = [](const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
  };
  std::cout << "geometry  " << toString(g) << '\n'
            << "type      " << type << '\n'
            << "minimum   " << plain(minimum) << '\n'
            << "maximum   " << plain(maximum) << '\n'
            << "mean      " << plain(mean) << '\n';
  printPlain(calibration);
}

}  // namespace vexo::app
