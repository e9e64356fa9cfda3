#include "fuzz/scratch.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace lumiquilt::fuzz {

namespace {

class ScratchFolder {
  public:
    ScratchFolder() {
        const char* base = ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : nullptr;
        std::string pattern = (base != nullptr ? std::string(base)
                                               : std::filesystem::temp_directory_path().string()) +
                              "/lumiquilt-fuzz-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no scratch folder");
        }
        m_path = pattern;
    }
    ~ScratchFolder() {
        std::error_code ec;
        std::filesystem::remove_all(m_path, ec);
    }
    const std::string& path() const { return m_path; }

  private:
    std::string m_path;
};

}  // namespace

std::string scratchFile(const std::string& name) {
    static const ScratchFolder folder;
    return folder.path() + "/" + name;
}

void writeScratch(const std::string& fileName, const std::string& bytes) {
    std::ofstream out(fileName, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out) {
        throw std::runtime_error("cannot write " + fileName);
    }
}

std::string readScratch(const std::string& fileName) {
    std::ifstream in(fileName, std::ios::binary);
    std::ostringstream buffer;
    buffer << in.rdbuf();
    return buffer.str();
}

}  // namespace lumiquilt::fuzz
