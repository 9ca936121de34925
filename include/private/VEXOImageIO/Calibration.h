#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "VEXOImageIO/ImageIO.h"

namespace vexo::image::io {

/// Whether a size or an interval says something.
bool isKnown(double value);

/// Numbers as files hold them, whatever the locale; 0 when the text is none, or none that isKnown().
double parsePositive(const std::string& text);
std::string formatNumber(double value);
double roundTo(int digits, double value);

/// The length of one unit in metres, of one second or minute in seconds; 0 when the name is unknown.
double getMetres(const std::string& unit);
double getSeconds(const std::string& unit);
/// A size in another unit; 0 when one of them is unknown, unless they are the same.
double convertSize(double size, const std::string& from, const std::string& to);

/// The size of a pixel from the pixels per unit, of which files and libtiff keep six or seven digits: the
/// short decimal number that gives these digits, where there is one.
double toPixelSize(float pixelsPerUnit);
/// The value as a fraction of small numbers, exact to 12 digits where 32 bits allow it; none when they are
/// too few.
std::optional<std::pair<std::uint32_t, std::uint32_t>> toFraction(double value);

/// What a label in the manner of ImageJ says: lines "key=value" in the first description of a TIFF.
struct ImageJLabel {
  std::uint64_t images, channels, slices, frames;  ///< 0 where it does not say
  std::string order;                               ///< "xyczt", unless it says otherwise
  std::string heightUnit;                          ///< of the height of a pixel
  Calibration calibration;                         ///< without the size of a pixel
};
std::optional<ImageJLabel> readImageJLabel(const std::string& description);
/// Empty when there is nothing that needs to be said.
std::string writeImageJLabel(const ImageGeometry& geometry, const Calibration& calibration);

}  // namespace vexo::image::io
