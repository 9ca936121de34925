#pragma once

#include <boost/assert/source_location.hpp>
#include <cstddef>
#include <exception>
#include <string>
#include <utility>

#include "VEXOCore/Export.h"

/// The place of a raise: file, line and full signature of the function.
#define VEXO_HERE BOOST_CURRENT_LOCATION

namespace vexo {

/// Base of every exception that the library throws: a message for the user, and where it was raised.
class VEXO_API BaseException : public std::exception {
public:
  BaseException(std::string message, const boost::source_location& where);
  ~BaseException() override;

  const char* what() const noexcept override { return _message.c_str(); }
  const std::string& getMessage() const { return _message; }
  /// Signature of the raising function, its source file (relative to the project) and line.
  const std::string& getFunction() const { return _function; }
  const std::string& getFile() const { return _file; }
  unsigned getLine() const { return _line; }

private:
  std::string _message;
  std::string _function;
  std::string _file;
  unsigned _line;
};

/// A failure of a foreign part (standard library, archive text, operating system) met inside the library.
class VEXO_API UnHandleException : public BaseException {
public:
  using BaseException::BaseException;
  ~UnHandleException() override;
};

/// A value that a parameter refuses, or that it does not have.
class VEXO_API RefusedValueException : public BaseException {
public:
  RefusedValueException(std::string attributeName, std::string message, const boost::source_location& where)
      : BaseException(std::move(message), where), _attributeName(std::move(attributeName)) {}
  ~RefusedValueException() override;
  const std::string& getAttributeName() const { return _attributeName; }

private:
  std::string _attributeName;
};

/// A run that was asked to stop.
class VEXO_API CancelledException : public BaseException {
public:
  using BaseException::BaseException;
  ~CancelledException() override;
};

/// Memory that was not to be had.
class VEXO_API OutOfMemoryException : public BaseException {
public:
  OutOfMemoryException(std::size_t bytes, std::string message, const boost::source_location& where)
      : BaseException(std::move(message), where), _bytes(bytes) {}
  ~OutOfMemoryException() override;
  /// What was asked for; 0 when it is not known.
  std::size_t getBytes() const { return _bytes; }

private:
  std::size_t _bytes;
};

}  // namespace vexo
