#pragma once

#include <functional>

#include "core/runtime_error.h"

namespace lumiquilt::testing {

/// The number of the RuntimeError that work throws, or 0 when it throws none.
inline int errorOf(const std::function<void()>& work) {
    try {
        work();
        return 0;
    } catch (const RuntimeError& error) {
        return error.number();
    }
}

}  // namespace lumiquilt::testing
