#include "display/picture_reduction.h"

#include <algorithm>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif
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

// Where an output position of a side samples the picture: its centre mapped back,
// between the source positions `first` and `second`, `weight` 256ths of the way.
struct Tap {
    int first;
    int second;
    uint32_t weight;
};

std::vector<Tap> tapsFor(int size, int outSize) {
    std::vector<Tap> taps(static_cast<std::size_t>(outSize));
    // (o + 1/2) * size / outSize - 1/2, over a common denominator.
    const long long denominator = 2LL * outSize;
    for (int o = 0; o < outSize; ++o) {
        const long long numerator = (2LL * o + 1) * size - outSize;
        Tap tap{0, 0, 0};
        if (numerator > 0) {
            // In 256ths of a pixel, rounded.
            const long long at = (numerator * 256 + denominator / 2) / denominator;
            tap.first = static_cast<int>(at >> 8);
            tap.weight = static_cast<uint32_t>(at & 0xFF);
        }
        if (tap.first >= size - 1) {
            tap.first = size - 1;
            tap.weight = 0;
        }
        tap.second = std::min(tap.first + 1, size - 1);
        taps[static_cast<std::size_t>(o)] = tap;
    }
    return taps;
}

// Blends two picture rows into 16-bit lanes of blue, green, red and a fourth lane per
// pixel, each rounded back to 8 bits so that the columns' blend fits in the lanes.
void blendRows(const PictureView& picture, const uint8_t* top, const uint8_t* bottom,
               uint32_t weight, uint16_t* lanes) {
    const uint32_t keep = 256 - weight;
    if (picture.format == PixelFormat::bgrx32) {
        const std::size_t bytes = static_cast<std::size_t>(picture.width) * 4;
        // Sums below 2^16 throughout, so 16-bit lanes hold them: twice as many at once.
        const auto keep16 = static_cast<uint16_t>(keep);
        const auto weight16 = static_cast<uint16_t>(weight);
        for (std::size_t i = 0; i < bytes; ++i) {
            const auto sum = static_cast<uint16_t>(top[i] * keep16 + bottom[i] * weight16 + 128);
            lanes[i] = static_cast<uint16_t>(sum >> 8);
        }
        return;
    }
    const int red = picture.format == PixelFormat::rgb24 ? 0 : 2;
    const int blue = 2 - red;
    for (int x = 0; x < picture.width; ++x, top += 3, bottom += 3, lanes += 4) {
        lanes[0] = static_cast<uint16_t>((top[blue] * keep + bottom[blue] * weight + 128) >> 8);
        lanes[1] = static_cast<uint16_t>((top[1] * keep + bottom[1] * weight + 128) >> 8);
        lanes[2] = static_cast<uint16_t>((top[red] * keep + bottom[red] * weight + 128) >> 8);
        lanes[3] = 0;
    }
}

}  // namespace

void scalePicture(const PictureView& picture, int outWidth, int outHeight, uint32_t* out,
                  std::ptrdiff_t outStride) {
    if (outWidth < 1 || outHeight < 1 || picture.width < 1 || picture.height < 1 ||
        picture.bits == nullptr) {
        return;
    }
    const std::vector<Tap> columns = tapsFor(picture.width, outWidth);
    const std::vector<Tap> rows = tapsFor(picture.height, outHeight);
    std::vector<uint16_t> lanes(static_cast<std::size_t>(picture.width) * 4);
    for (int oy = 0; oy < outHeight; ++oy) {
        const Tap& r = rows[static_cast<std::size_t>(oy)];
        blendRows(picture, picture.bits + static_cast<std::ptrdiff_t>(r.first) * picture.stride,
                  picture.bits + static_cast<std::ptrdiff_t>(r.second) * picture.stride, r.weight,
                  lanes.data());
        auto* row = reinterpret_cast<uint32_t*>(reinterpret_cast<uint8_t*>(out) + oy * outStride);
        int ox = 0;
#if defined(__SSE2__)
        // Two pixels at a time, each lane's blend below 2^16 as in the rows'.
        const __m128i half = _mm_set1_epi16(128);
        const __m128i opaque = _mm_set1_epi32(static_cast<int>(0xFF000000u));
        for (; ox + 2 <= outWidth; ox += 2) {
            const Tap& a = columns[static_cast<std::size_t>(ox)];
            const Tap& b = columns[static_cast<std::size_t>(ox) + 1];
            const uint16_t* l = lanes.data();
            const __m128i left = _mm_unpacklo_epi64(
                _mm_loadl_epi64(reinterpret_cast<const __m128i*>(l + 4 * a.first)),
                _mm_loadl_epi64(reinterpret_cast<const __m128i*>(l + 4 * b.first)));
            const __m128i right = _mm_unpacklo_epi64(
                _mm_loadl_epi64(reinterpret_cast<const __m128i*>(l + 4 * a.second)),
                _mm_loadl_epi64(reinterpret_cast<const __m128i*>(l + 4 * b.second)));
            const __m128i weights =
                _mm_unpacklo_epi64(_mm_set1_epi16(static_cast<short>(a.weight)),
                                   _mm_set1_epi16(static_cast<short>(b.weight)));
            const __m128i keeps = _mm_sub_epi16(_mm_set1_epi16(256), weights);
            const __m128i sum = _mm_add_epi16(
                _mm_add_epi16(_mm_mullo_epi16(left, keeps), _mm_mullo_epi16(right, weights)), half);
            const __m128i bytes = _mm_packus_epi16(_mm_srli_epi16(sum, 8), _mm_setzero_si128());
            _mm_storel_epi64(reinterpret_cast<__m128i*>(row + ox), _mm_or_si128(bytes, opaque));
        }
#endif
        // A pixel's four lanes as one 64-bit word: each lane's blend stays below 2^16,
        // so one multiply weighs all four.
        for (; ox < outWidth; ++ox) {
            const Tap& c = columns[static_cast<std::size_t>(ox)];
            uint64_t left = 0;
            uint64_t right = 0;
            std::memcpy(&left, lanes.data() + 4 * static_cast<std::size_t>(c.first), 8);
            std::memcpy(&right, lanes.data() + 4 * static_cast<std::size_t>(c.second), 8);
            uint64_t v = left * (256 - c.weight) + right * c.weight + 0x0080008000800080u;
            v = v >> 8 & 0x00FF00FF00FF00FFu;
            row[ox] = 0xFF000000u | static_cast<uint32_t>((v & 0xFFu) | (v >> 8 & 0xFF00u) |
                                                          (v >> 16 & 0xFF0000u));
        }
    }
}

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
