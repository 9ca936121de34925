#pragma once

#include <string>
#include <vector>

namespace vexo {

/// Bytes as text of the alphabet A-Z a-z 0-9 + / in groups of four, the last one padded with '='.
std::string toBase64(const std::vector<unsigned char>& bytes);
/// False when the text is none that toBase64 gives; the bytes are then unspecified.
bool fromBase64(const std::string& text, std::vector<unsigned char>& bytes);

}  // namespace vexo
