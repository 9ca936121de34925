#include "VEXOImageIO/Calibration.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

namespace vexo::image::io {
namespace {

struct NamedFactor {
  const char* name;
  double factor;
};

double findFactor(const NamedFactor* first, const NamedFactor* last, const std::string& name) {
  const auto* found = std::find_if(first, last, [&](const NamedFactor& known) { return name == known.name; });
  return found == last ? 0 : found->factor;
}

/// Appends a code point as UTF-8.
void appendUtf8(std::string& text, std::uint32_t point) {
  const auto append = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
  if (point < 0x80) return append(point);
  if (point < 0x800) {
    append(0xC0 | point >> 6);
  } else {
    if (point < 0x10000) {
      append(0xE0 | point >> 12);
    } else {
      append(0xF0 | point >> 18);
      append(0x80 | (point >> 12 & 0x3F));
    }
    append(0x80 | (point >> 6 & 0x3F));
  }
  append(0x80 | (point & 0x3F));
}

/// Takes a code point off the front of a text in UTF-8; a byte that begins none is taken as Latin-1.
std::uint32_t takePoint(const std::string& text, std::size_t& at) {
  const auto byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : std::uint32_t(0);
  };
  const std::uint32_t first = byte(at++);
  const std::size_t more = first >= 0xF0 && first < 0xF8   ? 3
                           : first >= 0xE0 && first < 0xF0 ? 2
                                                           : first >= 0xC2 && first < 0xE0;
  std::uint32_t point = first & (0x7Fu >> (more + 1));
  for (std::size_t i = 0; i < more; ++i) {
    if ((byte(at + i) & 0xC0) != 0x80) return first;
    point = point << 6 | (byte(at + i) & 0x3F);
  }
  if (more == 0) return first;
  at += more;
  return point;
}

/// The value of a Java property: \uXXXX and escaped characters, Latin-1 or UTF-8.
std::string unescape(const std::string& value) {
  std::string text;
  std::uint32_t high = 0;
  for (std::size_t at = 0; at < value.size();) {
    std::uint32_t point = takePoint(value, at);
    if (point == '\\' && at < value.size()) {
      point = takePoint(value, at);
      std::uint32_t code = 0;
      if (point == 'u' && at + 4 <= value.size() &&
          std::from_chars(&value[at], &value[at] + 4, code, 16).ptr == &value[at] + 4) {
        point = code;
        at += 4;
      }
    }
    if (point >= 0xD800 && point < 0xDC00) {
      high = point;
      continue;
    }
    if (high && point >= 0xDC00 && point < 0xE000) point = 0x10000 + ((high & 0x3FF) << 10 | (point & 0x3FF));
    high = 0;
    if (point < 0xD800 || point >= 0xE000) appendUtf8(text, point);
  }
  return text;
}

std::string escape(const std::string& text) {
  std::string value;
  const auto append = [&](std::uint32_t unit) {
    char code[8];
    std::snprintf(code, sizeof(code), "\\u%04X", static_cast<unsigned>(unit & 0xFFFF));
    value += code;
  };
  for (std::size_t at = 0; at < text.size();) {
    const std::uint32_t point = takePoint(text, at);
    if (point == '\\') {
      value += "\\\\";
    } else if (point >= 0x20 && point < 0x7F) {
      value += static_cast<char>(point);
    } else if (point < 0x10000) {
      append(point);
    } else {
      append(0xD800 | (point - 0x10000) >> 10);
      append(0xDC00 | (point & 0x3FF));
    }
  }
  return value;
}

/// The value of a line "key=value"; empty when there is none.
std::string findValue(const std::string& text, const std::string& key) {
  const std::size_t at = text.find("\n" + key + "=");
  if (at == std::string::npos) return "";
  const std::size_t first = at + key.size() + 2;
  return text.substr(first, text.find_first_of("\r\n", first) - first);
}

/// The largest number when it is larger than that, 0 when it is none.
std::uint64_t findCount(const std::string& text, const std::string& key) {
  const std::string value = findValue(text, key);
  std::uint64_t number = 0;
  const auto result = std::from_chars(value.data(), value.data() + value.size(), number);
  return result.ec == std::errc::result_out_of_range ? std::numeric_limits<std::uint64_t>::max() : number;
}

}  // namespace

bool isKnown(double value) {
  return std::isfinite(value) && value > 0;
}

double parsePositive(const std::string& text) {
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return isKnown(value) ? value : 0;
}

double roundTo(int digits, double value) {
  char text[32];
  const auto result =
      std::to_chars(text, text + sizeof(text), value, std::chars_format::scientific, digits - 1);
  return parsePositive(std::string(text, result.ptr));
}

std::string formatNumber(double value) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof(text), value).ptr);
}

double getMetres(const std::string& unit) {
  constexpr NamedFactor units[] = {
      {"m", 1},       {"meter", 1},     {"cm", 1e-2}, {"mm", 1e-3},  {"\u00B5m", 1e-6}, {"\u03BCm", 1e-6},
      {"um", 1e-6},   {"micron", 1e-6}, {"nm", 1e-9}, {"pm", 1e-12}, {"\u00C5", 1e-10}, {"inch", 0.0254},
      {"in", 0.0254}, {"km", 1e3},      {"dm", 1e-1}, {"fm", 1e-15}, {"ft", 0.3048},    {"mi.", 1609.344}};
  return findFactor(std::begin(units), std::end(units), unit);
}

double getSeconds(const std::string& unit) {
  constexpr NamedFactor units[] = {{"s", 1},       {"sec", 1},        {"seconds", 1}, {"ms", 1e-3},
                                   {"msec", 1e-3}, {"\u00B5s", 1e-6}, {"us", 1e-6},   {"ns", 1e-9},
                                   {"min", 60},    {"h", 3600},       {"d", 86400}};
  return findFactor(std::begin(units), std::end(units), unit);
}

double convertSize(double size, const std::string& from, const std::string& to) {
  if (from == to) return size;
  const double factor = getMetres(from) / getMetres(to);
  return isKnown(factor) ? roundTo(12, size * factor) : 0;
}

double toPixelSize(float pixelsPerUnit) {
  const double exact = 1 / static_cast<double>(pixelsPerUnit);
  for (int digits = 1; digits <= 6; ++digits) {
    const double shorter = roundTo(digits, exact);
    // Files hold about six digits; a longer number must be that of libtiff's seven.
    const bool isMeant = digits < 6 ? std::fabs(shorter - exact) < 1e-6 * exact
                                    : static_cast<float>(1 / shorter) == pixelsPerUnit;
    if (isMeant) return shorter;
  }
  return exact;
}

std::optional<std::pair<std::uint32_t, std::uint32_t>> toFraction(double value) {
  constexpr double most = std::numeric_limits<std::uint32_t>::max();
  if (!isKnown(value) || value > most) return std::nullopt;
  // The convergents of the continued fraction.
  double p = 1, q = 0, lastP = 0, lastQ = 1, rest = value;
  for (int i = 0; i < 40; ++i) {
    const double whole = std::floor(rest);
    const double nextP = whole * p + lastP, nextQ = whole * q + lastQ;
    if (nextP > most || nextQ > most) break;
    lastP = std::exchange(p, nextP);
    lastQ = std::exchange(q, nextQ);
    if (std::fabs(p / q - value) <= 1e-12 * value || rest == whole) break;
    rest = 1 / (rest - whole);
  }
  if (p == 0 || std::fabs(p / q - value) > 1e-3 * value) return std::nullopt;
  return std::pair(static_cast<std::uint32_t>(p), static_cast<std::uint32_t>(q));
}

std::optional<ImageJLabel> readImageJLabel(const std::string& text) {
  if (text.rfind("ImageJ=", 0) != 0) return std::nullopt;
  ImageJLabel label{findCount(text, "images"),
                    findCount(text, "channels"),
                    findCount(text, "slices"),
                    findCount(text, "frames"),
                    findValue(text, "order"),
                    {},
                    {}};
  if (label.order.empty()) label.order = "xyczt";
  Calibration& calibration = label.calibration;
  calibration.unit = unescape(findValue(text, "unit"));
  if (calibration.unit.size() > 64 || calibration.unit == "pixel") calibration.unit.clear();
  // Only units that differ from that of the width are said.
  const auto findUnit = [&](const char* key) {
    const std::string unit = unescape(findValue(text, key));
    return unit.empty() ? calibration.unit : unit;
  };
  label.heightUnit = findUnit("yunit");
  calibration.spacing =
      convertSize(parsePositive(findValue(text, "spacing")), findUnit("zunit"), calibration.unit);
  const std::string timeUnit = findValue(text, "tunit");
  calibration.frameInterval =
      parsePositive(findValue(text, "finterval")) * (timeUnit.empty() ? 1 : getSeconds(unescape(timeUnit)));
  const std::string mode = findValue(text, "mode");
  if (mode == "composite" || mode == "color" || mode == "grayscale") calibration.displayMode = mode;
  return label;
}

std::string writeImageJLabel(const ImageGeometry& g, const Calibration& calibration) {
  const auto count = [](const char* key, std::size_t number) { return key + std::to_string(number) + '\n'; };
  const auto size = [](const char* key, double value) {
    return isKnown(value) ? key + formatNumber(value) + '\n' : std::string();
  };
  const bool hasUnit = !calibration.unit.empty() && calibration.unit.size() <= 64;
  const bool isStack = g.z * g.c * g.t > 1;
  std::string text = (hasUnit ? "unit=" + escape(calibration.unit) + '\n' : "") +
                     size("spacing=", calibration.spacing) + size("finterval=", calibration.frameInterval);
  if (isStack) {
    // That reader shows at most seven channels at once.
    const bool hasMode = g.c > 1 && (calibration.displayMode == "color" ||
                                     (calibration.displayMode == "composite" && g.c <= 7));
    text = count("images=", g.z * g.c * g.t) + count("channels=", g.c) + count("slices=", g.z) +
           count("frames=", g.t) +
           "hyperstack=true\nmode=" + (hasMode ? calibration.displayMode : "grayscale") + '\n' + text +
           "loop=false\n";
  }
  return text.empty() ? text : "ImageJ=1.53t\n" + text;
}

}  // namespace vexo::image::io
