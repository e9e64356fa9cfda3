#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>

namespace lumiquilt {

/// Longest value a read gives back; longer values are cut.
inline constexpr size_t kProfileValueLimit = 254;

/// Reads key in section of a "[section]" / "key=value" file. Section and key match
/// without regard to ASCII case or to blanks around them. Gives the value behind
/// the first "=", blanks trimmed, cut at a NUL and to 254 bytes, or defaultValue
/// when the file, the section or the key is missing.
std::string readProfileString(const std::string& path, std::string_view section,
                              std::string_view key, std::string_view defaultValue);

/// Writes key=value: replaces the first matching key of the section in place, or
/// adds the key at the end of its section, or the section at the end of the file.
/// Every other line is kept byte for byte. The file is written beside the target
/// and renamed over it, so a failure leaves the old file whole.
/// Throws RuntimeError (70, 75, 76, 61) when the file can't be written.
void writeProfileString(const std::string& path, std::string_view section, std::string_view key,
                        std::string_view value);

/// Replaces target by content through a temporary file beside it; throws
/// RuntimeError on failure and leaves target as it was.
void writeFileAtomically(const std::string& target, std::string_view content);

/// The two halves of writeFileAtomically, for files that must change together.
/// writeTemporaryBeside writes content, synced, to a new file beside target (with
/// target's mode) and returns its name; it refuses a read-only target (error 70)
/// and leaves nothing behind on failure. renameOver puts it in target's place, or
/// removes it and throws.
std::string writeTemporaryBeside(const std::string& target, std::string_view content);
void renameOver(const std::string& temporary, const std::string& target);

/// A fresh name beside target for a temporary file.
std::string temporaryNameBeside(const std::string& target);

/// Throws error 70 when target exists read-only (write permission off, for root
/// too); otherwise gives the mode a file in its place should have.
mode_t checkReplaceable(const std::string& target);

}  // namespace lumiquilt
