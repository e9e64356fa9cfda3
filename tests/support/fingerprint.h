#pragma once

#include <cstdint>
#include <string>

namespace lumiquilt::testing {

/// FNV-1a of a file's bytes: a fingerprint that holds what a writer gave once.
inline uint64_t fingerprint(const std::string& bytes) {
    uint64_t hash = 14695981039346656037ull;
    for (const char c : bytes) {
        hash = (hash ^ static_cast<uint8_t>(c)) * 1099511628211ull;
    }
    return hash;
}

}  // namespace lumiquilt::testing
