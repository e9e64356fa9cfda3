// The command-line grammar: any arguments.
//
// Input: the arguments, separated by NUL bytes.
#include <cmath>
#include <string>
#include <vector>

#include "core/command_line.h"
#include "core/text.h"
#include "fuzz/fuzz_input.h"

namespace lumiquilt::fuzz {

void commandLineEntry(const uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    std::vector<std::string> arguments;
    while (!in.empty()) {
        arguments.push_back(in.upTo('\0'));
    }
    const CommandLine parsed = parseCommandLine(arguments);

    const std::string joined = join(arguments, " ");
    const bool quoted = joined.size() >= 2 && joined.front() == '"' && joined.back() == '"';
    FUZZ_EXPECT(parsed.line == (quoted ? joined.substr(1, joined.size() - 2) : joined),
                "the line is not the arguments joined, one pair of quotes taken off");

    FUZZ_EXPECT(parsed.filePart == trimmed(parsed.filePart), "the file part is not trimmed");
    FUZZ_EXPECT(trimmed(parsed.line).compare(0, parsed.filePart.size(), parsed.filePart) == 0,
                "the file part does not open the line");

    if (parsed.incrementText) {
        const std::string& text = *parsed.incrementText;
        FUZZ_EXPECT(parsed.line.size() >= text.size() + 2,
                    "the increment text is longer than the line");
        const std::string before = parsed.line.substr(parsed.line.size() - text.size() - 2);
        FUZZ_EXPECT(before.compare(0, 2, "-i") == 0 || before.compare(0, 2, "-I") == 0,
                    "the increment text does not follow a -i at the end of the line");
        FUZZ_EXPECT(parsed.line.compare(parsed.line.size() - text.size(), text.size(), text) == 0,
                    "the increment text is not the end of the line");
    } else {
        // Arguments the quotes can't touch show every switch plainly.
        for (size_t i = 1; i + 1 < arguments.size(); ++i) {
            FUZZ_EXPECT(arguments[i].size() < 2 || arguments[i][0] != '-' ||
                            (arguments[i][1] != 'i' && arguments[i][1] != 'I'),
                        "a -i switch was overlooked");
        }
    }

    if (parsed.resolution) {
        FUZZ_EXPECT(!std::isnan(parsed.resolution->first) && !std::isnan(parsed.resolution->second),
                    "a resolution that is no number");
        std::string lower;
        for (char c : parsed.line) {
            lower += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
        }
        FUZZ_EXPECT(lower.find("resolution") != std::string::npos,
                    "a resolution without the word in the line");
    }
}

}  // namespace lumiquilt::fuzz
