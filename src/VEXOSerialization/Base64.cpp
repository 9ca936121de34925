#include "Base64.h"

#include <cstdint>
#include <cstring>

namespace vexo {
namespace {

const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string toBase64(const std::vector<unsigned char>& bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < 3; ++k) group = group << 8 | (k < count ? bytes[i + k] : 0u);
    for (std::size_t k = 0; k < 4; ++k) text += k <= count ? alphabet[group >> (18 - 6 * k) & 63] : '=';
  }
  return text;
}

bool fromBase64(const std::string& text, std::vector<unsigned char>& bytes) {
  bytes.clear();
  if (text.size() % 4 != 0) return false;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t i = 0; i < text.size(); i += 4) {
    std::size_t digits = 4;
    if (i + 4 == text.size())
      while (digits > 2 && text[i + digits - 1] == '=') --digits;
    std::uint32_t group = 0;
    for (std::size_t k = 0; k < digits; ++k) {
      const void* digit = std::memchr(alphabet, text[i + k], 64);
      if (!digit) return false;
      group = group << 6 | static_cast<std::uint32_t>(static_cast<const char*>(digit) - alphabet);
    }
    group <<= 6 * (4 - digits);
    for (std::size_t k = 0; k + 1 < digits; ++k) bytes.push_back(group >> (16 - 8 * k) & 255);
    // Bits of a padded group that belong to no byte must be zero, so that every content has one text only.
    if ((group & ((1u << 8 * (4 - digits)) - 1)) != 0) return false;
  }
  return true;
}

}  // namespace vexo
