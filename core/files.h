#pragma once

#include <string>

namespace lumiquilt {

/// True when the file's date and time can be read; a folder is no file.
bool fileExists(const std::string& name);

/// The full, absolute form of a name, with "." and ".." resolved and links followed
/// where the file exists. An empty name gives an empty text.
std::string expandFileName(const std::string& name);

/// A name is absolute when it starts with "/" (or holds ":" on Windows).
bool isAbsoluteName(const std::string& name);

/// The folder of the running program, ending in "/".
std::string applicationFolder(const char* argv0);

}  // namespace lumiquilt
