#include "VEXOCore/TypeName.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <new>

namespace vexo {

std::string readableTypeName(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
  // The names of the compiler's own types are well-formed: only memory can be missing.
  if (!name) throw std::bad_alloc();
  return name.get();
}

}  // namespace vexo
