#include <CLI/CLI.hpp>
#include <algorithm>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "Processors.h"
#include "Words.h"

namespace vexo::app {

using processor::BaseAttribute;
using processor::BaseProcessor;
using processor::eAttributeDirection;
using Json = nlohmann::ordered_json;

namespace {

bool holds(const std::string& text, const std::string& lowerWord) {
  return toLower(text).find(lowerWord) != std::string::npos;
}

const char* getKind(const BaseAttribute& attribute) {
  switch (attribute.getDirection()) {
    case eAttributeDirection::In:
      return "input";
    case eAttributeDirection::Out:
      return "output";
    case eAttributeDirection::InOut:
      break;
  }
  return "in-out";
}

Json toJson(const BaseAttribute& attribute) {
  Json json = {{"name", attribute.getName()},
               {"kind", getKind(attribute)},
               {"optional", attribute.isOptional()},
               {"valueType", attribute.getValueTypeName()}};
  if (attribute.hasDefault()) json["default"] = attribute.getText();
  json["toolTip"] = attribute.getToolTip();
  return json;
}

Json toJson(const BaseProcessor& processor) {
  return {{"name", processor.getObjectName()},
          {"typeName", processor.getClassName()},
          {"toolTip", processor.getToolTip()}};
}

/// Columns as wide as their longest cell, the last one as it is.
void printTable(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  for (const auto& row : rows) {
    for (std::size_t i = 0; i + 1 < row.size(); ++i)
      std::cout << std::left << std::setw(static_cast<int>(widths[i] + 2)) << row[i];
    std::cout << row.back() << '\n';
  }
}

}  // namespace

void listCommand(const WordList& words) {
  CLI::App app("List the processors, with their tool tips.", "vexo list");
  std::string word;
  bool all = false, json = false;
  app.add_option("WORD", word, "Only those with this word in name or tool tip, in any case");
  app.add_flag("--all", all, "Also those that work on parts of images");
  app.add_flag("--json", json, "Print JSON");
  if (!parseWords(app, words)) return;

  Json list = Json::array();
  std::vector<std::vector<std::string>> rows;
  for (const auto& processor : createProcessors(all)) {
    const std::string& name = processor->getObjectName();
    if (!holds(name, toLower(word)) && !holds(processor->getToolTip(), toLower(word))) continue;
    list.push_back(toJson(*processor));
    rows.push_back({name, processor->getToolTip()});
  }
  if (json)
    std::cout << list.dump(2) << '\n';
  else
    printTable(rows);
}

void describeCommand(const WordList& words) {
  CLI::App app("Describe a processor and its attributes.", "vexo describe");
  std::string word;
  bool json = false;
  app.add_option("PROCESSOR", word, "Class name; namespace and Lvl1 may be left out")->required();
  app.add_flag("--json", json, "Print JSON");
  if (!parseWords(app, words)) return;

  const auto processor = createProcessor(word);
  if (json) {
    Json description = toJson(*processor);
    description["version"] = processor->getClassVersion();
    description["attributes"] = Json::array();
    for (const auto& attribute : processor->getAttributes())
      description["attributes"].push_back(toJson(*attribute));
    std::cout << description.dump(2) << '\n';
    return;
  }
  std::cout << processor->getObjectName() << ", version " << processor->getClassVersion() << '\n'
            << processor->getToolTip() << "\n\n";
  std::vector<std::vector<std::string>> rows;
  for (const auto& attribute : processor->getAttributes()) {
    const std::string standard = attribute->hasDefault() ? " (default: " + attribute->getText() + ")" : "";
    rows.push_back({attribute->getName(), getKind(*attribute),
                    attribute->isOptional() ? "optional" : "mandatory", attribute->getValueTypeName(),
                    attribute->getToolTip() + standard});
  }
  printTable(rows);
}

}  // namespace vexo::app
