#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>

namespace lumiquilt::fuzz {

/// A promise of the code under test that an input broke. The fuzzer reports it as a
/// crash and keeps the input; a replay test reports it as a failure.
class FuzzFailure : public std::logic_error {
  public:
    using std::logic_error::logic_error;
};

/// Fuzz entries: each takes any bytes, runs one piece of the program on them and
/// throws FuzzFailure when a promise is broken. Failures the program reports to the
/// user (its runtime errors) are results, not findings.
void profileFileEntry(const uint8_t* data, std::size_t size);
void commandLineEntry(const uint8_t* data, std::size_t size);
void seriesNameEntry(const uint8_t* data, std::size_t size);
void pictureEntry(const uint8_t* data, std::size_t size);
void gifEncoderEntry(const uint8_t* data, std::size_t size);
void propertiesReportEntry(const uint8_t* data, std::size_t size);

struct FuzzTarget {
    const char* name;  ///< also the folder of its corpus under tests/data/fuzz/
    void (*entry)(const uint8_t* data, std::size_t size);
};

/// Every fuzz target.
std::span<const FuzzTarget> fuzzTargets();

}  // namespace lumiquilt::fuzz
