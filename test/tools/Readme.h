#pragma once

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "VEXOImage/ImageBufferType.h"

namespace vexo::test {

/// What the README's table promises of a filter.
struct ReadmeFilter {
  std::string function, inputTypes, outputTypes;

  bool hasImage() const { return outputTypes.find("no image") == std::string::npos; }
  bool takesAsOutput(image::eImageBufferType type, image::eImageBufferType input) const {
    return outputTypes.rfind("all seven", 0) == 0 || type == getDefaultOutput(input);
  }
  image::eImageBufferType getDefaultOutput(image::eImageBufferType input) const {
    return outputTypes.find("float32") == std::string::npos ? input : image::eImageBufferType::Real32;
  }
};

/// The rows of the table, by the name of the filter.
inline std::map<std::string, ReadmeFilter> readReadme(const std::string& path) {
  std::map<std::string, ReadmeFilter> filters;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("| `", 0) != 0) continue;
    std::vector<std::string> cells;
    std::istringstream row(line);
    for (std::string cell; std::getline(row, cell, '|');)
      cells.push_back(cell.size() > 2 ? cell.substr(1, cell.size() - 2) : "");
    if (cells.size() != 6) continue;
    const auto firstWord = [](const std::string& text) { return text.substr(1, text.find('`', 1) - 1); };
    filters[firstWord(cells[1])] = {firstWord(cells[2]), cells[4], cells[5]};
  }
  return filters;
}

}  // namespace vexo::test
