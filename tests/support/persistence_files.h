#pragma once

#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace lumiquilt::testing {

/// A folder of its own for each test, removed afterwards even when the test took
/// its write permission away.
class ScratchFolderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string(info->test_suite_name()) + "_" + info->name();
        std::replace(name.begin(), name.end(), '/', '_');  // parameterised names
        m_dir = std::filesystem::temp_directory_path() /
                ("lumiquilt_" + std::to_string(::getpid()) + "_" + name);
        std::filesystem::remove_all(m_dir);
        std::filesystem::create_directories(m_dir);
    }
    void TearDown() override {
        std::filesystem::permissions(m_dir, std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add);
        std::filesystem::remove_all(m_dir);
    }
    std::string path(const std::string& name) const { return (m_dir / name).string(); }
    /// The names in the folder, sorted.
    std::vector<std::string> entries() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_dir)) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::filesystem::path m_dir;
};

inline std::string fileBytes(const std::string& name) {
    std::ifstream in(name, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

inline void putFile(const std::string& name, const std::string& bytes) {
    std::ofstream(name, std::ios::binary) << bytes;
}

}  // namespace lumiquilt::testing
