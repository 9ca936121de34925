#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <system_error>

#include "Commands.h"
#include "ImageFiles.h"
#include "Processors.h"
#include "Settings.h"
#include "VEXOCore/Quote.h"
#include "VEXOSerialization/JsonArchive.h"
#include "Watch.h"
#include "Words.h"

namespace vexo::app {

using processor::AttributeColl;
using processor::BaseAttribute;
using processor::BaseImageAttribute;
using processor::BaseProcessor;
using Json = nlohmann::ordered_json;

namespace {

/// Values of attributes as they are given, by name.
using ValueWords = std::map<std::string, std::string>;

void addAttributes(CLI::App& app, const AttributeColl& attributes, ValueWords& values) {
  for (const auto& attribute : attributes) {
    const std::string& name = attribute->getName();
    std::string toolTip = attribute->getToolTip();
    if (attribute->hasDefault()) toolTip += " (default: " + attribute->getText() + ")";
    app.add_option_function<std::string>(
           "--" + name, [&values, name](const std::string& word) { values[name] = word; }, toolTip)
        ->type_name(attribute->getValueTypeName())
        ->group("Attributes");
  }
}

/// The value itself, or what the file holds that it names.
std::string resolveValue(const std::string& attributeName, const std::string& word) {
  if (word.empty() || word[0] != '@') return word;
  std::ifstream file(word.substr(1), std::ios::binary);
  file.peek();  // tells a folder from a file
  if (!file.is_open() || file.bad())
    throw std::runtime_error(attributeName + ": cannot read " + quote(word.substr(1)) + ": " +
                             std::generic_category().message(errno));
  std::string text(std::istreambuf_iterator<char>(file), {});
  const char* const blanks = " \t\r\n";
  text.erase(text.find_last_not_of(blanks) + 1);
  return text.erase(0, text.find_first_not_of(blanks));
}

void setValue(const boost::shared_ptr<BaseAttribute>& attribute, const std::string& word,
              ImageFiles& images) {
  const std::string& name = attribute->getName();
  if (const auto image = boost::dynamic_pointer_cast<BaseImageAttribute>(attribute))
    return images.add(image, word);
  if (!attribute->isInput()) throw UsageError("--" + name + ": the run prints it, it takes no value");
  if (const BoolResult set = attribute->setText(resolveValue(name, word)); !set)
    throw UsageError("--" + name + ": " + set.getMessage());
}

void setValues(const AttributeColl& attributes, const ValueWords& values, ImageFiles& images) {
  // A word that is off goes before a value that is refused, whichever comes first.
  std::exception_ptr refusal;
  for (const auto& attribute : attributes) {
    const auto found = values.find(attribute->getName());
    if (found == values.end()) continue;
    try {
      setValue(attribute, found->second, images);
    } catch (const UsageError&) {
      throw;
    } catch (...) {
      if (!refusal) refusal = std::current_exception();
    }
  }
  if (refusal) std::rethrow_exception(refusal);
}

/// The image outputs of a processor: those that every run has, and those that are set.
std::vector<const BaseImageAttribute*> getOutputImages(const BaseProcessor& processor) {
  std::vector<const BaseImageAttribute*> outputs;
  for (const auto& attribute : processor.getAttributes()) {
    const auto* image = dynamic_cast<const BaseImageAttribute*>(attribute.get());
    if (image && image->isOutput() && !image->getInfo().isWorkImage() &&
        (!image->isOptional() || image->isSet()))
      outputs.push_back(image);
  }
  return outputs;
}

/// A run whose whole result would be lost is refused.
void checkHasUse(const BaseProcessor& processor, const ImageFiles& images) {
  const auto outputs = getOutputImages(processor);
  const auto& attributes = processor.getAttributes();
  const bool printsSomething = std::any_of(attributes.begin(), attributes.end(), [](const auto& attribute) {
    return attribute->getDirection() == processor::eAttributeDirection::Out &&
           !dynamic_cast<const BaseImageAttribute*>(attribute.get());
  });
  if (!outputs.empty() && !images.haveOutput() && !printsSomething)
    throw std::runtime_error(processor.getObjectName() + ": no path is given for the output " +
                             outputs.front()->getName());
}

/// The choices of a processor, as --explain prints them.
Json toJson(const processor::ChoiceColl& choices) {
  Json json = Json::array();
  for (const auto& [child, reason] : choices) json.push_back({{"child", child}, {"reason", reason}});
  return json;
}

void printPlan(const BaseProcessor& processor, const Settings& settings) {
  const bool asJson = settings.isJson();
  Json json = Json::object();
  for (const BaseImageAttribute* output : getOutputImages(processor)) {
    const auto [g, type] = processor.describeOutput(*output);
    const std::string typeName = image::toString(type);
    json[output->getName()] = {{"x", g.x}, {"y", g.y}, {"z", g.z},
                               {"c", g.c}, {"t", g.t}, {"type", typeName}};
    if (!asJson) std::cout << output->getName() << ": " << toString(g) << ' ' << typeName << '\n';
  }
  if (settings.isExplained()) {
    const processor::ChoiceColl choices = processor.explain();
    json["explain"] = toJson(choices);
    for (const auto& [child, reason] : choices)
      if (!asJson) std::cout << "explain: " << child << ": " << reason << '\n';
  }
  if (asJson) std::cout << json.dump(2) << '\n';
}

void printResults(const BaseProcessor& processor, const Settings& settings) {
  JsonOArchive archive;
  for (const auto& attribute : processor.getAttributes())
    if (attribute->isOutput() && attribute->isSet() &&
        !dynamic_cast<const BaseImageAttribute*>(attribute.get()))
      attribute->write(archive);
  Json json = Json::parse(archive.getText());
  if (settings.isExplained()) json["explain"] = toJson(processor.explain());
  if (!json.empty()) std::cout << json.dump(2) << '\n';
}

void execute(const boost::shared_ptr<BaseProcessor>& processor, const Settings& settings,
             ImageFiles& images) {
  if (!settings.isDryRun()) checkHasUse(*processor, images);
  settings.forceInstructionSet();
  images.setUnreadInputs();
  processor->checkCall();
  images.createOutputs(*processor);
  processor->checkCall();
  images.checkOutputs(*processor);
  if (settings.isDryRun()) return printPlan(*processor, settings);

  watchSignals();
  images.readInputs();
  throwIfCancelled();
  runWatched(processor, !settings.isQuiet());
  // First what can be printed: when that fails the files stay as they were.
  printResults(*processor, settings);
  flushOutput();
  try {
    images.writeOutputs(getCancelFlag());
  } catch (...) {
    throwIfCancelled();
    throw;
  }
}

}  // namespace

void runCommand(const WordList& words) {
  CLI::App app("Run a processor on images.", "vexo run");
  std::string name;
  app.add_option("PROCESSOR", name, "Class name; namespace and Lvl1 may be left out")->required();
  Settings settings;
  settings.addOptions(app);
  ValueWords values;
  boost::shared_ptr<BaseProcessor> processor;
  // The name comes first, because it tells which options there are.
  const std::string first = words.empty() ? "" : words.front();
  if (first.empty() || (first[0] == '-' && first != "--help" && first != "-h"))
    throw UsageError("the word after 'run' must be the name of a processor");
  if (first[0] != '-') {
    processor = createProcessor(first);
    addAttributes(app, processor->getAttributes(), values);
  }
  if (!parseWords(app, words)) return;

  settings.check();
  ImageFiles images;
  setValues(processor->getAttributes(), values, images);
  execute(processor, settings, images);
}

}  // namespace vexo::app
