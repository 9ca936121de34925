#pragma once

#include <map>
#include <string>
#include <vector>

#include "VEXOProcessing/ProcessorFactory.h"

namespace vexo::test {

/// Class names of the processors of whole images.
inline std::vector<std::string> filterNames() {
  std::vector<std::string> names;
  for (const std::string& name : processor::ProcessorFactory::getTypeNames())
    if (name.size() > 4 && name.compare(name.size() - 4, 4, "Lvl1") == 0) names.push_back(name);
  return names;
}

inline boost::shared_ptr<image::Image> patternImage(const image::ImageGeometry& g,
                                                    image::eImageBufferType type) {
  const auto image = image::Image::create(g, type);
  image::visitBufferType(type, [&](auto sample) {
    using Sample = decltype(sample);
    auto* samples = static_cast<Sample*>(image->getData());
    for (std::size_t i = 0; i < g.x * g.y * g.z * g.c * g.t; ++i)
      samples[i] = static_cast<Sample>(i * 2654435761u >> 7 & 127);
  });
  return image;
}

/// A processor with a value for each input that a run must have.
inline boost::shared_ptr<processor::BaseProcessor> makeFilter(const std::string& name,
                                                              const image::ImageGeometry& g,
                                                              image::eImageBufferType type) {
  const std::map<std::string, std::string> values = {{"unsigned", "2"},
                                                     {"float", "1.5"},
                                                     {"double", "2"},
                                                     {"bool", "true"},
                                                     {"KernelXY", "0,0,1;2,1,2"},
                                                     {"KernelXYZ", "0,0,0,1;1,2,1,2"},
                                                     {"Range", "0,127"}};
  const auto filter = processor::ProcessorFactory::createProcessor(name);
  filter->init();
  for (const auto& attribute : filter->getAttributes()) {
    if (!attribute->isInput() || attribute->isOptional()) continue;
    const std::string& inputName = attribute->getName();
    const bool mask =
        inputName.find("Mask") != std::string::npos || inputName.find("Bin") != std::string::npos;
    if (const auto image = boost::dynamic_pointer_cast<processor::BaseImageAttribute>(attribute))
      image->setImage(patternImage(g, mask ? image::eImageBufferType::UInt8 : type));
    else if (const BoolResult set = attribute->setText(values.at(attribute->getValueTypeName())); !set)
      throw BaseException(name + ": " + set.getMessage(), VEXO_HERE);
  }
  return filter;
}

/// The results of a run as text and bytes, to be compared.
inline std::string resultOf(const processor::BaseProcessor& filter) {
  std::string bytes;
  for (const auto& attribute : filter.getAttributes()) {
    if (!attribute->isOutput() || !attribute->isSet()) continue;
    const auto holder = boost::dynamic_pointer_cast<const processor::BaseImageAttribute>(attribute);
    if (!holder) {
      bytes += attribute->getText();
      continue;
    }
    const image::Image& image = image::hostImage(holder->getImage(), attribute->getName().c_str());
    const image::ImageGeometry& g = image.getGeometry();
    for (std::size_t t = 0; t < g.t; ++t)
      for (std::size_t c = 0; c < g.c; ++c)
        for (std::size_t z = 0; z < g.z; ++z)
          for (std::size_t y = 0; y < g.y; ++y)
            bytes.append(static_cast<const char*>(image.getRow(y, z, c, t)),
                         g.x * image::getSampleSize(image.getBufferType()));
  }
  return bytes;
}

}  // namespace vexo::test
