#pragma once

#include <memory>
#include <string>

#include "VEXOSerialization/Archive.h"

namespace vexo {

/// Writes JSON: sections are objects, bytes are base64 text, numbers that JSON cannot hold are "nan", "inf",
/// "-inf".
class VEXO_API JsonOArchive final : public BaseOArchive {
public:
  JsonOArchive();
  ~JsonOArchive() override;

  void openSection(const std::string& name) override;
  void closeSection() override;
  using BaseOArchive::write;
  void write(const std::string& name, bool value) override;
  void write(const std::string& name, std::uint32_t value) override;
  void write(const std::string& name, std::int32_t value) override;
  void write(const std::string& name, std::uint64_t value) override;
  void write(const std::string& name, float value) override;
  void write(const std::string& name, double value) override;
  void write(const std::string& name, const std::string& value) override;
  void writeBytes(const std::string& name, const std::vector<unsigned char>& value) override;

  /// The text so far; sections still open appear as closed. UTF-8; names and texts that are not valid UTF-8
  /// throw an UnHandleException when they are written.
  std::string getText() const;

private:
  struct Impl;
  std::unique_ptr<Impl> _impl;
};

/// Bounds on what is read from text of unknown origin.
struct JsonLimits {
  std::size_t maxTextSize = std::size_t(1) << 30;  ///< bytes
  std::size_t maxDepth = 64;                       ///< sections within sections
};

/// Reads what JsonOArchive wrote. Text over a limit, malformed text, and names that occur twice in a section
/// throw an UnHandleException before anything can be read.
class VEXO_API JsonIArchive final : public BaseIArchive {
public:
  explicit JsonIArchive(const std::string& text, const JsonLimits& limits = {});
  ~JsonIArchive() override;

  void openSection(const std::string& name) override;
  void closeSection() override;
  std::vector<std::string> getNames() const override;
  bool has(const std::string& name) const override;
  void read(const std::string& name, bool& value) const override;
  void read(const std::string& name, std::uint32_t& value) const override;
  void read(const std::string& name, std::int32_t& value) const override;
  void read(const std::string& name, std::uint64_t& value) const override;
  void read(const std::string& name, float& value) const override;
  void read(const std::string& name, double& value) const override;
  void read(const std::string& name, std::string& value) const override;
  void readBytes(const std::string& name, std::vector<unsigned char>& value) const override;

private:
  struct Impl;
  std::unique_ptr<Impl> _impl;
};

}  // namespace vexo
