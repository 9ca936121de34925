#include "VEXOProcessing/OutputInitializer.h"

namespace vexo::processor {
namespace {

class DuplicateInitializer final : public ImageOutputInitializer {
public:
  using ImageOutputInitializer::ImageOutputInitializer;

protected:
  Description describeFrom(const image::BaseImage& input) const override {
    return {input.getGeometry(), input.getBufferType()};
  }
};

class PromoteInitializer final : public ImageOutputInitializer {
public:
  using ImageOutputInitializer::ImageOutputInitializer;

protected:
  Description describeFrom(const image::BaseImage& input) const override {
    return {input.getGeometry(), image::eImageBufferType::Real32};
  }
};

}  // namespace

BaseOutputInitializer::~BaseOutputInitializer() = default;

boost::shared_ptr<const image::BaseImage> ImageOutputInitializer::getInput() const {
  const auto attribute = _input.lock();
  const auto image = attribute ? attribute->getImage() : nullptr;
  if (!image) _raise(VEXO_HERE, formatMessage(eProcessorMessage::NullInput));
  return image;
}

void ImageOutputInitializer::initOutputAttribute() {
  const Description description = describe();
  if (const auto output = _output.lock())
    output->setImage(getInput()->createSimilar(description.geometry, description.type));
}

boost::shared_ptr<BaseOutputInitializer> makeDuplicateInitializer(
    boost::weak_ptr<BaseImageAttribute> output, boost::weak_ptr<const BaseImageAttribute> input) {
  return boost::make_shared<DuplicateInitializer>(std::move(output), std::move(input));
}

boost::shared_ptr<BaseOutputInitializer> makePromoteInitializer(
    boost::weak_ptr<BaseImageAttribute> output, boost::weak_ptr<const BaseImageAttribute> input) {
  return boost::make_shared<PromoteInitializer>(std::move(output), std::move(input));
}

}  // namespace vexo::processor
