#pragma once

#include <QThread>

#include <chrono>
#include <filesystem>
#include <string>

namespace lumiquilt::testing {

/// Waits up to ten seconds for a file that a started program writes; true once it
/// has bytes and its writer has had a moment to finish.
inline bool waitForFile(const std::string& name) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < deadline) {
        std::error_code error;
        const auto size = std::filesystem::file_size(name, error);
        if (!error && size > 0) {
            QThread::msleep(100);
            return true;
        }
        QThread::msleep(20);
    }
    return false;
}

}  // namespace lumiquilt::testing
