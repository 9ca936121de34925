#include "Words.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <iostream>
#include <numeric>
#include <utility>

#include "VEXOCore/Quote.h"

namespace vexo::app {
namespace {

/// Insertions, deletions and replacements that turn one text into the other.
std::size_t getEditDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t(0));
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

std::vector<std::string> findNearest(const std::string& word, const std::vector<std::string>& valid) {
  // A word that holds the given one comes first: the given one may be the part that the user remembers.
  using Rank = std::pair<bool, std::size_t>;
  std::vector<std::pair<Rank, std::string>> ranked;
  const std::string wanted = toLower(word);
  for (const std::string& candidate : valid) {
    const std::string lower = toLower(candidate);
    ranked.push_back({{lower.find(wanted) == std::string::npos, getEditDistance(wanted, lower)}, candidate});
  }
  std::sort(ranked.begin(), ranked.end());
  std::vector<std::string> nearest;
  for (const auto& [rank, candidate] : ranked)
    if (nearest.size() < 3 && rank.first == ranked.front().first.first &&
        rank.second <= ranked.front().first.second + 1)
      nearest.push_back(candidate);
  return nearest;
}

void refuseUnknown(const CLI::App& app) {
  for (const std::string& word : app.remaining()) {
    if (word == "--") continue;
    if (word[0] != '-') throw UsageError("unexpected word " + quote(word));
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options())
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    refuseWord("option", word.substr(0, word.find('=')), names);
  }
}

/// CLI11 takes "--quiet=3" for three times "--quiet".
void checkFlags(const CLI::App& app, const std::vector<std::string>& words) {
  for (const std::string& word : words) {
    const std::size_t equals = word.find('=');
    if (word.rfind("--", 0) != 0 || equals == std::string::npos) continue;
    const CLI::Option* option = app.get_option_no_throw(word.substr(0, equals));
    if (option && option->get_items_expected_max() == 0)
      throw UsageError(option->get_name() + " takes no value, not " + quote(word.substr(equals + 1)));
  }
}

void checkValues(const CLI::App& app) {
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_items_expected_max() == 0) continue;  // a flag
    if (option->count() > 1) throw UsageError(option->get_name() + " is given twice");
    for (const std::string& value : option->results())
      if (value.rfind("--", 0) == 0 && app.get_option_no_throw(value))
        throw UsageError(option->get_name() + ": its value is missing before " + value);
  }
}

}  // namespace

std::string toLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

void refuseWord(const std::string& what, const std::string& word, const std::vector<std::string>& valid) {
  std::string message = "unknown " + what + " " + quote(word);
  const char* separator = "; nearest: ";
  for (const std::string& name : findNearest(word, valid)) {
    message += separator + name;
    separator = ", ";
  }
  throw UsageError(message);
}

bool parseWords(CLI::App& app, const std::vector<std::string>& words) {
  std::vector<std::string> parsed;
  for (const std::string& word : words) {
    const bool noValue = word.rfind("--", 0) == 0 && word.find('=') == word.size() - 1;
    parsed.push_back(noValue ? word.substr(0, word.size() - 1) : word);
    // CLI11 would take the next word for the value of "--Name=".
    if (noValue) parsed.emplace_back();
  }
  checkFlags(app, words);
  std::reverse(parsed.begin(), parsed.end());  // the order that CLI11 wants
  app.allow_extras();
  std::string failure;
  try {
    app.parse(parsed);
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return false;
  } catch (const CLI::ParseError& error) {
    failure = error.what();
  }
  checkValues(app);
  refuseUnknown(app);
  if (!failure.empty()) throw UsageError(failure);
  return true;
}

void flushOutput() {
  if (!std::cout.flush()) throw std::runtime_error("cannot write to standard output");
}

}  // namespace vexo::app
