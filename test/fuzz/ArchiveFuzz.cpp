// Any text as a JSON archive: whatever can be read from it can be written and reads back equal. So can the
// processors and data items that it holds.

#include <vector>

#include "Fuzz.h"
#include "VEXOIPL/VEXOIPLFiltering/Attribute/GaussianAttributes.h"
#include "VEXOIPL/VEXOIPLFiltering/Attribute/MedianAttributes.h"
#include "VEXOIPL/VEXOIPLGlobalMeasure/StatsResult.h"
#include "VEXOProcessing/ProcessorFactory.h"
#include "VEXOSerialization/JsonArchive.h"

namespace vexo::fuzz {
namespace {

/// Everything that the read functions find, one line each.
using Lines = std::vector<std::string>;

/// Reads an item as one type. NaN is equal to NaN, and -0 not to 0, in the text of a value.
template <class T>
bool readAs(const BaseIArchive& archive, const std::string& name, const char* type, T& value, Lines& lines) {
  if (!refusalOf([&] { archive.read(name, value); }).empty()) return false;
  std::string text;
  if constexpr (std::is_same_v<T, std::uint64_t>)
    text = std::to_string(value);
  else
    text = ScalarText<T>::toText(value);
  lines.push_back(name + " " + type + " " + text);
  return true;
}

/// Reads an item in every way, and writes it as what it is.
void copyItem(const BaseIArchive& from, const std::string& name, BaseOArchive& to, Lines& lines) {
  bool truth = false;
  std::uint32_t u32 = 0;
  std::int32_t i32 = 0;
  std::uint64_t u64 = 0;
  float f32 = 0;
  double f64 = 0;
  std::string text;
  std::vector<unsigned char> bytes;
  const bool isTruth = readAs(from, name, "bool", truth, lines);
  readAs(from, name, "uint32", u32, lines);
  const bool isI32 = readAs(from, name, "int32", i32, lines);
  const bool isU64 = readAs(from, name, "uint64", u64, lines);
  readAs(from, name, "float", f32, lines);
  const bool isF64 = readAs(from, name, "double", f64, lines);
  const bool isText = readAs(from, name, "text", text, lines);
  if (refusalOf([&] { from.readBytes(name, bytes); }).empty()) {
    JsonOArchive again;
    again.writeBytes("bytes", bytes);
    lines.push_back(name + " bytes " + again.getText());
  }
  if (isTruth)
    to.write(name, truth);
  else if (isU64)
    to.write(name, u64);
  else if (isI32)
    to.write(name, i32);
  else if (isText)
    to.write(name, text);
  else if (isF64)
    to.write(name, f64);
}

void copySection(BaseIArchive& from, BaseOArchive& to, Lines& lines) {
  for (const std::string& name : from.getNames()) {
    require(from.has(name), "a name is listed that the section has not");
    if (!refusalOf([&] { from.openSection(name); }).empty()) {
      copyItem(from, name, to, lines);
      continue;
    }
    lines.push_back(name + " {");
    to.openSection(name);
    copySection(from, to, lines);
    to.closeSection();
    from.closeSection();
    lines.emplace_back("}");
  }
}

Lines copyAll(const std::string& text, std::string& copy) {
  JsonIArchive from(text);
  JsonOArchive to;
  Lines lines;
  copySection(from, to, lines);
  copy = to.getText();
  return lines;
}

void checkItems(const std::string& text) {
  std::string copy, copyOfCopy;
  const Lines lines = copyAll(text, copy);
  require(lines == copyAll(copy, copyOfCopy), "the items read back otherwise");
  require(copy == copyOfCopy, "the copy of a copy differs");
}

/// `read` and `write` take an archive; whether `read` finds something is told by its exception and answer.
template <class Read, class Write>
void checkObject(const std::string& text, const Read& read, const Write& write) {
  const auto readFrom = [&](const std::string& source) {
    bool found = false;
    JsonIArchive archive(source);
    const std::string refusal = refusalOf([&] { found = read(archive); });
    return found && refusal.empty();
  };
  const auto writeText = [&] {
    JsonOArchive archive;
    write(archive);
    return archive.getText();
  };
  if (!readFrom(text)) return;
  const std::string written = writeText();
  require(readFrom(written), "what was written cannot be read: " + written);
  require(written == writeText(), "what was written reads otherwise: " + written);
}

void checkProcessor(const std::string& text, const std::string& className) {
  const auto processor = processor::ProcessorFactory::createProcessor(className);
  checkObject(
      text, [&](BaseIArchive& archive) { return processor->read(archive).isOk(); },
      [&](BaseOArchive& archive) { processor->write(archive); });
}

template <class Item>
void checkDataItem(const std::string& text) {
  Item item;
  checkObject(
      text,
      [&](BaseIArchive& archive) {
        readDataItem(archive, item);
        return true;
      },
      [&](BaseOArchive& archive) { writeDataItem(archive, item); });
}

}  // namespace
}  // namespace vexo::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vexo;
  using namespace vexo::fuzz;
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::vector<std::string> names;
  if (!refusalOf([&] { names = JsonIArchive(text).getNames(); }).empty()) return 0;
  checkItems(text);
  for (const std::string& name : names) {
    if (processor::ProcessorFactory::isRegistered(name)) checkProcessor(text, name);
    if (name == "Range") checkDataItem<imaproc::attr::Range>(text);
    if (name == "GaussianCoverage") checkDataItem<imaproc::attr::GaussianCoverage>(text);
    if (name == "StatsResult") checkDataItem<imaproc::attr::StatsResult>(text);
  }
  return 0;
}
