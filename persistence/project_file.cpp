#include "persistence/project_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>

#include "core/numbers.h"
#include "core/program_state.h"
#include "core/runtime_error.h"
#include "core/text.h"
#include "persistence/profile_file.h"

namespace lumiquilt {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kProjectHead = "[project]";
constexpr std::string_view kUsedHeading = "dominant image numbers";

// The text less its last n characters, counting a UTF-8 sequence as one.
std::string withoutLastCharacters(std::string_view text, int n) {
    size_t end = text.size();
    for (int i = 0; i < n; ++i) {
        if (end == 0) {
            throw RuntimeError(kInvalidProcedureCall);
        }
        --end;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
            --end;
        }
    }
    return std::string(text.substr(0, end));
}

std::string readWholeFile(const std::string& name) {
    struct stat info {};
    if (::stat(name.c_str(), &info) != 0) {
        throw RuntimeError(kFileNotFound);
    }
    if (!S_ISREG(info.st_mode)) {
        throw RuntimeError(kPathFileAccessError);
    }
    std::ifstream in(name, std::ios::binary);
    if (!in) {
        throw RuntimeError(kPermissionDenied);
    }
    std::string content(static_cast<size_t>(info.st_size), '\0');
    in.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<size_t>(in.gcount()));
    return content;
}

}  // namespace

std::string projectReadMessage(std::string_view description) {
    return "There is a problem in reading that file.   The error message is '" +
           std::string(description) + "'.   Try another project file.";
}

std::string projectWriteMessage(std::string_view description) {
    return "There is a problem in writing to that file.   The error message is '" +
           std::string(description) +
           "'.   Try another name and make sure the file and disk are not write protected or "
           "full.";
}

std::string proposeProjectName(std::string_view fileNameText) {
    const size_t dot = fileNameText.find('.');
    if (dot == std::string_view::npos) {
        return std::string(fileNameText) + ".mon";
    }
    return std::string(fileNameText.substr(0, dot + 1)) + "mon";
}

std::string companionPictureName(std::string_view projectName) {
    return withoutLastCharacters(projectName, 3) + "qvz";
}

std::string recentProjectItem(std::string_view projectName) {
    return "project " + withoutLastCharacters(projectName, 4);
}

bool isRecentProjectItem(std::string_view text) {
    return text.substr(0, 8) == "project ";
}

std::string projectNameFromRecentItem(std::string_view item) {
    return std::string(item.substr(std::min<size_t>(8, item.size()))) + ".mon";
}

std::string projectFileText(std::string_view propertiesText) {
    std::string text;
    text.reserve(kProjectHead.size() + propertiesText.size() + 2 * kLineEnd.size());
    text += kProjectHead;
    text += kLineEnd;
    text += propertiesText;
    text += kLineEnd;
    return text;
}

std::string readProjectValue(const std::string& projectName, std::string_view key) {
    return trimmed(readProfileString(projectName, kProjectSection, key, "0"));
}

bool listHoldsNumber(std::string_view list, int number) {
    size_t start = 0;
    while (start <= list.size()) {
        size_t comma = list.find(',', start);
        if (comma == std::string_view::npos) {
            comma = list.size();
        }
        const std::string_view item = list.substr(start, comma - start);
        if (isNumber(item) && numberOf(item) == number) {
            return true;
        }
        start = comma + 1;
    }
    return false;
}

void restoreProject(const std::string& projectName, ProjectRestore& target) {
    auto read = [&](std::string_view key) { return readProjectValue(projectName, key); };

    target.setFirstFileName(read("first file name"));

    target.uncheckMethods();
    const int16_t method = toInt16(leadingNumber(read("Montage method used")));
    if (method < 0 || method >= kMethodCount) {
        throw RuntimeError(kSubscriptOutOfRange);
    }
    target.checkMethod(method);

    target.setIncrementText(read("Increment size"));

    // The X of image 1's mark decides alone: a mark at X = 0, or an ignored
    // image 1, reads as a project without offsets.
    if (toLowerUtf8(read("Image 1 offset X")) != "0") {
        target.offsetsOn();
        const int count = target.imageCount();
        for (int n = 1; n <= count; ++n) {
            const std::string image = "Image " + std::to_string(n);
            const double x = leadingNumber(read(image + " offset X"));
            const double y = leadingNumber(read(image + " offset Y"));
            target.placeMark(n, x, y);
        }
        target.marksPlaced();
        // The key keeps the blanks of the report's line; reading trims them anyway.
        const std::string display = toLowerUtf8(read("Offset display method  "));
        if (display == "minimum") {
            target.setOffsetDisplay(OffsetDisplay::minimum);
        } else if (display == "maximum") {
            target.setOffsetDisplay(OffsetDisplay::maximum);
        } else if (display == "same") {
            target.setOffsetDisplay(OffsetDisplay::same);
        }
    } else {
        target.offsetsOff();
    }

    const std::string ignored = toLowerUtf8(read("Ignore image number"));
    const int entries = std::min(kIgnorableImages, target.imageCount());
    for (int i = 0; i < entries; ++i) {
        target.setIgnored(i, listHoldsNumber(ignored, i + 1));
    }
}

ProjectText readProjectText(const std::string& projectName) {
    const std::string content = readWholeFile(projectName);
    ProjectText text;
    size_t found = std::string::npos;
    size_t pos = 0;
    bool first = true;
    while (pos < content.size()) {
        size_t end = content.find_first_of("\r\n", pos);
        size_t next = end;
        if (end == std::string::npos) {
            end = content.size();
            next = end;
        } else if (content[end] == '\r' && end + 1 < content.size() && content[end + 1] == '\n') {
            next = end + 2;
        } else {
            next = end + 1;
        }
        const std::string_view line(content.data() + pos, end - pos);
        pos = next;
        if (first) {
            first = false;
            continue;
        }
        // Only the newly added text can hold a first occurrence, with the heading's
        // length less one of overlap: a search from the start each line would take
        // time by the square of the lines.
        const size_t from = text.propertiesString.size() >= kUsedHeading.size() - 1
                                ? text.propertiesString.size() - (kUsedHeading.size() - 1)
                                : 0;
        text.propertiesString += line;
        text.propertiesString += kLineEnd;
        if (found == std::string::npos) {
            found = text.propertiesString.find(kUsedHeading, from);
        }
        // The heading's own line ends 24 characters behind the heading's start, so
        // the caption starts with the line after it.
        if (found != std::string::npos && found + 25 < text.propertiesString.size()) {
            text.usedCaption += line;
            text.usedCaption += kLineEnd;
        }
    }
    return text;
}

ProjectSave::ProjectSave(std::string projectName)
    : m_projectName(std::move(projectName)), m_companionName(companionPictureName(m_projectName)) {
    checkReplaceable(m_projectName);
    checkReplaceable(m_companionName);
}

ProjectSave::~ProjectSave() {
    discard();
}

void ProjectSave::discard() {
    for (std::string* temporary : {&m_textTemporary, &m_companionTemporary}) {
        if (!temporary->empty()) {
            ::unlink(temporary->c_str());
            temporary->clear();
        }
    }
    m_companionWhole = false;
}

void ProjectSave::writeText(std::string_view propertiesText) {
    if (!m_textTemporary.empty()) {
        ::unlink(m_textTemporary.c_str());
        m_textTemporary.clear();
    }
    m_textTemporary = writeTemporaryBeside(m_projectName, projectFileText(propertiesText));
}

std::string ProjectSave::startCompanion() {
    if (!m_companionTemporary.empty()) {
        ::unlink(m_companionTemporary.c_str());
    }
    m_companionWhole = false;
    m_companionTemporary = temporaryNameBeside(m_companionName);
    return m_companionTemporary;
}

void ProjectSave::finishCompanion() {
    const int fd = ::open(m_companionTemporary.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        throw RuntimeError(kPathFileAccessError);
    }
    struct stat info {};
    const bool written = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && info.st_size > 0;
    const int syncResult = ::fsync(fd);
    const int syncError = errno;
    ::close(fd);
    if (!written) {
        throw RuntimeError(kPathFileAccessError);
    }
    if (syncResult != 0) {
        throw errorFromErrno(syncError);
    }
    // The picture keeps the mode of the one it replaces.
    ::chmod(m_companionTemporary.c_str(), checkReplaceable(m_companionName));
    m_companionWhole = true;
}

void ProjectSave::commit() {
    if (m_textTemporary.empty() || !m_companionWhole) {
        throw RuntimeError(kPathFileAccessError);
    }
    // The companion first, so that a new project file only ever appears with its
    // picture in place: a failure between the two renames leaves the old project
    // (or none) beside the new picture, never a new project without its picture.
    renameOver(m_companionTemporary, m_companionName);
    m_companionTemporary.clear();
    m_companionWhole = false;
    renameOver(m_textTemporary, m_projectName);
    m_textTemporary.clear();
}

}  // namespace lumiquilt
