#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace lumiquilt {

/// Receives an encoder's bytes; returns false when they could not be taken.
using ByteSink = std::function<bool(const uint8_t* bytes, std::size_t count)>;

}  // namespace lumiquilt
