#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace lumiquilt {

inline constexpr uint32_t kHkeyLocalMachine = 0x80000002;
inline constexpr uint32_t kRegSz = 1;
inline constexpr uint32_t kRegDword = 4;

/// The system's key store, as far as the About box reads it: open a key, read one
/// value's type and bytes, close the key. One implementation per platform.
class SystemKeys {
  public:
    virtual ~SystemKeys() = default;
    /// True, with a handle, when the key exists.
    virtual bool openKey(uint32_t root, const std::string& keyName, uint32_t& handle) = 0;
    /// True, with the value's type and its bytes, when the value exists.
    virtual bool queryValue(uint32_t handle, const std::string& valueName, uint32_t& type,
                            std::string& bytes) = 0;
    virtual void closeKey(uint32_t handle) = 0;
};

/// This platform's key store.
std::unique_ptr<SystemKeys> platformSystemKeys();

/// Reads one value of a key into keyValue: text as it stands, a 32-bit number as its
/// decimal text. On failure keyValue is empty and the result false. Every handle
/// that was opened is closed.
bool GetKeyValue(SystemKeys& keys, uint32_t keyRoot, const std::string& keyName,
                 const std::string& subKeyName, std::string& keyValue);

}  // namespace lumiquilt
