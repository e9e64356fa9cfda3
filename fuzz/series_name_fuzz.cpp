// The series-name rules: completing a name, finding its digits, the members'
// names and the loading loop, for any name and any program folder.
//
// Input: a byte for where the loading loop fails, the program folder up to a NUL,
// then the name as the user typed it.
#include <string>

#include "core/files.h"
#include "core/runtime_error.h"
#include "fuzz/fuzz_input.h"
#include "series/series_name.h"

namespace lumiquilt::fuzz {

namespace {

bool allDigits(const std::string& text) {
    for (char c : text) {
        if (c < '0' || c > '9') {
            return false;
        }
    }
    return !text.empty();
}

void expectMember(const SeriesPattern& pattern, int k) {
    const long number = static_cast<long>(k) + pattern.seriesBase;
    std::string name;
    try {
        name = memberName(pattern, k);
    } catch (const RuntimeError& error) {
        FUZZ_EXPECT(error.number() == kOverflow && number > 32767,
                    "member " + std::to_string(k) + " refused: " + error.description());
        return;
    }
    FUZZ_EXPECT(number <= 32767, "member " + std::to_string(k) + " beyond 16 bits has a name");
    const size_t digitsLength = name.size() - pattern.prefix.size() - pattern.suffix.size();
    FUZZ_EXPECT(name.size() >= pattern.prefix.size() + pattern.suffix.size() &&
                    name.compare(0, pattern.prefix.size(), pattern.prefix) == 0 &&
                    name.compare(name.size() - pattern.suffix.size(), std::string::npos,
                                 pattern.suffix) == 0,
                "member " + std::to_string(k) + " lost its prefix or suffix: " + name);
    const std::string digits = name.substr(pattern.prefix.size(), digitsLength);
    FUZZ_EXPECT(allDigits(digits) && std::stol(digits) == number,
                "member " + std::to_string(k) + " has the digits " + digits);
    FUZZ_EXPECT(static_cast<int>(digits.size()) >= pattern.width &&
                    (static_cast<int>(digits.size()) == pattern.width || digits[0] != '0'),
                "member " + std::to_string(k) + " is filled wrongly: " + digits);

    // A member named as the first file starts the same series further on.
    FUZZ_EXPECT(hasDigitBeforeDot(name),
                "member " + std::to_string(k) + " has no digit before its dot");
    const SeriesPattern again = findDigits(name);
    FUZZ_EXPECT(again.prefix == pattern.prefix && again.suffix == pattern.suffix &&
                    again.seriesBase == number - 1,
                "member " + std::to_string(k) + " does not split as the first name did");
}

}  // namespace

void seriesNameEntry(const uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const int failingMember = in.inRange(1, 40);
    const bool invalidPicture = in.flag();
    // The program's folder is always absolute and ends in "/".
    const std::string appPath = "/" + in.upTo('\0') + "/";
    const std::string text = in.rest();

    const std::string name = completeSeriesName(text, appPath);
    const std::string base = isAbsoluteName(text) ? text : appPath + text;
    FUZZ_EXPECT(name == base || (base.find('.') == std::string::npos && name == base + ".bmp"),
                "completing \"" + text + "\" gave \"" + name + "\"");
    FUZZ_EXPECT(firstDot(name) != std::string::npos, "a completed name without a dot");

    if (!hasDigitBeforeDot(name)) {
        return;
    }
    SeriesPattern pattern;
    try {
        pattern = findDigits(name);
    } catch (const RuntimeError& error) {
        FUZZ_EXPECT(error.number() == kOverflow, "digits refused with " + error.description());
        return;
    }
    FUZZ_EXPECT(pattern.width >= 1 &&
                    pattern.prefix.size() + pattern.width + pattern.suffix.size() == name.size(),
                "the split of \"" + name + "\" does not add up");
    FUZZ_EXPECT(
        pattern.suffix.front() == '.' && name.find('.') == pattern.prefix.size() + pattern.width,
        "the suffix does not start at the first dot");
    FUZZ_EXPECT(pattern.seriesBase >= -1, "a negative first number");
    FUZZ_EXPECT(memberName(pattern, 1) == name, "member 1 is not the first name");
    for (int k = 1; k <= kMaxImages + 1; ++k) {
        expectMember(pattern, k);
    }

    // The loading loop over a series whose member failingMember fails.
    int16_t count = 0;
    std::string current;
    int loads = 0;
    const SeriesLoopResult result = loadSeriesLoop(
        pattern,
        [&](int k, const std::string& fileName) {
            ++loads;
            FUZZ_EXPECT(k == loads, "the loop skipped a member");
            FUZZ_EXPECT(fileName == memberName(pattern, k), "the loop loads a wrong name");
            if (k == failingMember) {
                throw RuntimeError(invalidPicture ? kInvalidPicture : kFileNotFound);
            }
        },
        count, current);
    const long lastNumber = static_cast<long>(pattern.seriesBase) + kMaxImages + 1;
    if (failingMember <= kMaxImages) {
        const bool overflowFirst = static_cast<long>(pattern.seriesBase) + failingMember > 32767;
        if (!overflowFirst) {
            FUZZ_EXPECT(count == failingMember - 1 && loads == failingMember,
                        "the loop did not stop at the failing member");
            FUZZ_EXPECT(result.end == (invalidPicture ? SeriesEnd::invalidPicture : SeriesEnd::gap),
                        "the loop ended for the wrong reason");
            FUZZ_EXPECT(current == memberName(pattern, failingMember),
                        "the current name is not the failing member's");
        }
    } else if (lastNumber - 1 <= 32767) {
        FUZZ_EXPECT(count == kMaxImages && result.end == SeriesEnd::limit,
                    "a long series did not stop at the limit");
    }
    if (result.end == SeriesEnd::gap && result.errorNumber == kOverflow) {
        FUZZ_EXPECT(static_cast<long>(pattern.seriesBase) + count + 1 > 32767,
                    "the loop overflowed below 16 bits");
    }
}

}  // namespace lumiquilt::fuzz
