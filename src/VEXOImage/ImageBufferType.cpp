#include "VEXOImage/ImageBufferType.h"

#include "VEXOCore/Quote.h"

namespace vexo::image {
namespace {
constexpr struct {
  const char* name;
  std::size_t size;
} types[imageBufferTypeCount] = {{"uint8", 1},  {"int8", 1},  {"uint16", 2}, {"int16", 2},
                                 {"uint32", 4}, {"int32", 4}, {"float32", 4}};
}  // namespace

std::size_t getSampleSize(eImageBufferType type) {
  return types[static_cast<std::size_t>(type)].size;
}

const char* toString(eImageBufferType type) {
  return types[static_cast<std::size_t>(type)].name;
}

BoolResult fromString(const std::string& name, eImageBufferType& type) {
  std::string names;
  for (std::size_t i = 0; i < imageBufferTypeCount; ++i) {
    if (name == types[i].name) {
      type = static_cast<eImageBufferType>(i);
      return true;
    }
    names += (i ? ", " : "") + std::string(types[i].name);
  }
  return BoolResult::failure(quote(name) + " is no sample type; the types are " + names);
}

}  // namespace vexo::image
