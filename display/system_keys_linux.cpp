#include <QStandardPaths>

#include "display/system_keys.h"

namespace lumiquilt {

namespace {

// Linux has no registry. Of the keys the About box asks for, this one store
// answers only where the system-information program is, with the first of the
// desktops' own such programs that is installed.
constexpr const char* kInfoKey = "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO";
constexpr const char* kInfoValue = "PATH";
constexpr const char* kInfoPrograms[] = {"kinfocenter", "hardinfo"};
constexpr uint32_t kInfoHandle = 1;

class LinuxSystemKeys : public SystemKeys {
  public:
    bool openKey(uint32_t root, const std::string& keyName, uint32_t& handle) override {
        if (root != kHkeyLocalMachine || keyName != kInfoKey || infoProgram().empty()) {
            return false;
        }
        handle = kInfoHandle;
        return true;
    }
    bool queryValue(uint32_t handle, const std::string& valueName, uint32_t& type,
                    std::string& bytes) override {
        if (handle != kInfoHandle || valueName != kInfoValue) {
            return false;
        }
        type = kRegSz;
        bytes = infoProgram() + '\0';
        return true;
    }
    void closeKey(uint32_t /*handle*/) override {}

  private:
    static std::string infoProgram() {
        for (const char* name : kInfoPrograms) {
            const QString found = QStandardPaths::findExecutable(name);
            if (!found.isEmpty()) {
                return found.toStdString();
            }
        }
        return {};
    }
};

}  // namespace

std::unique_ptr<SystemKeys> platformSystemKeys() {
    return std::make_unique<LinuxSystemKeys>();
}

}  // namespace lumiquilt
