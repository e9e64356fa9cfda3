#include "output/bmp_writer.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <vector>

namespace lumiquilt {

namespace {

void put16(uint8_t*& out, uint32_t value) {
    *out++ = static_cast<uint8_t>(value & 0xFF);
    *out++ = static_cast<uint8_t>((value >> 8) & 0xFF);
}

void put32(uint8_t*& out, uint32_t value) {
    put16(out, value & 0xFFFF);
    put16(out, value >> 16);
}

}  // namespace

bool writeBmp(const PictureView& picture, int dotsPerMeterX, int dotsPerMeterY,
              const ByteSink& sink) {
    const int width = picture.width;
    const int height = picture.height;
    if (width < 1 || height < 1 || picture.bits == nullptr) {
        return false;
    }
    const std::size_t rowBytes = (3u * static_cast<std::size_t>(width) + 3u) & ~std::size_t{3};
    const std::size_t imageBytes = rowBytes * static_cast<std::size_t>(height);
    constexpr std::size_t kHeaders = 14 + 40;
    if (imageBytes + kHeaders > std::numeric_limits<uint32_t>::max()) {
        return false;
    }

    std::array<uint8_t, kHeaders> head{};
    uint8_t* out = head.data();
    *out++ = 'B';
    *out++ = 'M';
    put32(out, static_cast<uint32_t>(kHeaders + imageBytes));
    put32(out, 0);  // two reserved words
    put32(out, static_cast<uint32_t>(kHeaders));
    put32(out, 40);
    put32(out, static_cast<uint32_t>(width));
    put32(out, static_cast<uint32_t>(height));
    put16(out, 1);   // planes
    put16(out, 24);  // bits a pixel
    put32(out, 0);   // no compression
    put32(out, static_cast<uint32_t>(imageBytes));
    put32(out, static_cast<uint32_t>(dotsPerMeterX));
    put32(out, static_cast<uint32_t>(dotsPerMeterY));
    put32(out, 0);  // colours used
    put32(out, 0);  // colours important
    if (!sink(head.data(), head.size())) {
        return false;
    }

    const uint8_t* bottom = picture.bits + static_cast<std::ptrdiff_t>(height - 1) * picture.stride;
    if (picture.format == PixelFormat::bgr24 && rowBytes == 3u * static_cast<std::size_t>(width) &&
        picture.stride == -static_cast<std::ptrdiff_t>(rowBytes)) {
        // The rows already stand bottom first, one after the other, with no padding.
        return sink(bottom, imageBytes);
    }
    // Otherwise rows go out in chunks of about a megabyte.
    const std::size_t rowsAChunk = std::max<std::size_t>(1, (1u << 20) / rowBytes);
    std::vector<uint8_t> chunk(rowsAChunk * rowBytes, 0);
    std::size_t inChunk = 0;
    for (int y = height - 1; y >= 0; --y) {
        uint8_t* row = chunk.data() + inChunk * rowBytes;
        copyRowAsBgr(picture.bits + static_cast<std::ptrdiff_t>(y) * picture.stride, picture.format,
                     width, row);
        if (++inChunk == rowsAChunk || y == 0) {
            if (!sink(chunk.data(), inChunk * rowBytes)) {
                return false;
            }
            inChunk = 0;
        }
    }
    return true;
}

}  // namespace lumiquilt
