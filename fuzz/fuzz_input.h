#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/fuzz_entries.h"

namespace lumiquilt::fuzz {

/// Takes an input apart front to back. Once the bytes run out every read gives
/// zero or an empty text, so that any input, however short, is a valid one.
class FuzzInput {
  public:
    FuzzInput(const uint8_t* data, std::size_t size)
        : m_bytes(reinterpret_cast<const char*>(data), size) {}

    uint8_t byte() {
        if (m_bytes.empty()) {
            return 0;
        }
        const auto b = static_cast<uint8_t>(m_bytes.front());
        m_bytes.remove_prefix(1);
        return b;
    }

    /// A 16-bit value, low byte first.
    uint16_t word() {
        const uint16_t low = byte();
        return static_cast<uint16_t>(low | (byte() << 8));
    }

    /// A value from low to high, both included.
    int inRange(int low, int high) {
        const int span = high - low + 1;
        const int raw = span > 256 ? word() : byte();
        return low + raw % span;
    }

    bool flag() { return (byte() & 1) != 0; }

    /// The text up to the next separator (which is taken away), or to the end.
    std::string upTo(char separator) {
        const std::size_t end = m_bytes.find(separator);
        std::string text(m_bytes.substr(0, end));
        m_bytes.remove_prefix(end == std::string_view::npos ? m_bytes.size() : end + 1);
        return text;
    }

    /// Whatever is left.
    std::string rest() {
        std::string text(m_bytes);
        m_bytes = {};
        return text;
    }

    bool empty() const { return m_bytes.empty(); }

  private:
    std::string_view m_bytes;
};

}  // namespace lumiquilt::fuzz

/// Throws FuzzFailure with the message when the condition does not hold. The message
/// is made only then: inside a loop over pixels that is most of the run's time.
#define FUZZ_EXPECT(condition, message)                    \
    do {                                                   \
        if (!(condition)) {                                \
            throw ::lumiquilt::fuzz::FuzzFailure(message); \
        }                                                  \
    } while (false)
