#include "core/text.h"

#include <wctype.h>
#include <clocale>
#include <cwctype>

namespace lumiquilt {

namespace {

char asciiLower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// Decodes one UTF-8 sequence at pos; returns its length, 0 when it is not valid.
size_t decodeUtf8(std::string_view s, size_t pos, char32_t& out) {
    const auto b0 = static_cast<unsigned char>(s[pos]);
    size_t length = 0;
    char32_t cp = 0;
    if (b0 < 0x80) {
        out = b0;
        return 1;
    } else if ((b0 & 0xE0) == 0xC0) {
        length = 2;
        cp = b0 & 0x1F;
    } else if ((b0 & 0xF0) == 0xE0) {
        length = 3;
        cp = b0 & 0x0F;
    } else if ((b0 & 0xF8) == 0xF0) {
        length = 4;
        cp = b0 & 0x07;
    } else {
        return 0;
    }
    if (pos + length > s.size()) {
        return 0;
    }
    for (size_t i = 1; i < length; ++i) {
        const auto b = static_cast<unsigned char>(s[pos + i]);
        if ((b & 0xC0) != 0x80) {
            return 0;
        }
        cp = (cp << 6) | (b & 0x3F);
    }
    out = cp;
    return length;
}

void encodeUtf8(char32_t cp, std::string& out) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

char32_t lowerCodePoint(char32_t cp) {
    if (cp < 0x80) {
        return static_cast<char32_t>(asciiLower(static_cast<char>(cp)));
    }
#if defined(__linux__)
    // A private UTF-8 locale, so that the program's global locale stays "C".
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(0));
    if (utf8 != static_cast<locale_t>(0)) {
        return static_cast<char32_t>(towlower_l(static_cast<wint_t>(cp), utf8));
    }
#endif
    return static_cast<char32_t>(std::towlower(static_cast<wint_t>(cp)));
}

}  // namespace

std::string trimmed(std::string_view text) {
    size_t first = 0;
    size_t last = text.size();
    while (first < last && (text[first] == ' ' || text[first] == '\t')) {
        ++first;
    }
    while (last > first && (text[last - 1] == ' ' || text[last - 1] == '\t')) {
        --last;
    }
    return std::string(text.substr(first, last - first));
}

std::string toLowerUtf8(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    size_t pos = 0;
    while (pos < text.size()) {
        char32_t cp = 0;
        const size_t length = decodeUtf8(text, pos, cp);
        if (length == 0) {
            out += text[pos];
            ++pos;
            continue;
        }
        encodeUtf8(lowerCodePoint(cp), out);
        pos += length;
    }
    return out;
}

bool equalsIgnoreAsciiCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (size_t i = 0; i < a.size(); ++i) {
        if (asciiLower(a[i]) != asciiLower(b[i])) {
            return false;
        }
    }
    return true;
}

bool startsWithIgnoreAsciiCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() &&
           equalsIgnoreAsciiCase(text.substr(0, prefix.size()), prefix);
}

std::string join(const std::vector<std::string>& parts, std::string_view separator) {
    std::string out;
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) {
            out += separator;
        }
        out += parts[i];
    }
    return out;
}

std::string cutUtf8(std::string_view text, size_t maxBytes) {
    if (text.size() <= maxBytes) {
        return std::string(text);
    }
    size_t end = maxBytes;
    // Step back over continuation bytes so no character is split.
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
        --end;
    }
    return std::string(text.substr(0, end));
}

}  // namespace lumiquilt
