#include "core/numbers.h"

#include <cfenv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "core/runtime_error.h"
#include "core/text.h"

namespace lumiquilt {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

// Scans [sign] digits [. digits] from pos; returns the end, or pos when no digit stood.
size_t scanDecimal(std::string_view text, size_t pos) {
    size_t i = pos;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        ++i;
    }
    bool digits = false;
    while (i < text.size() && isDigit(text[i])) {
        ++i;
        digits = true;
    }
    if (i < text.size() && text[i] == '.') {
        size_t j = i + 1;
        bool fraction = false;
        while (j < text.size() && isDigit(text[j])) {
            ++j;
            fraction = true;
        }
        if (digits || fraction) {
            i = j;
            digits = true;
        }
    }
    return digits ? i : pos;
}

}  // namespace

double leadingNumber(std::string_view text) {
    size_t start = 0;
    while (start < text.size() && isBlank(text[start])) {
        ++start;
    }
    const size_t end = scanDecimal(text, start);
    if (end == start) {
        return 0.0;
    }
    const std::string number(text.substr(start, end - start));
    return std::strtod(number.c_str(), nullptr);
}

bool isNumber(std::string_view text) {
    size_t first = 0;
    size_t last = text.size();
    while (first < last && isBlank(text[first])) {
        ++first;
    }
    while (last > first && isBlank(text[last - 1])) {
        --last;
    }
    const std::string_view body = text.substr(first, last - first);
    size_t end = scanDecimal(body, 0);
    if (end == 0) {
        return false;
    }
    if (end < body.size() && (body[end] == 'e' || body[end] == 'E')) {
        size_t i = end + 1;
        if (i < body.size() && (body[i] == '+' || body[i] == '-')) {
            ++i;
        }
        const size_t digitsStart = i;
        while (i < body.size() && isDigit(body[i])) {
            ++i;
        }
        if (i == digitsStart) {
            return false;
        }
        end = i;
    }
    return end == body.size();
}

double numberOf(std::string_view text) {
    if (!isNumber(text)) {
        throw RuntimeError(kTypeMismatch);
    }
    const std::string number = trimmed(text);
    return std::strtod(number.c_str(), nullptr);
}

float toSingle(double value) {
    if (std::isnan(value) || std::fabs(value) > std::numeric_limits<float>::max()) {
        throw RuntimeError(kOverflow);
    }
    return static_cast<float>(value);
}

double roundHalfEven(double value) {
    // nearbyint follows the current rounding mode; make sure it is to-nearest-even.
    const int mode = std::fegetround();
    if (mode != FE_TONEAREST) {
        std::fesetround(FE_TONEAREST);
    }
    const double result = std::nearbyint(value);
    if (mode != FE_TONEAREST) {
        std::fesetround(mode);
    }
    return result;
}

int16_t toInt16(double value) {
    const double r = roundHalfEven(value);
    if (!(r >= -32768.0 && r <= 32767.0)) {
        throw RuntimeError(kOverflow);
    }
    return static_cast<int16_t>(r);
}

int32_t toInt32(double value) {
    const double r = roundHalfEven(value);
    if (!(r >= -2147483648.0 && r <= 2147483647.0)) {
        throw RuntimeError(kOverflow);
    }
    return static_cast<int32_t>(r);
}

int16_t checkedInt16(long long value) {
    if (value < std::numeric_limits<int16_t>::min() ||
        value > std::numeric_limits<int16_t>::max()) {
        throw RuntimeError(kOverflow);
    }
    return static_cast<int16_t>(value);
}

std::string numberToText(long long value) {
    std::string text = std::to_string(value);
    return value < 0 ? text : " " + text;
}

std::string numberToText(double value) {
    if (std::isfinite(value) && value == std::trunc(value) && std::fabs(value) < 1e15) {
        return numberToText(static_cast<long long>(value));
    }
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.7g", value);
    std::string text = buffer;
    return value < 0 ? text : " " + text;
}

}  // namespace lumiquilt
