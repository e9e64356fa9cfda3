#pragma once

#include <string>

namespace lumiquilt::fuzz {

/// A file name in a private folder that lives as long as the process: in memory
/// (/dev/shm) where the system offers it, so that a million writes cost no disk.
std::string scratchFile(const std::string& name);

/// Writes bytes to a file as they are; reads a whole file.
void writeScratch(const std::string& fileName, const std::string& bytes);
std::string readScratch(const std::string& fileName);

}  // namespace lumiquilt::fuzz
