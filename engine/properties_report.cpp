#include "engine/properties_report.h"

#include "core/numbers.h"
#include "engine/measures.h"

namespace lumiquilt {

namespace {

constexpr const char* kCrLf = "\r\n";
constexpr const char* kIgnoreHead = "Ignore image number";

std::string trimmedNumber(double value) {
    std::string text = numberToText(value);
    return text.front() == ' ' ? text.substr(1) : text;
}

}  // namespace

std::string setPropertiesString(const ReportInputs& in) {
    std::string text = kCrLf;
    text += "  First file name =" + in.firstFileName + kCrLf;
    text +=
        "  Number of files found =" + numberToText(static_cast<long long>(in.imageCount)) + kCrLf;

    // The head is looked for in the whole text so far, the file name included.
    for (int i = 0; i < kIgnorableImages; ++i) {
        if (!in.ignored[static_cast<std::size_t>(i)]) {
            continue;
        }
        if (text.find(kIgnoreHead) == std::string::npos) {
            text += std::string("  ") + kIgnoreHead + " =" + std::to_string(i + 1);
        } else {
            text += ", " + std::to_string(i + 1);
        }
    }
    if (text.find(kIgnoreHead) != std::string::npos) {
        text += kCrLf;
    }

    for (int i = 0; i < kMethodCount; ++i) {
        if (in.methodChecked[static_cast<std::size_t>(i)]) {
            text += "  Montage method used =" + std::to_string(i) + " (" +
                    std::string(kMethodCaptions[static_cast<std::size_t>(i)]) + ")" + kCrLf;
        }
    }
    text += "  Increment size =" + trimmedNumber(leadingNumber(in.incrementText)) + kCrLf;
    text += in.autoSmooth != 0 ? "  Smoothing =yes" : "  Smoothing =no ";
    text += kCrLf;

    if (in.addOffsets) {
        if (in.offsetsSame) {
            text += std::string("  Offset display method =Same") + kCrLf;
        }
        if (in.offsetsMin) {
            text += std::string("  Offset display method =Minimum") + kCrLf;
        }
        if (in.offsetsMax) {
            text += std::string("  Offset display method =Maximum") + kCrLf;
        }
        for (int n = 1; n <= in.imageCount; ++n) {
            if (n <= kIgnorableImages && in.ignored[static_cast<std::size_t>(n - 1)]) {
                continue;
            }
            text += "  Image " + std::to_string(n) + " offset X =" +
                    std::to_string(in.imageOffsets[0][static_cast<std::size_t>(n)]) + kCrLf;
            text += "  Image " + std::to_string(n) + " offset Y =" +
                    std::to_string(in.imageOffsets[1][static_cast<std::size_t>(n)]) + kCrLf;
        }
    }
    text += std::string("  Montage made from dominant image numbers:") + kCrLf;
    text += in.usedCaption + kCrLf;
    return text;
}

}  // namespace lumiquilt
