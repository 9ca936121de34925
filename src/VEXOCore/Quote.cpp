#include "VEXOCore/Quote.h"

namespace vexo {
namespace {

constexpr std::size_t longest = 200, keptAtEnd = 60;

/// False within a character of UTF-8.
bool isStart(char c) {
  return (static_cast<unsigned char>(c) & 0xc0) != 0x80;
}

void appendEscape(unsigned char byte, std::string& text) {
  constexpr char digits[] = "0123456789abcdef";
  switch (byte) {
    case '\n':
      text += "\\n";
      break;
    case '\r':
      text += "\\r";
      break;
    case '\t':
      text += "\\t";
      break;
    default:
      text += {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
  }
}

}  // namespace

std::string escapeControls(const std::string& text) {
  std::string escaped;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    // U+0080 to U+009F, which terminals obey, too.
    const bool second = byte == 0xc2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xa0;
    if (second)
      appendEscape(static_cast<unsigned char>(text[++i]), escaped);
    else if (byte < 0x20 || byte == 0x7f)
      appendEscape(byte, escaped);
    else
      escaped += text[i];
  }
  return escaped;
}

std::string cut(const std::string& text) {
  constexpr char gap[] = "...";
  constexpr std::size_t keptAtStart = longest - keptAtEnd - (sizeof gap - 1);
  if (text.size() <= longest) return escapeControls(text);
  std::size_t end = keptAtStart, begin = text.size() - keptAtEnd;
  while (end > 0 && !isStart(text[end])) --end;
  while (begin < text.size() && !isStart(text[begin])) ++begin;
  return escapeControls(text.substr(0, end) + gap + text.substr(begin));
}

std::string quote(const std::string& text) {
  return "'" + cut(text) + "'";
}

}  // namespace vexo
