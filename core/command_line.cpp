#include "core/command_line.h"

#include "core/numbers.h"
#include "core/text.h"

namespace lumiquilt {

namespace {

bool isIncrementSwitch(const std::string& argument) {
    return argument.size() >= 2 && argument[0] == '-' && (argument[1] == 'i' || argument[1] == 'I');
}

// "resolution800x600" or "-RESOLUTION800X600": the width and the height.
std::optional<std::pair<double, double>> resolutionOf(const std::string& argument) {
    std::string_view text = argument;
    if (!text.empty() && text.front() == '-') {
        text.remove_prefix(1);
    }
    constexpr std::string_view kWord = "resolution";
    if (!startsWithIgnoreAsciiCase(text, kWord)) {
        return std::nullopt;
    }
    const std::string_view rest = text.substr(kWord.size());
    // The "x" must stand at least one character behind the word.
    for (size_t i = 1; i < rest.size(); ++i) {
        if (rest[i] == 'x' || rest[i] == 'X') {
            return std::make_pair(leadingNumber(rest.substr(0, i)),
                                  leadingNumber(rest.substr(i + 1)));
        }
    }
    return std::nullopt;
}

}  // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments) {
    std::vector<std::string> args;
    for (const auto& a : arguments) {
        args.push_back(a);
    }
    CommandLine result;
    std::string joined = join(args, " ");
    if (joined.size() >= 2 && joined.front() == '"' && joined.back() == '"') {
        args.front().erase(0, 1);
        args.back().pop_back();
        joined = join(args, " ");
    }
    result.line = joined;

    size_t firstSwitch = args.size();
    for (size_t i = 0; i < args.size(); ++i) {
        const bool isSwitch = (!args[i].empty() && args[i][0] == '-') || resolutionOf(args[i]);
        if (isSwitch) {
            firstSwitch = i;
            break;
        }
    }
    result.filePart =
        trimmed(join(std::vector<std::string>(args.begin(), args.begin() + firstSwitch), " "));

    for (size_t i = 0; i < args.size(); ++i) {
        if (isIncrementSwitch(args[i])) {
            std::vector<std::string> rest(args.begin() + i + 1, args.end());
            std::string text = args[i].substr(2);
            if (!rest.empty()) {
                text += " " + join(rest, " ");
            }
            result.incrementText = text;
            break;
        }
    }
    for (const auto& a : args) {
        if (auto size = resolutionOf(a)) {
            result.resolution = size;
            break;
        }
    }
    return result;
}

}  // namespace lumiquilt
