#include "VEXOCore/BaseException.h"

namespace vexo {

BaseException::BaseException(std::string message, const boost::source_location& where)
    : _message(std::move(message)),
      _function(where.function_name()),
      _file(where.file_name()),
      _line(where.line()) {}

BaseException::~BaseException() = default;
UnHandleException::~UnHandleException() = default;
RefusedValueException::~RefusedValueException() = default;
CancelledException::~CancelledException() = default;
OutOfMemoryException::~OutOfMemoryException() = default;

}  // namespace vexo
