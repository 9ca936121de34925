#pragma once

#include <string>
#include <utility>

namespace vexo {

/// A success flag with a message that says why when it is false.
class BoolResult {
public:
  BoolResult(bool ok = true) : _ok(ok) {}

  static BoolResult failure(std::string message) {
    BoolResult result(false);
    result._message = std::move(message);
    return result;
  }

  explicit operator bool() const { return _ok; }
  bool isOk() const { return _ok; }
  const std::string& getMessage() const { return _message; }

private:
  bool _ok;
  std::string _message;
};

}  // namespace vexo
