#include "persistence/profile_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <random>
#include <vector>

#include "core/runtime_error.h"
#include "core/text.h"

namespace lumiquilt {

namespace {

struct Line {
    std::string text;  // without its line end
    std::string end;   // "\n", "\r\n" or "" for a last line without one
};

std::vector<Line> splitLines(const std::string& content) {
    std::vector<Line> lines;
    size_t pos = 0;
    while (pos < content.size()) {
        const size_t nl = content.find('\n', pos);
        if (nl == std::string::npos) {
            lines.push_back({content.substr(pos), ""});
            break;
        }
        Line line{content.substr(pos, nl - pos), "\n"};
        if (!line.text.empty() && line.text.back() == '\r') {
            line.text.pop_back();
            line.end = "\r\n";
        }
        lines.push_back(std::move(line));
        pos = nl + 1;
    }
    return lines;
}

// Gives a last line the line end that lets a line be added behind it. A line that
// ends in a carriage return gets only the line feed: the two make its line end, as
// the reader already took that return to be.
void endLastLine(Line& line, const std::string& lineEnd) {
    if (!line.end.empty()) {
        return;
    }
    if (!line.text.empty() && line.text.back() == '\r') {
        line.text.pop_back();
        line.end = "\r\n";
    } else {
        line.end = lineEnd;
    }
}

bool readWholeFile(const std::string& path, std::string& content) {
    // Only a plain file: a pipe or a device in its place would never end.
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) {
        return false;
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    content.resize(static_cast<size_t>(info.st_size));
    in.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<size_t>(in.gcount()));
    return true;
}

std::string_view trimView(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
        text.remove_suffix(1);
    }
    return text;
}

// The section name of a "[name]" line, or nothing. Views, not copies: a line may
// be megabytes long.
bool sectionOf(std::string_view line, std::string_view& name) {
    const std::string_view t = trimView(line);
    if (t.size() < 2 || t.front() != '[') {
        return false;
    }
    const size_t close = t.find(']');
    if (close == std::string_view::npos) {
        return false;
    }
    name = trimView(t.substr(1, close - 1));
    return true;
}

bool keyMatches(std::string_view line, std::string_view key, std::string_view* value) {
    const size_t eq = line.find('=');
    if (eq == std::string_view::npos) {
        return false;
    }
    if (!equalsIgnoreAsciiCase(trimView(line.substr(0, eq)), trimView(key))) {
        return false;
    }
    if (value != nullptr) {
        *value = trimView(line.substr(eq + 1));
    }
    return true;
}

}  // namespace

std::string readProfileString(const std::string& path, std::string_view section,
                              std::string_view key, std::string_view defaultValue) {
    std::string content;
    if (!readWholeFile(path, content)) {
        return std::string(defaultValue);
    }
    bool inSection = false;
    size_t pos = 0;
    while (pos < content.size()) {
        size_t end = content.find('\n', pos);
        if (end == std::string::npos) {
            end = content.size();
        }
        std::string_view line(content.data() + pos, end - pos);
        pos = end + 1;
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        std::string_view name;
        if (sectionOf(line, name)) {
            inSection = equalsIgnoreAsciiCase(name, trimView(section));
            continue;
        }
        std::string_view value;
        if (inSection && keyMatches(line, key, &value)) {
            value = value.substr(0, value.find('\0'));
            return cutUtf8(trimmed(value), kProfileValueLimit);
        }
    }
    return std::string(defaultValue);
}

void writeProfileString(const std::string& path, std::string_view section, std::string_view key,
                        std::string_view value) {
    std::string content;
    readWholeFile(path, content);
    std::vector<Line> lines = splitLines(content);
    const std::string newLine = std::string(trimmed(key)) + "=" + std::string(value);

    // The first line end of the file is kept for the lines we add.
    std::string lineEnd = "\n";
    for (const Line& line : lines) {
        if (!line.end.empty()) {
            lineEnd = line.end;
            break;
        }
    }

    int sectionStart = -1;
    int sectionLast = -1;  // last non-empty line of the section
    int keyLine = -1;
    for (size_t i = 0; i < lines.size(); ++i) {
        std::string_view name;
        if (sectionOf(lines[i].text, name)) {
            if (sectionStart >= 0) {
                break;
            }
            if (equalsIgnoreAsciiCase(name, trimmed(section))) {
                sectionStart = static_cast<int>(i);
                sectionLast = static_cast<int>(i);
            }
            continue;
        }
        if (sectionStart < 0) {
            continue;
        }
        if (!trimmed(lines[i].text).empty()) {
            sectionLast = static_cast<int>(i);
        }
        if (keyMatches(lines[i].text, key, nullptr)) {
            keyLine = static_cast<int>(i);
            break;
        }
    }

    if (keyLine >= 0) {
        lines[keyLine].text = newLine;
    } else if (sectionStart >= 0) {
        endLastLine(lines[sectionLast], lineEnd);
        lines.insert(lines.begin() + sectionLast + 1, Line{newLine, lineEnd});
    } else {
        if (!lines.empty()) {
            endLastLine(lines.back(), lineEnd);
        }
        lines.push_back(Line{"[" + std::string(trimmed(section)) + "]", lineEnd});
        lines.push_back(Line{newLine, lineEnd});
    }

    std::string out;
    for (const Line& line : lines) {
        out += line.text;
        out += line.end;
    }
    writeFileAtomically(path, out);
}

void writeFileAtomically(const std::string& target, std::string_view content) {
    renameOver(writeTemporaryBeside(target, content), target);
}

std::string temporaryNameBeside(const std::string& target) {
    static std::mt19937 generator{std::random_device{}()};
    std::uniform_int_distribution<int> letter('a', 'z');
    std::string name = target + ".tmp-";
    for (int i = 0; i < 6; ++i) {
        name += static_cast<char>(letter(generator));
    }
    return name;
}

mode_t checkReplaceable(const std::string& target) {
    struct stat info {};
    if (::stat(target.c_str(), &info) != 0) {
        return 0644;
    }
    // Renaming over a read-only file would succeed, even for root: honour the
    // user's lock as a read-only attribute.
    if (::access(target.c_str(), W_OK) != 0 || (info.st_mode & 0222) == 0) {
        throw RuntimeError(kPermissionDenied);
    }
    return info.st_mode & 07777;
}

std::string writeTemporaryBeside(const std::string& target, std::string_view content) {
    const mode_t mode = checkReplaceable(target);
    const std::string temporary = temporaryNameBeside(target);
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd < 0) {
        // Creating a file fails with "no such entry" only when its folder is missing.
        throw errno == ENOENT ? RuntimeError(kPathNotFound) : errorFromErrno(errno);
    }
    size_t written = 0;
    while (written < content.size()) {
        const ssize_t n = ::write(fd, content.data() + written, content.size() - written);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            const int err = errno;
            ::close(fd);
            ::unlink(temporary.c_str());
            throw errorFromErrno(err);
        }
        written += static_cast<size_t>(n);
    }
    const int syncResult = ::fsync(fd);
    const int syncError = errno;
    if (::close(fd) != 0 || syncResult != 0) {
        const int err = syncResult != 0 ? syncError : errno;
        ::unlink(temporary.c_str());
        throw errorFromErrno(err);
    }
    return temporary;
}

void renameOver(const std::string& temporary, const std::string& target) {
    if (::rename(temporary.c_str(), target.c_str()) != 0) {
        const int err = errno;
        ::unlink(temporary.c_str());
        throw errorFromErrno(err);
    }
}

}  // namespace lumiquilt
