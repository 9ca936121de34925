#pragma once

#include <string>
#include <typeinfo>

#include "VEXOCore/Export.h"

namespace vexo {

/// The name of a type as it is written in C++.
VEXO_API std::string readableTypeName(const std::type_info& type);

/// Fully qualified name of a type, e.g. "vexo::imaproc::filter::MeanSmoothing2dImgLvl1". Built once per type.
template <class T>
const std::string& typeName() {
  static const auto& name = *new std::string(readableTypeName(typeid(T)));
  return name;
}

/// The name without its namespaces.
inline std::string shortTypeName(const std::string& qualifiedName) {
  const auto colon = qualifiedName.rfind(':');
  return colon == std::string::npos ? qualifiedName : qualifiedName.substr(colon + 1);
}

}  // namespace vexo
