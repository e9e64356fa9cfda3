#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace lumiquilt {

/// Highest image number a series can hold; slot 0 holds none.
inline constexpr int kMaxImages = 30;

/// A relative name is taken from appPath, and a name without "." gets ".bmp".
std::string completeSeriesName(std::string text, const std::string& appPath);

/// Position (0-based) of the first "." of the whole text, path included; npos if none.
size_t firstDot(const std::string& name);

/// True when the character just before the first dot is a digit.
bool hasDigitBeforeDot(const std::string& name);

/// The split of a first name around the run of digits that ends at its first dot.
struct SeriesPattern {
    std::string prefix;      ///< the text before the digits
    std::string suffix;      ///< from the dot to the end, the dot included
    int width = 0;           ///< digits of the first name, leading zeros counted
    int16_t seriesBase = 0;  ///< value of the digits minus 1: image k is k + seriesBase

    bool operator==(const SeriesPattern&) const = default;
};

/// Largest first number that a series can start from.
inline constexpr long kLargestFirstNumber = 32767;

/// Splits a completed name that has a digit before its first dot. Throws
/// RuntimeError 6 when the first number is larger than kLargestFirstNumber.
SeriesPattern findDigits(const std::string& name);

/// The file name of image k (1-based): the number k + seriesBase, filled with zeros
/// on the left up to the first name's width. Throws RuntimeError 6 when the number
/// leaves 16 bits.
std::string memberName(const SeriesPattern& pattern, int imageNumber);

/// Why the loading loop ended.
enum class SeriesEnd {
    gap,             ///< a member could not be loaded: the normal end of a series
    invalidPicture,  ///< a member exists but is no picture (error 481)
    limit,           ///< a 31st member was found
};

struct SeriesLoopResult {
    SeriesEnd end = SeriesEnd::gap;
    int errorNumber = 0;  ///< the failure that ended the loop
};

/// Loads image k from fileName, or throws RuntimeError.
using MemberLoader = std::function<void(int imageNumber, const std::string& fileName)>;

/// The loading loop shared by Create Image and Load Image Files: counts imageCount
/// up from 0, in place, until a member fails to load or the limit is passed; it
/// ends at the number of images loaded. currentFileName follows the member being
/// loaded.
SeriesLoopResult loadSeriesLoop(const SeriesPattern& pattern, const MemberLoader& load,
                                int16_t& imageCount, std::string& currentFileName);

// Messages of the series road.
std::string noDigitMessageCreateImage();
std::string noDigitMessageLoad();
inline constexpr const char* kNoDigitTitle = "Rename the file and try again";
inline constexpr const char* kFileMissingMessage = "So very sorry, but I can't find that file.";
inline constexpr const char* kFileMissingTitle = "roll the dice again";
std::string tooManyPicturesMessage();
inline constexpr const char* kTooManyPicturesTitle = "No wuckas mate";
inline constexpr const char* kNumberTooLargeMessage =
    "The number in the file name is too large: a series can start from a number of at most "
    "32767.";

}  // namespace lumiquilt
