#include "output/gif_encoder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "core/numbers.h"
#include "core/runtime_error.h"
#include "persistence/profile_file.h"

namespace lumiquilt {

namespace {

constexpr int kClearCode = 256;
constexpr int kEndCode = 257;
constexpr int kFirstFreeCode = 258;
constexpr int kCodeBits = 9;
constexpr int kDictionaryLimit = 253;
constexpr uint8_t kLevels[5] = {0, 64, 128, 192, 255};

// The level index nearest to each 8-bit value; ties go to the lower level.
std::array<uint8_t, 256> nearestLevel() {
    std::array<uint8_t, 256> table{};
    for (int v = 0; v < 256; ++v) {
        int best = 0;
        for (int i = 1; i < 5; ++i) {
            if (std::abs(v - kLevels[i]) < std::abs(v - kLevels[best])) {
                best = i;
            }
        }
        table[static_cast<size_t>(v)] = static_cast<uint8_t>(best);
    }
    return table;
}

// The dictionary of one row as a trie: the code of a string and one more pixel
// give the code of the longer string. A generation stamp empties it in no time; the
// table is wiped for real only when the stamp runs out, so that a slot of four bytes
// keeps the whole table in a core's cache.
class Dictionary {
  public:
    void clear() {
        if (++m_generation == 0) {
            std::fill(m_slots.begin(), m_slots.end(), Slot{});
            m_generation = 1;
        }
        m_entries = 0;
    }
    int entries() const { return m_entries; }
    // The code of (string with code `prefix`) + pixel, or -1.
    int find(int prefix, uint8_t pixel) const {
        const Slot& s = m_slots[slotOf(prefix, pixel)];
        return s.generation == m_generation ? s.code : -1;
    }
    // Counts an entry; a string of one pixel is counted but can never be looked up.
    void add(int prefix, uint8_t pixel) {
        const int code = kFirstFreeCode + m_entries;
        ++m_entries;
        if (prefix >= 0) {
            Slot& s = m_slots[slotOf(prefix, pixel)];
            s.generation = m_generation;
            s.code = static_cast<uint16_t>(code);
        }
    }

  private:
    struct Slot {
        uint16_t generation = 0;
        uint16_t code = 0;
    };
    // Prefix codes are pixels (0 to 255) or entries (258 to 510).
    static std::size_t slotOf(int prefix, uint8_t pixel) {
        return static_cast<std::size_t>(prefix) * 256 + pixel;
    }
    std::vector<Slot> m_slots = std::vector<Slot>(512 * 256);
    uint16_t m_generation = 1;
    int m_entries = 0;
};

}  // namespace

// Packs codes least significant bit first into sub-blocks of at most 255 bytes,
// whole bytes at a time.
class GIF::BitPacker {
  public:
    explicit BitPacker(const ByteSink& sink) : m_sink(sink) {}

    void writeBits(int code, int bitCount) {
        m_bits |= (static_cast<uint64_t>(code) & ((uint64_t{1} << bitCount) - 1)) << m_bitCount;
        m_bitCount += bitCount;
        while (m_bitCount >= 8) {
            putByte(static_cast<uint8_t>(m_bits & 0xFF));
            m_bits >>= 8;
            m_bitCount -= 8;
        }
    }

    // The last block: its count byte and data, however few, the last byte partly
    // filled.
    void finish() {
        if (m_bitCount > 0) {
            putByte(static_cast<uint8_t>(m_bits & 0xFF));
            m_bits = 0;
            m_bitCount = 0;
        }
        flush(static_cast<size_t>(m_block[0]) + 1);
    }

    bool ok() const { return m_ok; }

  private:
    // A full block goes out only when the next byte needs room.
    void putByte(uint8_t byte) {
        if (m_block[0] == 255) {
            flush(256);
            m_block[0] = 0;
        }
        m_block[++m_block[0]] = byte;
    }

    void flush(size_t bytes) { m_ok = m_ok && m_sink(m_block.data(), bytes); }

    const ByteSink& m_sink;
    std::array<uint8_t, 256> m_block{};
    uint64_t m_bits = 0;
    int m_bitCount = 0;
    bool m_ok = true;
};

std::array<uint8_t, 768> halftonePalette() {
    std::array<uint8_t, 768> table{};
    for (int b = 0; b < 5; ++b) {
        for (int g = 0; g < 5; ++g) {
            for (int r = 0; r < 5; ++r) {
                const size_t i = static_cast<size_t>(25 * b + 5 * g + r) * 3;
                table[i] = kLevels[r];
                table[i + 1] = kLevels[g];
                table[i + 2] = kLevels[b];
            }
        }
    }
    return table;
}

IndexedPicture mapToHalftone(const PictureView& picture) {
    static const std::array<uint8_t, 256> level = nearestLevel();
    IndexedPicture out;
    out.width = picture.width;
    out.height = picture.height;
    out.colourTable = halftonePalette();
    out.indices.resize(static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height));
    // Red, green and blue offsets within a pixel, and the pixel's size.
    int r = 2, g = 1, b = 0, step = 3;
    if (picture.format == PixelFormat::rgb24) {
        r = 0;
        b = 2;
    } else if (picture.format == PixelFormat::bgrx32) {
        step = 4;
    }
    for (int y = 0; y < picture.height; ++y) {
        const uint8_t* src = picture.bits + static_cast<std::ptrdiff_t>(y) * picture.stride;
        uint8_t* dst =
            out.indices.data() + static_cast<size_t>(y) * static_cast<size_t>(picture.width);
        for (int x = 0; x < picture.width; ++x, src += step) {
            dst[x] = static_cast<uint8_t>(25 * level[src[b]] + 5 * level[src[g]] + level[src[r]]);
        }
    }
    return out;
}

bool GIF::encode(const IndexedPicture& picture, const ByteSink& sink, bool transparent,
                 uint32_t transparentColor) {
    if (m_busy) {
        return false;
    }
    m_busy = true;
    struct Release {
        bool& busy;
        ~Release() { busy = false; }
    } release{m_busy};

    const int width = picture.width;
    const int height = picture.height;
    if (width < 1 || height < 1 || width > 65535 || height > 65535) {
        throw RuntimeError(kInvalidProcedureCall);
    }
    auto little = [](std::vector<uint8_t>& out, int value) {
        out.push_back(static_cast<uint8_t>(value & 0xFF));
        out.push_back(static_cast<uint8_t>((value >> 8) & 0xFF));
    };

    std::vector<uint8_t> head;
    const char* signature = transparent ? "GIF89a" : "GIF87a";
    head.insert(head.end(), signature, signature + 6);
    little(head, width);
    little(head, height);
    head.push_back(0xF7);  // global table of 256 entries, 8-bit colour resolution
    head.push_back(0);     // background index
    head.push_back(0);     // aspect ratio
    head.insert(head.end(), picture.colourTable.begin(), picture.colourTable.end());
    if (transparent) {
        int index = 0;
        for (int i = 0; i < 256; ++i) {
            const uint8_t* c = &picture.colourTable[static_cast<size_t>(i) * 3];
            const uint32_t colour = c[0] | (c[1] << 8) | (c[2] << 16);
            if (colour == transparentColor) {
                index = i;
                break;
            }
        }
        const uint8_t control[] = {0x21, 0xF9, 0x04, 0x09, 0x00, 0x00, static_cast<uint8_t>(index),
                                   0x00};
        head.insert(head.end(), control, control + sizeof control);
    }
    head.push_back(0x2C);
    little(head, 0);
    little(head, 0);
    little(head, width);
    little(head, height);
    head.push_back(0x07);
    head.push_back(8);  // LZW minimum code size
    if (!sink(head.data(), head.size())) {
        return false;
    }

    BitPacker packer(sink);
    auto dictionary = std::make_unique<Dictionary>();
    auto clearDictionary = [&] {
        dictionary->clear();
        packer.writeBits(kClearCode, kCodeBits);
    };
    for (int y = 1; y <= height; ++y) {
        const uint8_t* row =
            picture.indices.data() + static_cast<size_t>(y - 1) * static_cast<size_t>(width);
        clearDictionary();
        // prefix is the code of the string being grown; -1 while it is empty.
        int prefix = -1;
        int code = row[0];
        for (int x = 1; x < width; ++x) {
            const uint8_t pixel = row[x];
            const int found = prefix < 0 ? -1 : dictionary->find(prefix, pixel);
            if (found >= 0) {
                code = found;
                prefix = found;
                continue;
            }
            const int entries = dictionary->entries();
            packer.writeBits(code, kCodeBits);
            if (entries == kDictionaryLimit) {
                clearDictionary();
            } else {
                dictionary->add(prefix, pixel);
            }
            prefix = pixel;
            code = pixel;
        }
        packer.writeBits(code, kCodeBits);
        if (y % 10 == 0 && Progress) {
            Progress(toInt16(static_cast<double>(y) * 100.0 / height));
        }
    }
    packer.writeBits(kEndCode, kCodeBits);
    packer.finish();
    const uint8_t tail[] = {0x00, 0x3B};
    return packer.ok() && sink(tail, sizeof tail);
}

bool GIF::SaveGIF(const IndexedPicture& picture, const std::string& fileName, bool transparent,
                  uint32_t transparentColor) {
    if (m_busy) {
        return false;
    }
    std::string bytes;
    bytes.reserve(static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height) * 9 / 8 +
                  1024);
    const bool done = encode(
        picture,
        [&bytes](const uint8_t* data, std::size_t count) {
            bytes.append(reinterpret_cast<const char*>(data), count);
            return true;
        },
        transparent, transparentColor);
    if (!done) {
        return false;
    }
    writeFileAtomically(fileName, bytes);
    return true;
}

}  // namespace lumiquilt
