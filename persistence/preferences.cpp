#include "persistence/preferences.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "core/numbers.h"
#include "core/runtime_error.h"
#include "core/text.h"

namespace lumiquilt {

namespace {

int16_t int16OrZero(double value) {
    try {
        return toInt16(value);
    } catch (const RuntimeError&) {
        return 0;
    }
}

std::string shortestFixed(double value) {
    char buffer[400];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed);
    if (result.ec != std::errc()) {
        throw RuntimeError(kOverflow);
    }
    return std::string(buffer, result.ptr);
}

// A value once it has been a 32-bit float, with the seven significant digits that
// such a float holds, and never an exponent: the field's text must read back as
// its number.
std::string singleText(double value) {
    const float single = toSingle(value);
    if (single == 0) {
        return "0";
    }
    const double x = single;
    const int magnitude = static_cast<int>(std::floor(std::log10(std::fabs(x))));
    const int decimals = std::max(0, 6 - magnitude);
    char buffer[400];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, x);
    std::string text = buffer;
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.') {
            text.pop_back();
        }
    }
    return text;
}

// The setting scaled back up for its key: the fraction is cut off the product
// taken at full precision, which is where 0.29f becomes 28.
std::string cutText(double product) {
    if (!std::isfinite(product)) {
        throw RuntimeError(kOverflow);
    }
    return plainDecimal(std::trunc(product));
}

void checkFactorIndex(int i) {
    if (i < 0 || i >= kSmoothFactorCount) {
        throw RuntimeError(kSubscriptOutOfRange);
    }
}

}  // namespace

void readSettingsBeforeWindows(ProgramState& s, const Settings& settings) {
    s.autoSmooth = int16OrZero(settings.readNumber(prefkey::autoSmooth));
    for (int i = 0; i < kSmoothFactorCount; ++i) {
        const double value = settings.readNumber(kSmoothFactorKeys[static_cast<size_t>(i)]);
        try {
            setFactorFromKey(s, i, value);
        } catch (const RuntimeError&) {
            setFactorFromKey(s, i, 0);
        }
    }
    s.shortcutEnabled = int16OrZero(settings.readNumber(prefkey::shortcut));
    s.rightMouseEnabled = settings.readNumber(prefkey::rightmouse) != 0 ? 1 : 0;
}

SettingsAfterWindows readSettingsAfterWindows(const Settings& settings) {
    SettingsAfterWindows read;
    read.fileName = settings.readKey(prefkey::filename);
    read.incrementText = trimmed(settings.readKey(prefkey::increment));
    read.methodIndex = int16OrZero(settings.readNumber(prefkey::montageMethod));
    read.showUsedWindow = int16OrZero(settings.readNumber(prefkey::originatingImage));
    read.recent.load(settings);
    read.targetColor = readTargetColor(settings);
    return read;
}

double readTargetColor(const Settings& settings) {
    try {
        return toSingle(settings.readNumber(prefkey::targetColor));
    } catch (const RuntimeError&) {
        return 0;
    }
}

void setFactorFromKey(ProgramState& s, int i, double keyValue) {
    checkFactorIndex(i);
    switch (i) {
        case 0:
            s.edgeFactor = toSingle(keyValue / 100);
            break;
        case 1:
            s.focusFactor = toSingle(keyValue / 100);
            break;
        case 2:
            s.diffFactor = toInt16(keyValue);
            break;
        default:
            s.edgefactor2 = toSingle(keyValue / 10);
            break;
    }
}

std::string factorKeyText(const ProgramState& s, int i) {
    checkFactorIndex(i);
    switch (i) {
        case 0:
            return cutText(static_cast<double>(s.edgeFactor) * 100);
        case 1:
            return cutText(static_cast<double>(s.focusFactor) * 100);
        case 2:
            return std::to_string(s.diffFactor);
        default:
            return cutText(static_cast<double>(s.edgefactor2) * 10);
    }
}

std::string factorFieldText(const ProgramState& s, int i) {
    checkFactorIndex(i);
    switch (i) {
        case 0:
            return singleText(100 - static_cast<double>(s.edgeFactor) * 100);
        case 1:
            return singleText(static_cast<double>(s.focusFactor) * 100);
        case 2:
            return singleText(static_cast<double>(s.diffFactor) / 100);
        default:
            return singleText(100 - static_cast<double>(s.edgefactor2) * 10);
    }
}

void setFactorFromField(ProgramState& s, int i, std::string_view text) {
    checkFactorIndex(i);
    switch (i) {
        case 0:
            // This one field reads its leading number: text that is none counts as 0.
            s.edgeFactor = toSingle(1 - leadingNumber(text) / 100);
            break;
        case 1:
            s.focusFactor = toSingle(numberOf(text) / 100);
            break;
        case 2:
            s.diffFactor = toInt16(numberOf(text) * 100);
            break;
        default:
            s.edgefactor2 = toSingle(10 - numberOf(text) / 10);
            break;
    }
}

void resetSmoothing(ProgramState& s) {
    s.autoSmooth = 1;
    s.focusFactor = 0.1f;
    s.edgeFactor = 0.1f;
    s.diffFactor = 100;
    s.edgefactor2 = 4;
}

std::string plainDecimal(double value) {
    if (!std::isfinite(value)) {
        throw RuntimeError(kOverflow);
    }
    return shortestFixed(value == 0 ? 0.0 : value);
}

}  // namespace lumiquilt
