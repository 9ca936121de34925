#include "ImageFiles.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "VEXOImageIO/ImageIO.h"
#include "Words.h"

namespace vexo::app {

namespace fs = std::filesystem;
using processor::BaseImageAttribute;
using processor::BaseProcessor;

namespace {

image::eImageBufferType parseType(const std::string& name) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < image::imageBufferTypeCount; ++i)
    names.emplace_back(image::toString(static_cast<image::eImageBufferType>(i)));
  image::eImageBufferType type{};
  if (!image::fromString(name, type)) refuseWord("sample type", name, names);
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

}  // namespace

void ImageFiles::add(const boost::shared_ptr<BaseImageAttribute>& attribute, const std::string& word) {
  File file{attribute, word, {}};
  const std::string key = ",type=";
  const std::size_t at = word.rfind(key);
  if (!attribute->isInput() && at != std::string::npos) {
    file.path = word.substr(0, at);
    file.type = parseType(word.substr(at + key.size()));
  }
  for (const File& other : _files)
    if (attribute->isOutput() && other.attribute->isOutput() && areOneFile(file.path, other.path))
      throw UsageError("--" + other.attribute->getName() + " and --" + attribute->getName() +
                       " name the same file '" + file.path + "'");
  _files.push_back(file);
}

bool ImageFiles::haveOutput() const {
  return std::any_of(_files.begin(), _files.end(),
                     [](const File& file) { return file.attribute->isOutput(); });
}

void ImageFiles::setUnreadInputs() const {
  for (const File& file : _files) {
    if (!file.attribute->isInput()) continue;
    const image::io::ImageInfo info = image::io::readImageInfo(file.path);
    file.attribute->setImage(image::Image::create(info.geometry, info.type));
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
    image::io::checkWritable(file.path, description.geometry, description.type);
  }
}

void ImageFiles::readInputs() const {
  std::map<fs::path, boost::shared_ptr<image::Image>> images;
  for (const File& file : _files) {
    if (!file.attribute->isInput()) continue;
    auto& image = images[getFullPath(file.path)];
    if (!image) image = image::io::readImage(file.path);
    file.attribute->setImage(image);
  }
}

void ImageFiles::writeOutputs() const {
  for (const File& file : _files)
    if (file.attribute->isOutput())
      image::io::writeImage(image::hostImage(file.attribute->getImage(), file.attribute->getName().c_str()),
                            file.path);
}

}  // namespace vexo::app
