#pragma once

// All filters, found through the factory, with values for their parameters. Without gtest.

#include <optional>

#include "VEXOProcessing/ProcessingAlgorithm.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "tools/Images.h"

namespace vexo::test {

using FilterPtr = boost::shared_ptr<processor::BaseProcessor>;
using ImageAttributePtr = boost::shared_ptr<processor::BaseImageAttribute>;
using processor::InstructionSetsIdentifier;

/// Values of a parameter, by its name or else by the type of its values: two that a run takes, in that order
/// with and without the optional parameters, and some that are refused. A new kind of parameter needs a line
/// here.
struct ParameterValues {
  const char* parameter;
  const char* taken[2];
  std::vector<const char*> refused;
};
inline const ParameterValues& valuesOf(const processor::BaseAttribute& attribute) {
  static const auto& table = *new std::vector<ParameterValues>{
      {"InHalfKnlSizeX", {"3", "1"}, {"32768", "4294967295"}},
      {"InHalfKnlSizeY", {"2", "5"}, {"32768", "4294967295"}},
      {"InHalfKnlSizeZ", {"1", "2"}, {"32768", "4294967295"}},
      {"InOptHalfKnlSize", {"1", "3"}, {"32768", "4294967295"}},
      {"InStdDevX", {"1.5", "0.6"}, {"nan", "inf", "-1", "1e9"}},
      {"InStdDevY", {"0.7", "2.5"}, {"nan", "inf", "-1", "1e9"}},
      {"InStdDevZ", {"0.9", "1.2"}, {"nan", "inf", "-1", "1e9"}},
      {"InSpaceSigma", {"1.4", "3"}, {"1e9"}},
      {"InRangeSigma", {"40", "900"}, {}},
      {"InFactor", {"1.1", "2.5"}, {"nan", "inf"}},
      {"bool", {"true", "false"}, {}},
      {"KernelXY", {"0,0,1;2,1,2;-3,-2,0.5;0,1,-0.25", "-1,0,1;0,0,2;1,0,1"}, {"0,0,1;0,-32768,1"}},
      {"KernelXYZ", {"0,0,0,1;1,2,1,2;-3,0,-2,0.5", "0,0,-1,1;0,0,0,2;0,0,1,1"}, {"0,0,40000,1"}},
      {"Border2dPolicy", {"replicate", "circular"}, {"constant=nan"}},
      {"Border3dPolicy", {"replicate", "circular"}, {"constant=nan"}},
      {"GaussianCoverage", {"0.99,0", "0.9,2"}, {"0,0", "1,0", "nan,0"}},
      {"Range", {"-1000,2500", "0,200"}, {"3,2", "nan,2", "0,inf"}}};
  for (const std::string& key : {attribute.getName(), attribute.getValueTypeName()})
    for (const ParameterValues& values : table)
      if (key == values.parameter) return values;
  throw BaseException("tools/Filters.h has no values for " + attribute.getName(), VEXO_HERE);
}

/// Class names of the processors of whole images.
inline std::vector<std::string> filterNames() {
  std::vector<std::string> names;
  for (const std::string& name : processor::ProcessorFactory::getTypeNames())
    if (name.size() > 4 && name.compare(name.size() - 4, 4, "Lvl1") == 0) names.push_back(name);
  return names;
}
inline std::string shortName(const std::string& className) {
  return className.substr(className.rfind(':') + 1);
}

inline bool isMask(const std::string& attributeName) {
  return attributeName.find("Mask") != std::string::npos || attributeName.find("Bin") != std::string::npos;
}
inline std::vector<ImageAttributePtr> imageInputs(const processor::BaseProcessor& filter) {
  std::vector<ImageAttributePtr> inputs;
  for (const auto& attribute : filter.getAttributes())
    if (const auto image = boost::dynamic_pointer_cast<processor::BaseImageAttribute>(attribute);
        image && image->isInput())
      inputs.push_back(image);
  return inputs;
}
/// Null where no image comes out.
inline ImageAttributePtr imageOutput(const processor::BaseProcessor& filter) {
  for (const auto& attribute : filter.getAttributes())
    if (const auto image = boost::dynamic_pointer_cast<processor::BaseImageAttribute>(attribute);
        image && image->isOutput() && !image->isOptional())
      return image;
  return nullptr;
}
inline ImagePtr imageIn(const processor::BaseImageAttribute& attribute) {
  return boost::const_pointer_cast<Image>(boost::dynamic_pointer_cast<const Image>(attribute.getImage()));
}

/// Gives each parameter one of its two values; the first choice leaves optional ones unset.
inline void giveValues(const processor::BaseProcessor& filter, std::size_t choice = 0) {
  for (const auto& attribute : filter.getAttributes()) {
    if (!attribute->isInput() || boost::dynamic_pointer_cast<processor::BaseImageAttribute>(attribute))
      continue;
    const char* text = valuesOf(*attribute).taken[choice];
    if (attribute->isOptional() && choice == 0)
      attribute->clear();
    else if (const BoolResult set = attribute->setText(text); !set)
      throw BaseException(attribute->getName() + ": " + set.getMessage(), VEXO_HERE);
  }
}
inline void giveImages(const processor::BaseProcessor& filter, const ImageGeometry& g,
                       eImageBufferType type) {
  unsigned seed = 0;
  // An 8-bit mask is signed or not.
  const auto maskType = type == eImageBufferType::Int8 ? type : eImageBufferType::UInt8;
  for (const auto& input : imageInputs(filter))
    input->setImage(isMask(input->getName())
                        ? rangeImage(g, maskType, maskType == eImageBufferType::Int8 ? -1 : 0, 2, ++seed)
                        : randomImage(g, type, ++seed));
}
/// A filter with a value for each input that a run must have.
inline FilterPtr makeFilter(const std::string& name, const ImageGeometry& g, eImageBufferType type,
                            std::size_t choice = 0) {
  const FilterPtr filter = processor::ProcessorFactory::createProcessor(name);
  filter->init();
  giveValues(*filter, choice);
  giveImages(*filter, g, type);
  return filter;
}

/// What came out of a run.
struct Result {
  std::vector<boost::shared_ptr<const Image>> images;
  std::string items;
};
inline Result resultOf(const processor::BaseProcessor& filter) {
  Result result;
  for (const auto& attribute : filter.getAttributes()) {
    if (!attribute->isOutput() || !attribute->isSet()) continue;
    if (const auto* image = dynamic_cast<const processor::BaseImageAttribute*>(attribute.get()))
      result.images.push_back(imageIn(*image));
    else
      result.items += attribute->getName() + " " + attribute->getText() + "\n";
  }
  return result;
}
inline std::string findDifference(const Result& a, const Result& b) {
  if (a.items != b.items) return a.items + "and " + b.items;
  if (a.images.size() != b.images.size()) return "other outputs";
  for (std::size_t i = 0; i < a.images.size(); ++i)
    if (const std::string difference = findDifference(*a.images[i], *b.images[i]); !difference.empty())
      return difference;
  return "";
}

/// The processors of strips, whose kernels are chosen by instruction set.
using KernelClass = boost::shared_ptr<processor::BaseProcessingAlgorithm>;
inline const std::vector<KernelClass>& kernelClasses() {
  static const auto& classes = *new std::vector<KernelClass>([] {
    std::vector<KernelClass> found;
    for (const std::string& name : processor::ProcessorFactory::getTypeNames())
      if (const auto one = boost::dynamic_pointer_cast<processor::BaseProcessingAlgorithm>(
              processor::ProcessorFactory::createProcessor(name)))
        found.push_back(one);
    return found;
  }());
  return classes;
}
inline void forceInstructionSets(const InstructionSetsIdentifier& sets) {
  for (const auto& kernelClass : kernelClasses()) kernelClass->forceInstructionSets(sets);
}
/// Restricts all kernels to some instruction sets for the life of the object.
class ForcedSets {
public:
  explicit ForcedSets(const InstructionSetsIdentifier& sets) { forceInstructionSets(sets); }
  ForcedSets(const ForcedSets&) = delete;
  ForcedSets& operator=(const ForcedSets&) = delete;
  ~ForcedSets() { forceInstructionSets({}); }
};

/// What to restrict kernels to: each instruction set of this machine that kernels are compiled for; SSE2 is
/// the portable ones'. There are AVX kernels for few types: the portable ones fill in.
inline const std::vector<InstructionSetsIdentifier>& offeredSets() {
  static const auto& offered = *new std::vector<InstructionSetsIdentifier>([] {
    std::vector<InstructionSetsIdentifier> sets;
    for (const eInstructionSet set : {eIS_Standard, eIS_AVX, eIS_AVX2, eIS_AVX512})
      if (core::isAvailable(set))
        sets.push_back(set == eIS_AVX ? InstructionSetsIdentifier{eIS_Standard, eIS_AVX}
                                      : InstructionSetsIdentifier{set});
    return sets;
  }());
  return offered;
}

}  // namespace vexo::test
