#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "VEXOCore/DataItem.h"
#include "VEXOCore/Export.h"

namespace vexo {

/// What reading and writing have in common: the class versions met in the archive.
class VEXO_API BaseArchive {
public:
  virtual ~BaseArchive();
  void registerClassVersion(const std::string& className, std::uint32_t version) {
    _versions[className] = version;
  }
  /// 0 when the class was not registered.
  std::uint32_t getClassVersion(const std::string& className) const;

private:
  std::map<std::string, std::uint32_t> _versions;
};

/// Named items, in sections that may hold sections. Names are unique within their section; a second item of
/// the same name, and closing more sections than were opened, throws an UnHandleException.
class VEXO_API BaseOArchive : public BaseArchive {
public:
  virtual void openSection(const std::string& name) = 0;
  virtual void closeSection() = 0;
  virtual void write(const std::string& name, bool value) = 0;
  virtual void write(const std::string& name, std::uint32_t value) = 0;
  virtual void write(const std::string& name, std::int32_t value) = 0;
  virtual void write(const std::string& name, std::uint64_t value) = 0;
  /// Infinities and NaN are kept.
  virtual void write(const std::string& name, float value) = 0;
  virtual void write(const std::string& name, double value) = 0;
  virtual void write(const std::string& name, const std::string& value) = 0;
  void write(const std::string& name, const char* value) { write(name, std::string(value)); }
  virtual void writeBytes(const std::string& name, const std::vector<unsigned char>& value) = 0;
};

/// The items that a BaseOArchive wrote. A missing item or section, a value of another type or out of the
/// range of the wanted type, and text that is no archive throw an UnHandleException that names the item.
class VEXO_API BaseIArchive : public BaseArchive {
public:
  virtual void openSection(const std::string& name) = 0;
  virtual void closeSection() = 0;
  /// The names of the items and sections in the current section, sorted.
  virtual std::vector<std::string> getNames() const = 0;
  /// True when the current section has an item or a section of that name.
  virtual bool has(const std::string& name) const = 0;
  virtual void read(const std::string& name, bool& value) const = 0;
  virtual void read(const std::string& name, std::uint32_t& value) const = 0;
  virtual void read(const std::string& name, std::int32_t& value) const = 0;
  virtual void read(const std::string& name, std::uint64_t& value) const = 0;
  virtual void read(const std::string& name, float& value) const = 0;
  virtual void read(const std::string& name, double& value) const = 0;
  virtual void read(const std::string& name, std::string& value) const = 0;
  virtual void readBytes(const std::string& name, std::vector<unsigned char>& value) const = 0;
};

/// Opens a section and closes it at the end of the scope. What is opened in between must be closed in
/// between.
template <class Archive>
class ArchiveSectionManager {
public:
  ArchiveSectionManager(Archive& archive, const std::string& name) : _archive(archive) {
    _archive.openSection(name);
  }
  ArchiveSectionManager(const ArchiveSectionManager&) = delete;
  ArchiveSectionManager& operator=(const ArchiveSectionManager&) = delete;
  ~ArchiveSectionManager() { _archive.closeSection(); }

private:
  Archive& _archive;
};

/// A data item as a section named by its key, or as told: "version", its leaves, its nodes.
VEXO_API void writeDataItem(BaseOArchive& archive, const BaseDataItemNode& item);
VEXO_API void writeDataItem(BaseOArchive& archive, const BaseDataItemNode& item,
                            const std::string& sectionName);
/// Reads all leaves and nodes, or throws an UnHandleException (a missing leaf, a value that a leaf refuses, a
/// version greater than that of the item) and leaves the item as it was.
VEXO_API void readDataItem(BaseIArchive& archive, BaseDataItemNode& item);
VEXO_API void readDataItem(BaseIArchive& archive, BaseDataItemNode& item, const std::string& sectionName);

}  // namespace vexo
