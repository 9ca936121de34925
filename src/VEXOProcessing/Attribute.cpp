#include "VEXOProcessing/Attribute.h"

#include <log4cplus/logger.h>

#include <cctype>
#include <cmath>
#include <cstring>

#include "VEXOCore/Buffer.h"
#include "VEXOProcessing/ProcessingMessages.h"

namespace vexo::processor {
namespace {

/// True when the name begins with the prefix as a word of its own: "InOutMaxVal" but not "InOutlineWidth".
bool hasPrefix(const std::string& name, const std::string& prefix) {
  return name.compare(0, prefix.size(), prefix) == 0 &&
         !std::islower(static_cast<unsigned char>(name[prefix.size()]));
}

}  // namespace

AttributeInfo::AttributeInfo(const std::string& qualifiedClassName, const char* tip)
    : name(shortTypeName(qualifiedClassName)), toolTip(tip) {
  const bool inOut = hasPrefix(name, "InOut"), out = hasPrefix(name, "Out");
  direction = inOut ? eAttributeDirection::InOut : out ? eAttributeDirection::Out : eAttributeDirection::In;
  optional = hasPrefix(name, inOut ? "InOutOpt" : out ? "OutOpt" : "InOpt");
}

bool AttributeInfo::isWorkImage() const {
  return direction == eAttributeDirection::Out && name.compare(optional ? 6 : 3, 2, "Wk") == 0;
}

BaseAttribute::~BaseAttribute() = default;

template class ValueAttribute<bool>;
template class ValueAttribute<std::int32_t>;
template class ValueAttribute<std::uint32_t>;
template class ValueAttribute<float>;
template class ValueAttribute<double>;
template class ValueAttribute<std::string>;
template class ValueAttribute<boost::shared_ptr<const image::BaseImage>, BaseImageAttribute>;
template class ValueAttribute<boost::shared_ptr<image::BaseImage>, BaseImageAttribute>;
template class ImageValue<const image::BaseImage>;
template class ImageValue<image::BaseImage>;
template class ValueAttribute<boost::shared_ptr<const image::InputStrip>, BaseInputStripAttribute>;
template class ValueAttribute<boost::shared_ptr<image::OutputStrip>, BaseOutputStripAttribute>;
template class StripValue<const image::InputStrip>;
template class StripValue<image::OutputStrip>;

void raiseRefusedValue(const std::string& attributeName, const std::string& why) {
  raiseWith<RefusedValueException>(attributeName, ProcessingModule::name, VEXO_HERE,
                                   formatMessage(eProcessorMessage::RefusedValue, attributeName, why));
}

void BaseAttribute::raiseRefused(const std::string& why) const {
  const std::string name = (_owner ? *_owner + ": " : std::string()) + getName();
  raiseWith<RefusedValueException>(getName(), ProcessingModule::name, VEXO_HERE,
                                   formatMessage(eProcessorMessage::RefusedValue, name, why));
}

void BaseAttribute::raiseNotSet() const {
  const std::string name = (_owner ? *_owner + ": " : std::string()) + getName();
  raiseWith<RefusedValueException>(getName(), ProcessingModule::name, VEXO_HERE,
                                   formatMessage(eProcessorMessage::NotSet, name));
}

BoolResult checkFinite(double value) {
  if (std::isfinite(value)) return true;
  return BoolResult::failure(ScalarText<double>::toText(value) + " is not finite");
}

void writeImage(BaseOArchive& archive, const std::string& name, const image::BaseImage& image) {
  const auto* host = dynamic_cast<const image::Image*>(&image);
  if (!host) raiseRefusedValue(name, "an image on the GPU cannot be written to an archive");
  const image::ImageGeometry& g = image.getGeometry();
  const image::ImageStrides dense = image::denseStrides(g, image.getBufferType());
  std::vector<unsigned char> samples(static_cast<std::size_t>(dense.t) * g.t);
  const auto packed = image::Image::wrap(samples.data(), g, image.getBufferType(), dense);
  image::copySamples(*host, *packed);

  ArchiveSectionManager section(archive, name);
  archive.write("type", image::toString(image.getBufferType()));
  archive.write("x", std::uint64_t(g.x));
  archive.write("y", std::uint64_t(g.y));
  archive.write("z", std::uint64_t(g.z));
  archive.write("c", std::uint64_t(g.c));
  archive.write("t", std::uint64_t(g.t));
  archive.writeBytes("samples", samples);
}

boost::shared_ptr<image::Image> readImage(BaseIArchive& archive, const std::string& name) {
  ArchiveSectionManager section(archive, name);
  std::string typeName;
  archive.read("type", typeName);
  image::eImageBufferType type;
  if (const BoolResult known = image::fromString(typeName, type); !known)
    raiseRefusedValue(name, known.getMessage());
  image::ImageGeometry g;
  const auto readSize = [&](const char* item, std::size_t& size) {
    std::uint64_t value = 0;
    archive.read(item, value);
    size = value;
  };
  readSize("x", g.x);
  readSize("y", g.y);
  readSize("z", g.z);
  readSize("c", g.c);
  readSize("t", g.t);
  std::vector<unsigned char> samples;
  archive.readBytes("samples", samples);
  const image::ImageStrides dense = image::denseStrides(g, type);
  // Compared before the image is created: what the text claims must not make us allocate more than it holds.
  if (checkedMultiply(static_cast<std::size_t>(dense.t), g.t, "image size") != samples.size())
    raiseRefusedValue(name, std::to_string(samples.size()) + " bytes of samples do not fit " +
                                image::toString(g) + " of " + typeName);
  const auto result = image::Image::create(g, type);
  std::memcpy(result->getData(), samples.data(), samples.size());
  return result;
}

}  // namespace vexo::processor
