#include "series/series_name.h"

#include "core/files.h"
#include "core/numbers.h"
#include "core/runtime_error.h"

namespace lumiquilt {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

std::string completeSeriesName(std::string text, const std::string& appPath) {
    for (;;) {
        if (!isAbsoluteName(text)) {
            text = appPath + text;
        }
        if (firstDot(text) != std::string::npos) {
            return text;
        }
        text += ".bmp";
    }
}

size_t firstDot(const std::string& name) {
    return name.find('.');
}

bool hasDigitBeforeDot(const std::string& name) {
    const size_t dot = firstDot(name);
    return dot != std::string::npos && dot > 0 && isDigit(name[dot - 1]);
}

SeriesPattern findDigits(const std::string& name) {
    const size_t dot = firstDot(name);
    size_t first = dot - 1;
    while (first > 0 && isDigit(name[first - 1])) {
        --first;
    }
    SeriesPattern pattern;
    pattern.prefix = name.substr(0, first);
    pattern.suffix = name.substr(dot);
    pattern.width = static_cast<int>(dot - first);
    long value = 0;
    for (size_t i = first; i < dot; ++i) {
        value = value * 10 + (name[i] - '0');
        if (value > kLargestFirstNumber) {
            throw RuntimeError(kOverflow);
        }
    }
    pattern.seriesBase = static_cast<int16_t>(value - 1);
    return pattern;
}

std::string memberName(const SeriesPattern& pattern, int imageNumber) {
    const int16_t n = checkedInt16(static_cast<long long>(imageNumber) + pattern.seriesBase);
    std::string digits = std::to_string(n);
    if (static_cast<int>(digits.size()) < pattern.width) {
        digits.insert(0, static_cast<size_t>(pattern.width) - digits.size(), '0');
    }
    return pattern.prefix + digits + pattern.suffix;
}

SeriesLoopResult loadSeriesLoop(const SeriesPattern& pattern, const MemberLoader& load,
                                int16_t& imageCount, std::string& currentFileName) {
    SeriesLoopResult result;
    imageCount = 0;
    for (;;) {
        ++imageCount;
        if (imageCount > kMaxImages) {
            --imageCount;
            result.end = SeriesEnd::limit;
            return result;
        }
        try {
            currentFileName = memberName(pattern, imageCount);
            load(imageCount, currentFileName);
        } catch (const RuntimeError& error) {
            --imageCount;
            result.errorNumber = error.number();
            result.end =
                error.number() == kInvalidPicture ? SeriesEnd::invalidPicture : SeriesEnd::gap;
            return result;
        }
    }
}

std::string noDigitMessageCreateImage() {
    return "You must have a number as the last letter in the file name,  eg "
           "c:\\thisdirectory\\myfile1.bmp, or c:\\myotherfile6";
}

std::string noDigitMessageLoad() {
    return "You must have a number as the last letter in the file name,  eg c:\\myfile1.bmp, or "
           "c:\\myotherfile6";
}

std::string tooManyPicturesMessage() {
    return "I can only cope with " + numberToText(static_cast<long long>(kMaxImages)) +
           " pictures, so I will use the first ones.";
}

}  // namespace lumiquilt
