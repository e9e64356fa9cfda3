#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace lumiquilt {

/// Blanks (space, tab) trimmed from both ends.
std::string trimmed(std::string_view text);

/// Unicode-aware lower case of a UTF-8 text; bytes that are no valid UTF-8 stay.
std::string toLowerUtf8(std::string_view text);

/// ASCII-only case-insensitive equality, for keys and switches.
bool equalsIgnoreAsciiCase(std::string_view a, std::string_view b);
bool startsWithIgnoreAsciiCase(std::string_view text, std::string_view prefix);

std::string join(const std::vector<std::string>& parts, std::string_view separator);

/// The text cut to at most maxBytes bytes, never in the middle of a UTF-8 character.
std::string cutUtf8(std::string_view text, size_t maxBytes);

}  // namespace lumiquilt
