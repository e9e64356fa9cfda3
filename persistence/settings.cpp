#include "persistence/settings.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "core/numbers.h"
#include "core/runtime_error.h"
#include "core/text.h"
#include "persistence/profile_file.h"

namespace lumiquilt {

std::string settingsFilePath(const std::string& appPath) {
    if (const char* named = std::getenv("LUMIQUILT_INI"); named != nullptr && *named != '\0') {
        return named;
    }
    if (::access(appPath.c_str(), W_OK) == 0) {
        return appPath + "Lumiquilt.ini";
    }
    std::string base;
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg != nullptr && *xdg == '/') {
        base = xdg;
    } else if (const char* home = std::getenv("HOME"); home != nullptr) {
        base = std::string(home) + "/.config";
    } else {
        base = "/tmp";
    }
    const std::string folder = base + "/lumiquilt";
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    return folder + "/Lumiquilt.ini";
}

std::string Settings::readKey(std::string_view key) const {
    return readProfileString(m_path, kPreferencesSection, key, "0");
}

double Settings::readNumber(std::string_view key) const {
    return leadingNumber(readKey(key));
}

bool Settings::writeKey(std::string_view key, std::string_view value) {
    try {
        writeProfileString(m_path, kPreferencesSection, key, value);
        return true;
    } catch (const RuntimeError& error) {
        if (!m_reportedFailure) {
            std::cerr << "lumiquilt: settings not saved to " << m_path << ": "
                      << error.description() << "\n";
            m_reportedFailure = true;
        }
        return false;
    }
}

void RecentFiles::load(const Settings& settings) {
    for (int i = 0; i < kCount; ++i) {
        std::string item = trimmed(settings.readKey(keyFor(i)));
        m_items[static_cast<size_t>(i)] = item == "0" ? std::string() : item;
    }
}

void RecentFiles::add(std::string_view item, Settings& settings) {
    // Names keep their case, as the file system does; they compare without it.
    const std::string lower = toLowerUtf8(item);
    int k = kCount - 1;
    for (int i = 0; i < kCount; ++i) {
        if (toLowerUtf8(m_items[static_cast<size_t>(i)]) == lower) {
            k = i;
            break;
        }
    }
    for (int i = k; i >= 1; --i) {
        m_items[static_cast<size_t>(i)] = m_items[static_cast<size_t>(i - 1)];
        settings.writeKey(keyFor(i), m_items[static_cast<size_t>(i)]);
    }
    m_items[0] = std::string(item);
    settings.writeKey(keyFor(0), item);
}

bool RecentFiles::forget(std::string_view name, Settings& settings) {
    const std::string lower = toLowerUtf8(name);
    bool any = false;
    for (int i = 0; i < kCount; ++i) {
        if (!lower.empty() && toLowerUtf8(m_items[static_cast<size_t>(i)]) == lower) {
            m_items[static_cast<size_t>(i)].clear();
            settings.writeKey(keyFor(i), "");
            any = true;
        }
    }
    return any;
}

}  // namespace lumiquilt
