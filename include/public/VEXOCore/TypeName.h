#pragma once

#include <boost/type_index.hpp>
#include <string>

namespace vexo {

/// Fully qualified name of a type, e.g. "vexo::imaproc::filter::MeanSmoothing2dImgLvl1". Built once per type.
template <class T>
const std::string& typeName() {
  static const std::string name = boost::typeindex::type_id<T>().pretty_name();
  return name;
}

/// The name without its namespaces.
inline std::string shortTypeName(const std::string& qualifiedName) {
  const auto colon = qualifiedName.rfind(':');
  return colon == std::string::npos ? qualifiedName : qualifiedName.substr(colon + 1);
}

}  // namespace vexo
