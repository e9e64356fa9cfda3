#pragma once

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace lumiquilt::testing {

/// Takes write permission off a folder, or gives it back. When this user may write
/// into it all the same (root), the folder is also made immutable where the file
/// system allows it. Returns false when the folder still takes new files.
inline bool setFolderReadOnly(const std::string& folder, bool on) {
    namespace fs = std::filesystem;
    // The mode can't change while the folder is immutable: the flag goes last on
    // and first off.
    if (on) {
        fs::permissions(folder, fs::perms::owner_write, fs::perm_options::remove);
    }
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    if (fd >= 0) {
        int flags = 0;
        if (::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0 && (on || (flags & FS_IMMUTABLE_FL) != 0)) {
            flags = on ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
            ::ioctl(fd, FS_IOC_SETFLAGS, &flags);
        }
        ::close(fd);
    }
    if (!on) {
        fs::permissions(folder, fs::perms::owner_write, fs::perm_options::add);
        return true;
    }
    // Whether a new file can still be made there.
    const std::string probe = folder + "/.probe";
    const int made = ::open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
    if (made >= 0) {
        ::close(made);
        ::unlink(probe.c_str());
        return false;
    }
    return true;
}

}  // namespace lumiquilt::testing
