#include "display/system_keys.h"

#include <cstdio>
#include <string>

namespace lumiquilt {

namespace {

constexpr size_t kValueBuffer = 1024;

}  // namespace

bool GetKeyValue(SystemKeys& keys, uint32_t keyRoot, const std::string& keyName,
                 const std::string& subKeyName, std::string& keyValue) {
    uint32_t handle = 0;
    uint32_t type = 0;
    std::string bytes;
    // A value longer than the buffer fails as the read itself would.
    if (!keys.openKey(keyRoot, keyName, handle) ||
        !keys.queryValue(handle, subKeyName, type, bytes) || bytes.size() > kValueBuffer) {
        keyValue.clear();
        keys.closeKey(handle);
        return false;
    }
    // Text ends with its zero byte; a number's last byte may be one too, and goes
    // the same way.
    if (!bytes.empty() && bytes.back() == '\0') {
        bytes.pop_back();
    }
    if (type == kRegSz) {
        keyValue = bytes;
    } else if (type == kRegDword) {
        // Each byte from the last to the first in hexadecimal, without leading
        // zeros, read back as one hexadecimal number.
        for (auto it = bytes.rbegin(); it != bytes.rend(); ++it) {
            char hex[4];
            std::snprintf(hex, sizeof hex, "%X", static_cast<unsigned char>(*it));
            keyValue += hex;
        }
        const size_t first = keyValue.find_first_not_of('0');
        const std::string digits = first == std::string::npos ? "" : keyValue.substr(first);
        if (digits.size() > 8 ||
            digits.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos) {
            keyValue.clear();
            keys.closeKey(handle);
            return false;
        }
        const auto value =
            static_cast<uint32_t>(digits.empty() ? 0 : std::stoul(digits, nullptr, 16));
        keyValue = std::to_string(static_cast<int32_t>(value));
    }
    keys.closeKey(handle);
    return true;
}

}  // namespace lumiquilt
