#include "gif_test_support.h"

#include <stdexcept>

namespace lumiquilt::testing {

ParsedGif parseGif(const std::string& s) {
    auto u8 = [&s](size_t i) { return static_cast<uint8_t>(s.at(i)); };
    auto u16 = [&](size_t i) { return u8(i) | (u8(i + 1) << 8); };
    ParsedGif g;
    g.signature = s.substr(0, 6);
    g.width = u16(6);
    g.height = u16(8);
    size_t p = 13;
    g.table.assign(s.begin() + 13, s.begin() + 13 + 768);
    p += 768;
    if (u8(p) == 0x21) {
        g.hasControl = true;
        g.transparentIndex = (u8(p + 3) & 1) ? u8(p + 6) : -1;
        p += 8;
    }
    if (u8(p) != 0x2C) {
        throw std::runtime_error("no image separator");
    }
    p += 10;
    const int minimum = u8(p++);
    std::vector<uint8_t> data;
    while (u8(p) != 0) {
        const int n = u8(p);
        g.blockSizes.push_back(n);
        data.insert(data.end(), s.begin() + static_cast<long>(p) + 1,
                    s.begin() + static_cast<long>(p) + 1 + n);
        p += static_cast<size_t>(n) + 1;
    }
    g.endsProperly = p + 2 == s.size() && u8(p) == 0 && u8(p + 1) == 0x3B;

    // A standard decoder: widths grow as the table fills.
    const int clear = 1 << minimum;
    const int end = clear + 1;
    std::vector<std::vector<uint8_t>> dict;
    auto reset = [&] {
        dict.assign(static_cast<size_t>(clear + 2), {});
        for (int i = 0; i < clear; ++i) {
            dict[static_cast<size_t>(i)] = {static_cast<uint8_t>(i)};
        }
    };
    reset();
    int width = minimum + 1;
    size_t bit = 0;
    std::vector<uint8_t> previous;
    bool havePrevious = false;
    while (bit + static_cast<size_t>(width) <= data.size() * 8) {
        int code = 0;
        for (int i = 0; i < width; ++i, ++bit) {
            code |= ((data[bit / 8] >> (bit % 8)) & 1) << i;
        }
        g.codes.push_back(code);
        if (code == clear) {
            reset();
            width = minimum + 1;
            havePrevious = false;
            continue;
        }
        if (code == end) {
            break;
        }
        std::vector<uint8_t> entry;
        if (code < static_cast<int>(dict.size())) {
            entry = dict[static_cast<size_t>(code)];
        } else if (havePrevious && code == static_cast<int>(dict.size())) {
            entry = previous;
            entry.push_back(previous.front());
        } else {
            throw std::runtime_error("bad code " + std::to_string(code));
        }
        g.pixels.insert(g.pixels.end(), entry.begin(), entry.end());
        if (havePrevious && dict.size() < 4096) {
            std::vector<uint8_t> added = previous;
            added.push_back(entry.front());
            dict.push_back(added);
            if (static_cast<int>(dict.size()) == (1 << width) && width < 12) {
                ++width;
            }
        }
        previous = entry;
        havePrevious = true;
    }
    return g;
}

}  // namespace lumiquilt::testing
