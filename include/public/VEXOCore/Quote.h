#pragma once

#include <string>

#include "VEXOCore/Export.h"

namespace vexo {

/// A text of unknown origin, fit for a message of one line: control characters are escaped (\n, \x1b), and
/// from a text of over 200 characters the middle is left out.
VEXO_API std::string cut(const std::string& text);
/// The same, in quotation marks.
VEXO_API std::string quote(const std::string& text);
/// Escapes control characters, of Unicode's second range as well, and leaves all others as they are.
VEXO_API std::string escapeControls(const std::string& text);

}  // namespace vexo
