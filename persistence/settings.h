#pragma once

#include <array>
#include <string>
#include <string_view>

namespace lumiquilt {

/// Where the settings file lives: $LUMIQUILT_INI when set; appPath + "Lumiquilt.ini"
/// when the program's folder is writable; else $XDG_CONFIG_HOME/lumiquilt/Lumiquilt.ini.
std::string settingsFilePath(const std::string& appPath);

/// The "preferences" section of the settings file, read and written key by key.
/// Every missing key reads as "0".
class Settings {
  public:
    explicit Settings(std::string path) : m_path(std::move(path)) {}
    virtual ~Settings() = default;

    const std::string& path() const { return m_path; }

    /// The key's text, or "0".
    virtual std::string readKey(std::string_view key) const;
    /// The leading number of the key's text (0 for none).
    double readNumber(std::string_view key) const;
    /// Writes one key; a failure is reported once on standard error and the old
    /// file stays as it was. Returns false on failure.
    bool writeKey(std::string_view key, std::string_view value);

  private:
    std::string m_path;
    bool m_reportedFailure = false;
};

inline constexpr std::string_view kPreferencesSection = "preferences";

/// The twelve recent-file items, mirrored in keys "recent file 0" to "recent file 11".
class RecentFiles {
  public:
    static constexpr int kCount = 12;

    /// Reads the twelve keys; "0" is an empty entry.
    void load(const Settings& settings);

    /// Puts item at the head; an item already listed (in any case) moves up.
    void add(std::string_view item, Settings& settings);

    /// Empties every entry equal to name, case aside, in place. Returns true if any.
    bool forget(std::string_view name, Settings& settings);

    const std::string& at(int index) const { return m_items[static_cast<size_t>(index)]; }
    const std::array<std::string, kCount>& items() const { return m_items; }

    static std::string keyFor(int index) { return "recent file " + std::to_string(index); }

  private:
    std::array<std::string, kCount> m_items;
};

}  // namespace lumiquilt
