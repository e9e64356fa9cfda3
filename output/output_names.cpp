#include "output/output_names.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "core/numbers.h"
#include "core/runtime_error.h"
#include "core/text.h"

namespace lumiquilt {

std::string beforeFirstDot(const std::string& name) {
    const size_t dot = name.find('.');
    return dot == std::string::npos ? name : name.substr(0, dot);
}

std::string proposedSaveName(const std::string& caption, const std::string& suffix) {
    std::string c = caption;
    if (const size_t at = c.find(" -- "); at != std::string::npos) {
        c = c.substr(at + 4);
    } else if (const size_t from = c.find(" image from "); from != std::string::npos) {
        c = c.substr(from + 12);
    }
    return beforeFirstDot(c) + suffix;
}

SaveRoad saveRoadFor(const std::string& fileName) {
    const std::string lower = toLowerUtf8(fileName);
    const std::string last = lower.size() >= 3 ? lower.substr(lower.size() - 3) : lower;
    if (last == "jpg") {
        return SaveRoad::jpeg;
    }
    if (last == "gif") {
        return SaveRoad::gif;
    }
    return SaveRoad::bmp;
}

std::string privateTemporaryFolder() {
    std::error_code ec;
    const std::filesystem::path base = std::filesystem::temp_directory_path(ec);
    const std::string folder =
        (ec ? std::string("/tmp") : base.string()) + "/lumiquilt-" + std::to_string(::getuid());
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        throw errorFromErrno(errno);
    }
    // Someone else's folder of that name, or one open to others, is not ours to use.
    struct stat info {};
    if (::lstat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode) ||
        info.st_uid != ::getuid() || (info.st_mode & 077) != 0) {
        throw RuntimeError(kPermissionDenied);
    }
    return folder + "/";
}

std::string temporaryPictureName(const std::string& folder, const std::function<double()>& random) {
    std::string name = folder + "qvztemp";
    for (int i = 0; i < 3; ++i) {
        name += static_cast<char>(toInt16(random() * 25 + 97));
    }
    return name + ".bmp";
}

}  // namespace lumiquilt
