#include "ImageFiles.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <utility>

#include "VEXOCore/BaseException.h"
#include "VEXOCore/Quote.h"
#include "Words.h"

namespace vexo::app {

namespace fs = std::filesystem;
using processor::BaseImageAttribute;
using processor::BaseProcessor;

namespace {

image::eImageBufferType parseType(const BaseImageAttribute& output, const std::string& name) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < image::imageBufferTypeCount; ++i)
    names.emplace_back(image::toString(static_cast<image::eImageBufferType>(i)));
  image::eImageBufferType type{};
  if (!image::fromString(name, type)) refuseWord("sample type of --" + output.getName(), name, names);
  return type;
}

/// The one path of a file, whatever the way it is named, be it there or not.
fs::path getFullPath(const std::string& path) {
  std::error_code error;
  return fs::weakly_canonical(fs::absolute(path, error), error);
}

bool areOneFile(const std::string& a, const std::string& b) {
  std::error_code error;
  // A device such as /dev/null may well receive several images.
  if (fs::exists(a, error) && !fs::is_regular_file(a, error)) return false;
  return getFullPath(a) == getFullPath(b);
}

/// Calls it(); its failure names the attribute, too.
template <class It>
auto nameFailure(const BaseImageAttribute& attribute, It it) {
  try {
    return it();
  } catch (const BaseException& error) {
    throw std::runtime_error(attribute.getName() + ": " + error.what());
  }
}

}  // namespace

void ImageFiles::add(const boost::shared_ptr<BaseImageAttribute>& attribute, const std::string& word) {
  File file{attribute, word, {}};
  const std::size_t comma = word.rfind(','), equals = word.find('=', comma);
  // Commas may stand in paths, but these end in an extension.
  if (!attribute->isInput() && comma != std::string::npos && equals != std::string::npos &&
      word.find_first_of("./", equals) == std::string::npos) {
    const std::string key = word.substr(comma + 1, equals - comma - 1);
    if (key != "type") refuseWord("suffix of --" + attribute->getName(), key, {"type"});
    file.path = word.substr(0, comma);
    file.type = parseType(*attribute, word.substr(equals + 1));
  }
  for (const File& other : _files)
    if (attribute->isOutput() && other.attribute->isOutput() && areOneFile(file.path, other.path))
      throw UsageError("--" + other.attribute->getName() + " and --" + attribute->getName() +
                       " name the same file " + quote(file.path));
  _files.push_back(file);
}

bool ImageFiles::haveOutput() const {
  return std::any_of(_files.begin(), _files.end(),
                     [](const File& file) { return file.attribute->isOutput(); });
}

void ImageFiles::setUnreadInputs() {
  bool isFirst = true;
  for (const File& file : _files) {
    if (!file.attribute->isInput()) continue;
    const auto info = nameFailure(*file.attribute, [&] { return image::io::readImageInfo(file.path); });
    file.attribute->setImage(image::Image::create(info.geometry, info.type));
    if (std::exchange(isFirst, false)) _calibration = info.calibration;
  }
}

void ImageFiles::createOutputs(const BaseProcessor& processor) const {
  for (const File& file : _files) {
    if (file.attribute->isInput() || (!file.type && !file.attribute->isOptional())) continue;
    const auto description = processor.describeOutput(*file.attribute);
    file.attribute->setImage(
        image::Image::create(description.geometry, file.type.value_or(description.type)));
  }
}

void ImageFiles::checkOutputs(const BaseProcessor& processor) const {
  for (const File& file : _files) {
    if (!file.attribute->isOutput()) continue;
    const auto description = processor.describeOutput(*file.attribute);
    nameFailure(*file.attribute,
                [&] { image::io::checkWritable(file.path, description.geometry, description.type); });
  }
}

void ImageFiles::readInputs() const {
  std::map<fs::path, boost::shared_ptr<image::Image>> images;
  for (const File& file : _files) {
    if (!file.attribute->isInput()) continue;
    auto& image = images[getFullPath(file.path)];
    if (!image) image = nameFailure(*file.attribute, [&] { return image::io::readImage(file.path); });
    file.attribute->setImage(image);
  }
}

void ImageFiles::writeOutputs(const std::atomic<bool>& cancelled) const {
  for (const File& file : _files) {
    if (!file.attribute->isOutput()) continue;
    const image::Image& image =
        image::hostImage(file.attribute->getImage(), file.attribute->getName().c_str());
    nameFailure(*file.attribute, [&] { image::io::writeImage(image, file.path, _calibration, &cancelled); });
  }
}

}  // namespace vexo::app
