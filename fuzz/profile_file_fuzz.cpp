// The profile-file reader and writer: any file, one key written, read back.
//
// Input: section, key, value and a second key, one a line, then the file's bytes.
#include <string>
#include <vector>

#include "core/runtime_error.h"
#include "core/text.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/scratch.h"
#include "persistence/profile_file.h"

namespace lumiquilt::fuzz {

namespace {

// Names the program could write: no line break, no NUL; a section name holds no
// "]", a key no "=" and does not start like a section line.
std::string withoutAny(std::string text, std::string_view banned) {
    std::string out;
    for (char c : text) {
        if (banned.find(c) == std::string_view::npos) {
            out += c;
        }
    }
    return out;
}

std::string sectionName(std::string text) {
    return withoutAny(std::move(text), std::string_view("\r\n\0]", 4));
}

std::string keyName(std::string text) {
    std::string key = withoutAny(std::move(text), std::string_view("\r\n\0=", 4));
    const std::string t = trimmed(key);
    if (!t.empty() && t.front() == '[') {
        key.insert(key.find('['), "k");
    }
    return key;
}

// The file cut into lines that keep their "\n" (a last line may have none).
std::vector<std::string> rawLines(const std::string& content) {
    std::vector<std::string> lines;
    size_t pos = 0;
    while (pos < content.size()) {
        const size_t nl = content.find('\n', pos);
        const size_t end = nl == std::string::npos ? content.size() : nl + 1;
        lines.push_back(content.substr(pos, end - pos));
        pos = end;
    }
    return lines;
}

bool isKeyLine(const std::string& line, const std::string& key) {
    const size_t eq = line.find('=');
    return eq != std::string::npos &&
           equalsIgnoreAsciiCase(trimmed(std::string_view(line).substr(0, eq)), trimmed(key));
}

bool endsWithLineEnd(const std::string& line) {
    return !line.empty() && line.back() == '\n';
}

// Every line of before stands in after, in order and byte for byte, but for: one
// line of the key replaced by the new key line, or the key line (and the section
// line before it) added, the line in front of an addition perhaps given a line end.
void expectOtherLinesKept(const std::string& before, const std::string& after,
                          const std::string& section, const std::string& key,
                          const std::string& newLine) {
    const std::vector<std::string> old = rawLines(before);
    const std::vector<std::string> now = rawLines(after);
    const std::string header = "[" + trimmed(section) + "]";
    auto is = [](const std::string& line, const std::string& text) {
        return line == text + "\n" || line == text + "\r\n" || line == text;
    };
    int added = 0;
    int replaced = 0;
    size_t i = 0;
    size_t j = 0;
    while (j < now.size()) {
        if (i < old.size() && old[i] == now[j]) {
            ++i;
            ++j;
        } else if (i < old.size() && !endsWithLineEnd(old[i]) &&
                   (now[j] == old[i] + "\n" || now[j] == old[i] + "\r\n")) {
            ++i;  // the last line got a line end, for what is added behind it
            ++j;
        } else if (i < old.size() && replaced == 0 && added == 0 && isKeyLine(old[i], key) &&
                   is(now[j], newLine)) {
            ++replaced;
            ++i;
            ++j;
        } else if (replaced == 0 && added < 2 && (is(now[j], newLine) || is(now[j], header))) {
            ++added;
            ++j;
        } else {
            FUZZ_EXPECT(false, "line " + std::to_string(j + 1) +
                                   " of the written file is neither an "
                                   "old line nor the key's: \"" +
                                   now[j] + "\"");
        }
    }
    FUZZ_EXPECT(i == old.size(), "the written file lost old line " + std::to_string(i + 1));
    // Nothing replaced or added: the first key line of the section held the value already.
    FUZZ_EXPECT(replaced + added >= 1 || before == after,
                "the key line is missing from the written file");
}

}  // namespace

void profileFileEntry(const uint8_t* data, std::size_t size) {
    FuzzInput in(data, size);
    const std::string section = sectionName(in.upTo('\n'));
    const std::string key = keyName(in.upTo('\n'));
    const std::string value = withoutAny(in.upTo('\n'), std::string_view("\r\n\0", 3));
    const std::string otherKey = keyName(in.upTo('\n'));
    const std::string before = in.rest();

    const std::string path = scratchFile("profile.ini");
    writeScratch(path, before);
    const std::string missing = "\x01missing";
    const std::string otherBefore = readProfileString(path, section, otherKey, missing);
    readProfileString(path, section, key, missing);

    try {
        writeProfileString(path, section, key, value);
    } catch (const RuntimeError& error) {
        FUZZ_EXPECT(false, "a write to a writable folder failed: " + error.description());
    }
    const std::string after = readScratch(path);

    const std::string readBack = readProfileString(path, section, key, missing);
    const std::string expected = cutUtf8(trimmed(value), kProfileValueLimit);
    FUZZ_EXPECT(readBack == expected,
                "key \"" + key + "\" reads back \"" + readBack + "\", not \"" + expected + "\"");
    if (!equalsIgnoreAsciiCase(trimmed(key), trimmed(otherKey))) {
        FUZZ_EXPECT(readProfileString(path, section, otherKey, missing) == otherBefore,
                    "writing \"" + key + "\" changed what \"" + otherKey + "\" reads");
    }
    expectOtherLinesKept(before, after, section, key, trimmed(key) + "=" + value);

    // A second write of the same key changes that one line only.
    writeProfileString(path, section, key, value + "2");
    const std::string again = readScratch(path);
    FUZZ_EXPECT(again.size() == after.size() + 1,
                "a second write of the key changed more than its value");
    FUZZ_EXPECT(readProfileString(path, section, key, missing) ==
                    cutUtf8(trimmed(value + "2"), kProfileValueLimit),
                "the second write does not read back");
}

}  // namespace lumiquilt::fuzz
