// The report builder: any state a run can leave, with any texts.
//
// Input: count, ignored images, methods, smoothing and offset flags, the offsets,
// then the first file name, the increment text and the used caption, each ended
// by a NUL.
#include <cmath>
#include <string>

#include "core/numbers.h"
#include "engine/measures.h"
#include "engine/properties_report.h"
#include "fuzz/fuzz_input.h"

namespace lumiquilt::fuzz {

namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

void propertiesReportEntry(const uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    ReportInputs r;
    r.imageCount = in.inRange(0, 30);
    const uint16_t ignored = in.word();
    for (int i = 0; i < kIgnorableImages; ++i) {
        r.ignored[static_cast<size_t>(i)] = ((ignored >> i) & 1) != 0;
    }
    const uint8_t methods = in.byte();
    for (int i = 0; i < kMethodCount; ++i) {
        r.methodChecked[static_cast<size_t>(i)] = ((methods >> i) & 1) != 0;
    }
    const uint8_t flags = in.byte();
    r.autoSmooth = flags & 1;
    r.addOffsets = (flags & 2) != 0;
    r.offsetsMin = (flags & 4) != 0;
    r.offsetsMax = (flags & 8) != 0;
    r.offsetsSame = (flags & 16) != 0;
    for (int n = 1; n <= r.imageCount; ++n) {
        r.imageOffsets[0][static_cast<size_t>(n)] = static_cast<int16_t>(in.word());
        r.imageOffsets[1][static_cast<size_t>(n)] = static_cast<int16_t>(in.word());
    }
    r.firstFileName = in.upTo('\0');
    r.incrementText = in.upTo('\0');
    r.usedCaption = in.upTo('\0');

    const std::string text = setPropertiesString(r);
    FUZZ_EXPECT(setPropertiesString(r) == text, "the same state gave two reports");

    const std::string head =
        "\r\n  First file name =" + r.firstFileName + "\r\n" +
        "  Number of files found =" + numberToText(static_cast<long long>(r.imageCount)) + "\r\n";
    FUZZ_EXPECT(text.compare(0, head.size(), head) == 0,
                "the report does not open with name and count");
    const std::string tail =
        "  Montage made from dominant image numbers:\r\n" + r.usedCaption + "\r\n";
    FUZZ_EXPECT(text.size() >= head.size() + tail.size() &&
                    text.compare(text.size() - tail.size(), tail.size(), tail) == 0,
                "the report does not end with the used caption");

    for (int i = 0; i < kMethodCount; ++i) {
        if (r.methodChecked[static_cast<size_t>(i)]) {
            FUZZ_EXPECT(
                contains(text, "  Montage method used =" + std::to_string(i) + " (" +
                                   std::string(kMethodCaptions[static_cast<size_t>(i)]) + ")\r\n"),
                "method " + std::to_string(i) + " is checked but not reported");
        }
    }

    // The increment reads back as the number it was, to the seven digits shown.
    const std::string incrementHead = "  Increment size =";
    const size_t at = text.find(incrementHead, head.size());
    FUZZ_EXPECT(at != std::string::npos, "no increment line");
    const size_t valueStart = at + incrementHead.size();
    const std::string shown = text.substr(valueStart, text.find("\r\n", valueStart) - valueStart);
    FUZZ_EXPECT(!shown.empty() && shown.front() != ' ', "the increment is not trimmed: " + shown);
    const double value = leadingNumber(r.incrementText);
    const double readBack = std::strtod(shown.c_str(), nullptr);
    FUZZ_EXPECT(std::isinf(value) ? readBack == value
                                  : std::fabs(readBack - value) <= 1e-6 * std::fabs(value) + 1e-300,
                "the increment " + shown + " does not read back as " + r.incrementText);

    FUZZ_EXPECT(contains(text, r.autoSmooth != 0 ? "  Smoothing =yes\r\n" : "  Smoothing =no \r\n"),
                "no smoothing line");
    for (int n = 1; n <= r.imageCount; ++n) {
        const bool skipped = n <= kIgnorableImages && r.ignored[static_cast<size_t>(n - 1)];
        const std::string line = "  Image " + std::to_string(n) + " offset X =" +
                                 std::to_string(r.imageOffsets[0][static_cast<size_t>(n)]) + "\r\n";
        if (r.addOffsets && !skipped) {
            FUZZ_EXPECT(contains(text, line), "image " + std::to_string(n) + " lacks its offsets");
        }
    }
    if (!r.addOffsets) {
        FUZZ_EXPECT(
            !contains(text.substr(0, text.size() - tail.size()).substr(head.size()), " offset X ="),
            "offsets reported while they are off");
    }
}

}  // namespace lumiquilt::fuzz
