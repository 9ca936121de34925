#include <algorithm>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <limits>
#include <pugixml.hpp>

#include "VEXOCore/Quote.h"
#include "VEXOImageIO/PlaneOrder.h"

namespace vexo::image::io {
namespace {

using pugi::xml_node;

constexpr std::size_t most = std::numeric_limits<std::size_t>::max();

/// The name without the prefix of its namespace.
bool hasName(const xml_node& node, const char* name) {
  const char* colon = std::strchr(node.name(), ':');
  return std::strcmp(colon ? colon + 1 : node.name(), name) == 0;
}

std::vector<xml_node> getChildren(const xml_node& parent, const char* name) {
  std::vector<xml_node> children;
  for (const xml_node& node : parent.children())
    if (hasName(node, name)) children.push_back(node);
  return children;
}

class OmeReader {
public:
  OmeReader(const File& file, const OmePages& pages) : _file(file), _pages(pages) {}

  PlaneOrder read(const std::string& description, Calibration& calibration);

private:
  template <class... Args>
  [[noreturn]] void refuse(const Args&... args) const {
    raiseFileError(VEXO_HERE, _file, "its OME-XML ", args...);
  }
  xml_node findPixels(const xml_node& ome) const;
  std::size_t readCount(const xml_node& node, const char* name, std::size_t otherwise) const;
  std::string readOrder(const xml_node& pixels) const;
  void checkFile(const xml_node& ome, const xml_node& part) const;
  void placePages(const xml_node& ome, const xml_node& pixels, PlaneOrder& order) const;
  void place(std::size_t directory, std::size_t plane, PlaneOrder& order) const;

  const File& _file;
  const OmePages& _pages;
};

PlaneOrder OmeReader::read(const std::string& description, Calibration& calibration) {
  pugi::xml_document document;
  const std::size_t start = description.find('<');  // behind a byte order mark and blanks
  const auto result = document.load_buffer(description.data() + start, description.size() - start);
  if (!result) refuse("is damaged: ", result.description());
  xml_node ome;
  for (const xml_node& node : getChildren(document, "OME")) ome = node;
  const xml_node pixels = findPixels(ome);

  PlaneOrder order;
  order.order = readOrder(pixels);
  order.z = readCount(pixels, "SizeZ", 0);
  order.t = readCount(pixels, "SizeT", 0);
  const std::size_t width = readCount(pixels, "SizeX", 0), height = readCount(pixels, "SizeY", 0),
                    channels = readCount(pixels, "SizeC", 0);
  if (width != _pages.width || height != _pages.height)
    refuse("states planes of ", width, " x ", height, ", but its pages have ", _pages.width, " x ",
           _pages.height);
  if (channels % _pages.samples != 0)
    refuse("states ", channels, " channels, but its pages have ", _pages.samples, " samples per pixel");
  order.c = channels / _pages.samples;
  std::size_t planes;
  if (__builtin_mul_overflow(order.z, order.c, &planes) || __builtin_mul_overflow(planes, order.t, &planes))
    planes = most;
  if (planes != _pages.directories.size())
    refuse("states ", order.z, " (z) x ", order.c, " (c) x ", order.t, " (t) pages, but the file has ",
           _pages.directories.size());
  placePages(ome, pixels, order);

  // All in the unit of the columns.
  const auto readUnit = [&](const char* name) {
    const std::string unit = pixels.attribute(name).as_string("\u00B5m");
    return unit.size() <= 64 ? unit : "";
  };
  const auto readSize = [&](const char* name) { return parsePositive(pixels.attribute(name).as_string()); };
  const auto convert = [&](const char* name, const char* unitName) {
    return convertSize(readSize(name), readUnit(unitName), calibration.unit);
  };
  calibration = {};
  calibration.unit = readUnit(isKnown(readSize("PhysicalSizeX")) ? "PhysicalSizeXUnit" : "PhysicalSizeZUnit");
  calibration.pixelWidth = readSize("PhysicalSizeX");
  calibration.pixelHeight = convert("PhysicalSizeY", "PhysicalSizeYUnit");
  calibration.spacing = convert("PhysicalSizeZ", "PhysicalSizeZUnit");
  if (!isKnown(calibration.pixelHeight)) calibration.pixelWidth = 0;
  if (!isKnown(calibration.pixelWidth)) calibration.pixelHeight = 0;
  if (!isKnown(calibration.pixelWidth) && !isKnown(calibration.spacing)) calibration.unit.clear();
  calibration.frameInterval = roundTo(
      12, readSize("TimeIncrement") * getSeconds(pixels.attribute("TimeIncrementUnit").as_string("s")));
  return order;
}

xml_node OmeReader::findPixels(const xml_node& ome) const {
  for (const xml_node& binary : getChildren(ome, "BinaryOnly"))
    refuse("lies in another file, ", quote(binary.attribute("MetadataFile").as_string()),
           ": save the image as one file");
  const auto images = getChildren(ome, "Image");
  if (images.size() != 1)
    refuse("describes ", images.size(), " images: save the one you want as a file of its own");
  const auto pixels = getChildren(images.front(), "Pixels");
  if (pixels.size() != 1) refuse("describes ", pixels.size(), " arrays of pixels instead of one");
  return pixels.front();
}

std::size_t OmeReader::readCount(const xml_node& node, const char* name, std::size_t otherwise) const {
  const pugi::xml_attribute attribute = node.attribute(name);
  if (!attribute) return otherwise;
  const char* text = attribute.value();
  const char* end = text + std::strlen(text);
  std::size_t number = 0;
  const auto result = std::from_chars(text, end, number);
  if (result.ec != std::errc() || result.ptr != end)
    refuse("states ", name, "=", quote(text), ", which is no number");
  return number;
}

std::string OmeReader::readOrder(const xml_node& pixels) const {
  const std::string order = pixels.attribute("DimensionOrder").as_string("XYCZT");
  std::string letters = order;
  std::sort(letters.begin(), letters.end());
  if (order.rfind("XY", 0) != 0 || letters != "CTXYZ")
    refuse("states DimensionOrder=", quote(order), ", which is no order of planes");
  std::string axes = order.substr(2);
  std::transform(axes.begin(), axes.end(), axes.begin(),
                 [](char axis) { return static_cast<char>(axis + 'a' - 'A'); });
  return axes;
}

/// Planes may lie in other files of a set.
void OmeReader::checkFile(const xml_node& ome, const xml_node& part) const {
  for (const xml_node& id : getChildren(part, "UUID")) {
    const std::string own = ome.attribute("UUID").as_string(), name = id.attribute("FileName").as_string();
    if (name == _file.getName() || (!own.empty() && own == id.text().get())) continue;
    refuse("says that planes lie in another file, ", quote(name), ": save the image as one file");
  }
}

void OmeReader::placePages(const xml_node& ome, const xml_node& pixels, PlaneOrder& order) const {
  const auto parts = getChildren(pixels, "TiffData");
  if (parts.empty()) return;  // the pages come in order
  const std::size_t planes = _pages.directories.size();
  order.places.assign(planes, most);
  for (const xml_node& part : parts) {
    checkFile(ome, part);
    const std::size_t directory = readCount(part, "IFD", 0), z = readCount(part, "FirstZ", 0),
                      c = readCount(part, "FirstC", 0), t = readCount(part, "FirstT", 0);
    const std::size_t count = readCount(part, "PlaneCount", part.attribute("IFD") ? 1 : planes);
    if (z >= order.z || c / _pages.samples >= order.c || c % _pages.samples != 0 || t >= order.t)
      refuse("states a plane z ", z, ", c ", c, ", t ", t, " outside its sizes");
    std::size_t plane = 0, step = 1;
    for (const char axis : order.order) {
      plane += step * (axis == 'z' ? z : axis == 'c' ? c / _pages.samples : t);
      step *= axis == 'z' ? order.z : axis == 'c' ? order.c : order.t;
    }
    if (count > planes - plane) refuse("states ", count, " planes from plane ", plane + 1, " of ", planes);
    for (std::size_t i = 0; i < count; ++i) place(directory + i, plane + i, order);
  }
  std::vector<bool> isTaken(planes);
  for (std::size_t page = 0; page < planes; ++page) {
    const std::size_t plane = order.places[page];
    if (plane == most) refuse("names no plane for page ", page + 1);
    if (isTaken[plane]) refuse("names plane ", plane + 1, " twice");
    isTaken[plane] = true;
  }
}

void OmeReader::place(std::size_t directory, std::size_t plane, PlaneOrder& order) const {
  const auto& all = _pages.directories;
  const auto found = std::lower_bound(all.begin(), all.end(), directory);
  if (found == all.end() || *found != directory)
    refuse("names page ", directory, " (from 0), which is not there");
  std::size_t& place = order.places[static_cast<std::size_t>(found - all.begin())];
  if (place != most) refuse("names page ", directory, " (from 0) twice");
  place = plane;
}

}  // namespace

PlaneOrder::Place PlaneOrder::find(std::size_t image) const {
  std::size_t left = places.empty() ? image : places[image];
  Place place{};
  for (const char axis : order) {
    const std::size_t count = axis == 'z' ? z : axis == 'c' ? c : t;
    (axis == 'z' ? place.z : axis == 'c' ? place.c : place.t) = left % count;
    left /= count;
  }
  return place;
}

bool isOmeXml(const std::string& description) {
  const std::size_t mark = description.rfind("\xEF\xBB\xBF", 0) == 0 ? 3 : 0;
  const std::size_t start = description.find_first_not_of(" \t\r\n", mark);
  const bool isXml = start != std::string::npos && description[start] == '<';
  return isXml &&
         (description.find("<OME") != std::string::npos || description.find(":OME") != std::string::npos);
}

PlaneOrder readOmeXml(const File& file, const std::string& description, const OmePages& pages,
                      Calibration& calibration) {
  return OmeReader(file, pages).read(description, calibration);
}

}  // namespace vexo::image::io
