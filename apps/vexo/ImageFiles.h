#pragma once

#include <boost/shared_ptr.hpp>
#include <optional>
#include <string>
#include <vector>

#include "VEXOImageIO/ImageIO.h"
#include "VEXOProcessing/Processor.h"

namespace vexo::app {

/// The images that a run reads and writes. Everything that the headers of the inputs allow to check is
/// checked before the first sample is read.
class ImageFiles {
public:
  /// Takes over what the words say about an attribute: a path, for an output also "PATH,type=TYPE".
  void add(const boost::shared_ptr<processor::BaseImageAttribute>& attribute, const std::string& word);
  bool haveOutput() const;

  /// Gives the inputs images of the right geometry and type whose samples nobody has read.
  void setUnreadInputs();
  /// Creates the outputs that are to have a certain type, or that the run would not create itself.
  void createOutputs(const processor::BaseProcessor& processor) const;
  /// Throws when an output cannot be written under its name.
  void checkOutputs(const processor::BaseProcessor& processor) const;

  void readInputs() const;
  /// The outputs get the calibration of the first input.
  void writeOutputs(const std::atomic<bool>& cancelled) const;

private:
  struct File {
    boost::shared_ptr<processor::BaseImageAttribute> attribute;
    std::string path;
    std::optional<image::eImageBufferType> type;
  };
  std::vector<File> _files;
  image::io::Calibration _calibration;  ///< of the first input
};

}  // namespace vexo::app
