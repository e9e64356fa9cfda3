#include "core/files.h"

#include <filesystem>
#include <system_error>

namespace lumiquilt {

namespace fs = std::filesystem;

bool fileExists(const std::string& name) {
    if (name.empty()) {
        return false;
    }
    std::error_code ec;
    const auto status = fs::status(fs::path(name), ec);
    if (ec || !fs::exists(status) || fs::is_directory(status)) {
        return false;
    }
    [[maybe_unused]] const auto stamp = fs::last_write_time(fs::path(name), ec);
    return !ec;
}

std::string expandFileName(const std::string& name) {
    if (name.empty()) {
        return {};
    }
    std::error_code ec;
    fs::path path = fs::absolute(fs::path(name), ec);
    if (ec) {
        return name;
    }
    fs::path canonical = fs::weakly_canonical(path, ec);
    if (!ec) {
        path = canonical;
    }
    return path.lexically_normal().string();
}

bool isAbsoluteName(const std::string& name) {
#ifdef _WIN32
    return name.find(':') != std::string::npos;
#else
    return !name.empty() && name.front() == '/';
#endif
}

std::string applicationFolder(const char* argv0) {
    std::error_code ec;
    fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    if (ec && argv0 != nullptr) {
        exe = fs::absolute(fs::path(argv0), ec);
    }
    std::string folder = exe.parent_path().string();
    if (folder.empty() || folder.back() != '/') {
        folder += '/';
    }
    return folder;
}

}  // namespace lumiquilt
