#pragma once

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace lumiquilt::testing {

/// Makes a folder one that no file can be added to or removed from while it lives:
/// no write bits, and, for a user the bits don't stop (root), the file system's
/// immutable flag where it offers one. locked() says whether that worked.
class LockedFolder {
  public:
    explicit LockedFolder(std::string folder) : m_folder(std::move(folder)) {
        namespace fs = std::filesystem;
        fs::permissions(m_folder, fs::perms::owner_read | fs::perms::owner_exec,
                        fs::perm_options::replace);
        m_locked = !takesNewFiles() || (setImmutable(true) && !takesNewFiles());
    }
    ~LockedFolder() { unlock(); }
    LockedFolder(const LockedFolder&) = delete;
    LockedFolder& operator=(const LockedFolder&) = delete;

    bool locked() const { return m_locked; }

    void unlock() {
        if (m_folder.empty()) {
            return;
        }
        setImmutable(false);
        std::filesystem::permissions(m_folder, std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add);
        m_folder.clear();
    }

  private:
    bool takesNewFiles() const {
        const std::string probe = m_folder + "/.probe";
        const int made = ::open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
        if (made < 0) {
            return false;
        }
        ::close(made);
        ::unlink(probe.c_str());
        return true;
    }
    bool setImmutable(bool on) {
        const int fd = ::open(m_folder.c_str(), O_RDONLY | O_DIRECTORY);
        if (fd < 0) {
            return false;
        }
        int flags = 0;
        bool done = ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
        if (done) {
            flags = on ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
            done = ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
        }
        ::close(fd);
        return done;
    }

    std::string m_folder;
    bool m_locked = false;
};

}  // namespace lumiquilt::testing
