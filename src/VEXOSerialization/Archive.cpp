#include "VEXOSerialization/Archive.h"

#include <utility>

#include "VEXOCore/Log.h"
#include "VEXOSerialization/SerializationMessages.h"

namespace vexo {

BaseArchive::~BaseArchive() = default;

std::uint32_t BaseArchive::getClassVersion(const std::string& className) const {
  const auto found = _versions.find(className);
  return found == _versions.end() ? 0 : found->second;
}

namespace {

const char* const versionName = "version";

/// Writes, or reads as text, a leaf whose values archives store natively; false when it holds another type.
template <class T>
bool writeNative(BaseOArchive& archive, const BaseDataItemLeaf& leaf) {
  const auto* typed = dynamic_cast<const DataItemLeaf<T>*>(&leaf);
  if (typed) archive.write(leaf.getKey(), typed->getValue());
  return typed != nullptr;
}

template <class T>
bool readNative(const BaseIArchive& archive, const BaseDataItemLeaf& leaf, std::string& text) {
  if (!dynamic_cast<const DataItemLeaf<T>*>(&leaf)) return false;
  T value;
  archive.read(leaf.getKey(), value);
  text = ScalarText<T>::toText(value);
  return true;
}

template <class... T>
struct NativeTypes {
  static void write(BaseOArchive& archive, const BaseDataItemLeaf& leaf) {
    if (!(writeNative<T>(archive, leaf) || ...)) archive.write(leaf.getKey(), leaf.getText());
  }
  static std::string read(const BaseIArchive& archive, const BaseDataItemLeaf& leaf) {
    std::string text;
    if (!(readNative<T>(archive, leaf, text) || ...)) archive.read(leaf.getKey(), text);
    return text;
  }
};
using LeafValues = NativeTypes<bool, std::uint32_t, std::int32_t, float, double>;

/// Leaves with texts to set. Texts, as only setText lets a leaf refuse a value.
using LeafTexts = std::vector<std::pair<BaseDataItemLeaf*, std::string>>;

void collect(BaseIArchive& archive, BaseDataItemNode& item, const std::string& sectionName,
             LeafTexts& texts) {
  const ArchiveSectionManager<BaseIArchive> section(archive, sectionName);
  std::uint32_t version = 0;
  archive.read(versionName, version);
  if (version > item.getVersion())
    raiseMessage(VEXO_HERE, eSerializationMessage::NewerVersion, item.getKey(), version, item.getVersion());
  for (std::size_t i = 0; i < item.getLeafCount(); ++i)
    texts.emplace_back(&item.getLeaf(i), LeafValues::read(archive, item.getLeaf(i)));
  for (std::size_t i = 0; i < item.getNodeCount(); ++i)
    collect(archive, item.getNode(i), item.getNode(i).getKey(), texts);
}

}  // namespace

void writeDataItem(BaseOArchive& archive, const BaseDataItemNode& item) {
  writeDataItem(archive, item, item.getKey());
}

void writeDataItem(BaseOArchive& archive, const BaseDataItemNode& item, const std::string& sectionName) {
  const ArchiveSectionManager<BaseOArchive> section(archive, sectionName);
  archive.write(versionName, item.getVersion());
  for (std::size_t i = 0; i < item.getLeafCount(); ++i) LeafValues::write(archive, item.getLeaf(i));
  for (std::size_t i = 0; i < item.getNodeCount(); ++i) writeDataItem(archive, item.getNode(i));
}

void readDataItem(BaseIArchive& archive, BaseDataItemNode& item) {
  readDataItem(archive, item, item.getKey());
}

void readDataItem(BaseIArchive& archive, BaseDataItemNode& item, const std::string& sectionName) {
  LeafTexts texts;
  collect(archive, item, sectionName, texts);
  LeafTexts olds;
  for (const auto& [leaf, text] : texts) {
    olds.emplace_back(leaf, leaf->getText());
    const BoolResult set = leaf->setText(text);
    if (set) continue;
    olds.pop_back();  // a leaf that refuses a value keeps its old one
    for (const auto& [changed, old] : olds) changed->setText(old);
    SerializationModule::raise(VEXO_HERE, item.getKey() + ": " + leaf->getKey() + ": " + set.getMessage());
  }
}

}  // namespace vexo
