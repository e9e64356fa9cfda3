#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace lumiquilt::testing {

/// Runs work in a child process that may write no file larger than `bytes`, as on a
/// disk that is full, and returns what work returned (0 to 255), or -1 if the child
/// died.
inline int withFullDisk(long bytes, const std::function<int()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN);  // the write then fails with EFBIG instead
        rlimit limit{static_cast<rlim_t>(bytes), static_cast<rlim_t>(bytes)};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::_exit(work() & 0xFF);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace lumiquilt::testing
