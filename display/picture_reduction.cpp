#include "display/picture_reduction.h"

#include <algorithm>
#include <vector>

namespace lumiquilt {

int reducedSide(int size, int factor) {
    return factor < 1 || size < 1 ? 0 : (size + factor - 1) / factor;
}

namespace {

// Sum is the type of the column sums: 16 bits hold up to 257 rows of bytes and give
// the wide adds twice the lanes of 32.
template <typename Sum>
void reduceWith(const PictureView& picture, int factor, uint32_t* out, std::ptrdiff_t outStride,
                int outWidth, int outHeight) {
    const int step = picture.format == PixelFormat::bgrx32 ? 4 : 3;
    // Where red and blue stand in a pixel.
    const int red = picture.format == PixelFormat::rgb24 ? 0 : 2;
    const int blue = 2 - red;
    // A band of rows is first summed down each byte column, a loop the compiler turns
    // into wide adds; each square then sums its columns once per band.
    const std::size_t rowBytes = static_cast<std::size_t>(picture.width) * step;
    std::vector<Sum> columns(rowBytes);
    for (int oy = 0; oy < outHeight; ++oy) {
        const int yFirst = oy * factor;
        const int yEnd = std::min(yFirst + factor, picture.height);
        Sum* column = columns.data();
        const uint8_t* first = picture.bits + static_cast<std::ptrdiff_t>(yFirst) * picture.stride;
        for (std::size_t i = 0; i < rowBytes; ++i) {
            column[i] = first[i];
        }
        for (int y = yFirst + 1; y < yEnd; ++y) {
            const uint8_t* p = picture.bits + static_cast<std::ptrdiff_t>(y) * picture.stride;
            for (std::size_t i = 0; i < rowBytes; ++i) {
                column[i] = static_cast<Sum>(column[i] + p[i]);
            }
        }
        auto* row = reinterpret_cast<uint32_t*>(reinterpret_cast<uint8_t*>(out) + oy * outStride);
        const auto rows = static_cast<uint32_t>(yEnd - yFirst);
        // Whole squares share one divisor: a multiply by its rounded-up reciprocal
        // gives the very quotient of the division for divisors below 4096 (checked
        // for every sum a square can have), at a fraction of its cost.
        const uint32_t whole = rows * static_cast<uint32_t>(factor);
        const bool byReciprocal = whole < (1u << 12);
        const uint64_t reciprocal = ((uint64_t{1} << 32) + whole - 1) / whole;
        auto mean = [&](uint32_t sum, uint32_t count) {
            const uint32_t rounded = sum + count / 2;
            return count == whole && byReciprocal
                       ? static_cast<uint32_t>((rounded * reciprocal) >> 32)
                       : rounded / count;
        };
        const Sum* sums = columns.data();
        for (int ox = 0; ox < outWidth; ++ox) {
            const int xFirst = ox * factor;
            const int xEnd = std::min(xFirst + factor, picture.width);
            uint32_t b = 0;
            uint32_t g = 0;
            uint32_t r = 0;
            for (int x = xFirst; x < xEnd; ++x, sums += step) {
                b += sums[blue];
                g += sums[1];
                r += sums[red];
            }
            const uint32_t count = rows * static_cast<uint32_t>(xEnd - xFirst);
            row[ox] = 0xFF000000u | (mean(r, count) << 16) | (mean(g, count) << 8) | mean(b, count);
        }
    }
}

// Halving a 32-bit picture, what a window on a small screen asks of a 2 MP photograph:
// whole squares add their four bytes of each channel in a loop the compiler makes
// wide; the squares an odd side cuts short go the slow way.
void halveBgrx32(const PictureView& picture, uint32_t* out, std::ptrdiff_t outStride, int outWidth,
                 int outHeight) {
    const int pairs = picture.width / 2;
    for (int oy = 0; oy < outHeight; ++oy) {
        const uint8_t* top = picture.bits + static_cast<std::ptrdiff_t>(2 * oy) * picture.stride;
        const int rows = std::min(2, picture.height - 2 * oy);
        const uint8_t* bottom = rows == 2 ? top + picture.stride : top;
        auto* row = reinterpret_cast<uint32_t*>(reinterpret_cast<uint8_t*>(out) + oy * outStride);
        if (rows == 2) {
            for (int ox = 0; ox < pairs; ++ox) {
                const uint8_t* a = top + 8 * ox;
                const uint8_t* b = bottom + 8 * ox;
                const uint32_t blue = (a[0] + a[4] + b[0] + b[4] + 2u) >> 2;
                const uint32_t green = (a[1] + a[5] + b[1] + b[5] + 2u) >> 2;
                const uint32_t red = (a[2] + a[6] + b[2] + b[6] + 2u) >> 2;
                row[ox] = 0xFF000000u | red << 16 | green << 8 | blue;
            }
        }
        for (int ox = rows == 2 ? pairs : 0; ox < outWidth; ++ox) {
            const int columns = std::min(2, picture.width - 2 * ox);
            const auto count = static_cast<uint32_t>(rows * columns);
            uint32_t sum[3] = {};
            for (int y = 0; y < rows; ++y) {
                const uint8_t* p = (y == 0 ? top : bottom) + 8 * ox;
                for (int x = 0; x < columns; ++x) {
                    for (int c = 0; c < 3; ++c) {
                        sum[c] += p[4 * x + c];
                    }
                }
            }
            const auto mean = [count](uint32_t total) { return (total + count / 2) / count; };
            row[ox] = 0xFF000000u | mean(sum[2]) << 16 | mean(sum[1]) << 8 | mean(sum[0]);
        }
    }
}

}  // namespace

void reducePicture(const PictureView& picture, int factor, uint32_t* out,
                   std::ptrdiff_t outStride) {
    const int outWidth = reducedSide(picture.width, factor);
    const int outHeight = reducedSide(picture.height, factor);
    if (outWidth == 0 || outHeight == 0 || picture.bits == nullptr) {
        return;
    }
    if (factor == 2 && picture.format == PixelFormat::bgrx32) {
        halveBgrx32(picture, out, outStride, outWidth, outHeight);
    } else if (factor <= 257) {
        reduceWith<uint16_t>(picture, factor, out, outStride, outWidth, outHeight);
    } else {
        reduceWith<uint32_t>(picture, factor, out, outStride, outWidth, outHeight);
    }
}

}  // namespace lumiquilt
