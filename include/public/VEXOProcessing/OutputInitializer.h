#pragma once

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>
#include <map>
#include <string>

#include "VEXOProcessing/Attribute.h"
#include "VEXOProcessing/ProcessingMessages.h"

namespace vexo::processor {

/// Raises a text as the exception of a module, on its logger.
using ModuleRaise = void (*)(const boost::source_location& where, std::string text);

/// Creates an output that the caller did not give: a mandatory one, or an optional one that was requested; or
/// what goes in and out.
class VEXO_API BaseOutputInitializer {
public:
  virtual ~BaseOutputInitializer();
  virtual void initOutputAttribute() = 0;
  /// Whose exception a refusal is.
  void setRaise(ModuleRaise raise) { _raise = raise; }

protected:
  ModuleRaise _raise = ProcessingModule::raise;
};

using OutputInitializerColl = std::map<std::string, boost::shared_ptr<BaseOutputInitializer>>;

/// Creates an output image, in the same kind of memory as an input image.
class VEXO_API ImageOutputInitializer : public BaseOutputInitializer {
public:
  struct Description {
    image::ImageGeometry geometry;
    image::eImageBufferType type;
  };
  ImageOutputInitializer(boost::weak_ptr<BaseImageAttribute> output,
                         boost::weak_ptr<const BaseImageAttribute> input)
      : _output(std::move(output)), _input(std::move(input)) {}

  /// Geometry and type that the output will have. Throws when the input is not set.
  Description describe() const { return describeFrom(*getInput()); }
  void initOutputAttribute() override;

protected:
  virtual Description describeFrom(const image::BaseImage& input) const = 0;

private:
  boost::shared_ptr<const image::BaseImage> getInput() const;

  boost::weak_ptr<BaseImageAttribute> _output;
  boost::weak_ptr<const BaseImageAttribute> _input;
};

/// The kinds of output image that differ only in what they take over from the input.
VEXO_API boost::shared_ptr<BaseOutputInitializer> makeDuplicateInitializer(
    boost::weak_ptr<BaseImageAttribute> output, boost::weak_ptr<const BaseImageAttribute> input);
VEXO_API boost::shared_ptr<BaseOutputInitializer> makePromoteInitializer(
    boost::weak_ptr<BaseImageAttribute> output, boost::weak_ptr<const BaseImageAttribute> input);

/// Creates an output that is a data item (OutputDataItemAttribute), for a run to fill.
template <class A>
class DataItemInitializer final : public BaseOutputInitializer {
public:
  explicit DataItemInitializer(boost::weak_ptr<A> output) : _output(std::move(output)) {}
  void initOutputAttribute() override {
    if (const auto output = _output.lock()) output->setStorage(boost::make_shared<typename A::ItemType>());
  }

private:
  boost::weak_ptr<A> _output;
};
template <class A>
boost::shared_ptr<BaseOutputInitializer> makeDataItemInitializer(const boost::shared_ptr<A>& output) {
  return boost::make_shared<DataItemInitializer<A>>(output);
}

}  // namespace vexo::processor

namespace vexo::imaproc {

/// The output gets the input's geometry and sample type.
template <class TIn, class TOut>
boost::shared_ptr<processor::BaseOutputInitializer> duplicateInOut(const boost::weak_ptr<TOut>& output,
                                                                   const boost::weak_ptr<TIn>& input) {
  return processor::makeDuplicateInitializer(output, input);
}
/// The output gets the input's geometry and is 32-bit float.
template <class TIn, class TOut>
boost::shared_ptr<processor::BaseOutputInitializer> promoteUnary(const boost::weak_ptr<TOut>& output,
                                                                 const boost::weak_ptr<TIn>& input) {
  return processor::makePromoteInitializer(output, input);
}

}  // namespace vexo::imaproc
