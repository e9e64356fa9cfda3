#include "series/pixel_buffers.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif
#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

#include "core/numbers.h"
#include "core/runtime_error.h"

namespace lumiquilt {

namespace {

// Buffers of a photograph's size are mapped in 2 MiB pages where the system offers
// them: far fewer page faults when the buffer is first written. A 2 MP picture
// (8 MB less a little) is one of them.
constexpr std::size_t kLargePage = 2u << 20;
constexpr std::size_t kLargeBuffer = 4u << 20;
// Buffers of a picture's size are mappings of their own, which can be kept for reuse.
constexpr std::size_t kMappedBuffer = 1u << 20;

// What all buffers hold, against the budget: decoding threads allocate at once.
std::atomic<std::size_t> g_held{0};
std::atomic<std::size_t> g_budgetSet{0};

std::size_t machineBudget() {
#if defined(__linux__)
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageSize = ::sysconf(_SC_PAGESIZE);
    if (pages > 0 && pageSize > 0) {
        return static_cast<std::size_t>(pages) / 4 * 3 * static_cast<std::size_t>(pageSize);
    }
#endif
    return std::size_t{1} << 40;
}

// Whether `bytes` more fit in `limit` beside `held`, without overflowing.
bool fitsBeside(std::size_t held, std::size_t bytes, std::size_t limit) {
    return bytes <= limit && held <= limit - bytes;
}

// Takes `bytes` out of the budget, or throws RuntimeError 7.
void reserve(std::size_t bytes) {
    const std::size_t limit = SampleBuffer::budget();
    std::size_t held = g_held.load();
    do {
        if (!fitsBeside(held, bytes, limit)) {
            throw RuntimeError(kOutOfMemory);
        }
    } while (!g_held.compare_exchange_weak(held, held + bytes));
}

#if defined(__linux__)
// Mappings given back during a run, kept for the next buffer of the same size. The
// window program lets go of one series' pictures and buffer while it decodes the
// next, and each compare pass sizes its montage anew: a page used again costs a
// clearing instead of a fault, and in a virtual machine a fault can cost the host's
// too. They stay resident, so none outlives the run.
constexpr std::size_t kSpareMost = 1024u << 20;

struct Spare {
    void* mapping = nullptr;
    std::size_t mappingSize = 0;
    uint8_t* data = nullptr;
    std::size_t bytes = 0;
};

std::mutex g_spareMutex;
std::vector<Spare> g_spares;
std::size_t g_spareBytes = 0;
int g_reuses = 0;  // BufferReuse objects alive

bool keepSpare(const Spare& spare) {
    const std::lock_guard lock(g_spareMutex);
    if (g_reuses == 0 || spare.mappingSize > kSpareMost - g_spareBytes) {
        return false;
    }
    try {
        g_spares.push_back(spare);
    } catch (const std::bad_alloc&) {
        return false;
    }
    g_spareBytes += spare.mappingSize;
    return true;
}

// Clears a kept mapping, page-aligned, for its next buffer. Pages never touched are
// zero already and stay untouched, or a montage's unused slots would cost a fault
// each; a page the system may have swapped out is dropped, which makes it zero.
void clearForReuse(uint8_t* data, std::size_t bytes) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const std::size_t pages = (bytes + page - 1) / page;
    std::vector<unsigned char> resident;
    try {
        resident.resize(pages);
    } catch (const std::bad_alloc&) {
        std::memset(data, 0, bytes);
        return;
    }
    if (::mincore(data, bytes, resident.data()) != 0) {
        std::memset(data, 0, bytes);
        return;
    }
    for (std::size_t first = 0; first < pages;) {
        const bool touched = (resident[first] & 1) != 0;
        std::size_t end = first + 1;
        while (end < pages && ((resident[end] & 1) != 0) == touched) {
            ++end;
        }
        uint8_t* from = data + first * page;
        const std::size_t length = std::min(bytes, end * page) - first * page;
        if (touched) {
            std::memset(from, 0, length);
        } else {
            ::madvise(from, length, MADV_DONTNEED);
        }
        first = end;
    }
}

// A kept mapping of exactly `bytes`, its bytes cleared; or an empty one.
Spare takeSpare(std::size_t bytes) {
    Spare spare;
    {
        const std::lock_guard lock(g_spareMutex);
        const auto found = std::find_if(g_spares.begin(), g_spares.end(),
                                        [bytes](const Spare& s) { return s.bytes == bytes; });
        if (found == g_spares.end()) {
            return spare;
        }
        spare = *found;
        *found = g_spares.back();
        g_spares.pop_back();
        g_spareBytes -= spare.mappingSize;
    }
    clearForReuse(spare.data, spare.bytes);
    return spare;
}

void dropSpares() {
    const std::lock_guard lock(g_spareMutex);
    for (const Spare& spare : g_spares) {
        ::munmap(spare.mapping, spare.mappingSize);
    }
    g_spares.clear();
    g_spareBytes = 0;
}

std::size_t spareBytes() {
    const std::lock_guard lock(g_spareMutex);
    return g_spareBytes;
}
#endif

// Four 32-bit pixels (blue, green, red, unused) become three words of three-byte
// pixels: one load and one store per word instead of a byte at a time.
void packBgrx32Words(const uint8_t* src, uint8_t* dst, int columns) {
    int x = 0;
    if constexpr (std::endian::native == std::endian::little) {
        for (; x + 4 <= columns; x += 4, src += 16, dst += 12) {
            uint32_t p[4];
            std::memcpy(p, src, sizeof p);
            const uint32_t out[3] = {
                (p[0] & 0xFFFFFFu) | (p[1] << 24),
                ((p[1] >> 8) & 0xFFFFu) | (p[2] << 16),
                ((p[2] >> 16) & 0xFFu) | (p[3] << 8),
            };
            std::memcpy(dst, out, sizeof out);
        }
    }
    for (; x < columns; ++x, src += 4, dst += 3) {
        dst[0] = src[0];
        dst[1] = src[1];
        dst[2] = src[2];
    }
}

#if defined(__x86_64__) || defined(__i386__)
// The same with one byte shuffle per four pixels. Each store writes four bytes past
// the twelve it fills, into the next two pixels, which are written after it.
__attribute__((target("ssse3"))) void packBgrx32Shuffle(const uint8_t* src, uint8_t* dst,
                                                        int columns) {
    const __m128i order = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    int x = 0;
    for (; x + 6 <= columns; x += 4, src += 16, dst += 12) {
        const __m128i pixels = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm_shuffle_epi8(pixels, order));
    }
    packBgrx32Words(src, dst, columns - x);
}
#endif

void packBgrx32(const uint8_t* src, uint8_t* dst, int columns) {
#if defined(__x86_64__) || defined(__i386__)
    static const bool shuffle = __builtin_cpu_supports("ssse3");
    if (shuffle) {
        packBgrx32Shuffle(src, dst, columns);
        return;
    }
#endif
    packBgrx32Words(src, dst, columns);
}

}  // namespace

// The block of a buffer let go while holds on it lived: it goes back to the system
// with the last hold.
struct SampleBuffer::Held {
    uint8_t* data = nullptr;
    std::size_t size = 0;
    void* mapping = nullptr;
    std::size_t mappingSize = 0;
    std::size_t shrunk = 0;  // given up by the buffer while held: still in memory

    Held() = default;
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() {
#if defined(__linux__)
        if (mapping != nullptr) {
            ::munmap(mapping, mappingSize);
        } else {
            std::free(data);
        }
#else
        std::free(data);
#endif
        g_held -= size + shrunk;
    }
};

SampleBuffer::SampleBuffer(SampleBuffer&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)),
      m_size(std::exchange(other.m_size, 0)),
      m_serial(std::exchange(other.m_serial, 0)),
      m_mapping(std::exchange(other.m_mapping, nullptr)),
      m_mappingSize(std::exchange(other.m_mappingSize, 0)),
      m_held(std::move(other.m_held)) {}

SampleBuffer& SampleBuffer::operator=(SampleBuffer&& other) noexcept {
    if (this != &other) {
        release();
        m_data = std::exchange(other.m_data, nullptr);
        m_size = std::exchange(other.m_size, 0);
        m_serial = std::exchange(other.m_serial, 0);
        m_mapping = std::exchange(other.m_mapping, nullptr);
        m_mappingSize = std::exchange(other.m_mappingSize, 0);
        m_held = std::move(other.m_held);
    }
    return *this;
}

std::shared_ptr<const void> SampleBuffer::hold() {
    if (m_data == nullptr) {
        return nullptr;
    }
    if (!m_held) {
        m_held = std::make_shared<Held>();
    }
    return m_held;
}

SampleBuffer::~SampleBuffer() {
    release();
}

void SampleBuffer::discard() {
    release(false);
}

void SampleBuffer::release(bool keep) {
    if (heldElsewhere()) {
        // The holds take the block over, as it is.
        m_held->data = m_data;
        m_held->size = m_size;
        m_held->mapping = m_mapping;
        m_held->mappingSize = m_mappingSize;
        m_held.reset();
        m_data = nullptr;
        m_size = 0;
        m_serial = 0;
        m_mapping = nullptr;
        m_mappingSize = 0;
        return;
    }
    m_held.reset();
#if defined(__linux__)
    if (m_mapping != nullptr) {
        if (!keep || !keepSpare({m_mapping, m_mappingSize, m_data, m_size})) {
            ::munmap(m_mapping, m_mappingSize);
        }
    } else {
        std::free(m_data);
    }
#else
    (void)keep;
    std::free(m_data);
#endif
    g_held -= m_size;
    m_data = nullptr;
    m_size = 0;
    m_serial = 0;
    m_mapping = nullptr;
    m_mappingSize = 0;
}

std::size_t SampleBuffer::budget() {
    static const std::size_t machine = machineBudget();
    const std::size_t set = g_budgetSet.load();
    return set != 0 ? set : machine;
}

void SampleBuffer::setBudget(std::size_t bytes) {
    g_budgetSet = bytes;
}

std::size_t SampleBuffer::held() {
    return g_held.load();
}

BufferReuse::BufferReuse() {
#if defined(__linux__)
    const std::lock_guard lock(g_spareMutex);
    ++g_reuses;
#endif
}

BufferReuse::~BufferReuse() {
#if defined(__linux__)
    {
        const std::lock_guard lock(g_spareMutex);
        if (--g_reuses > 0) {
            return;
        }
    }
    dropSpares();
#endif
}

void SampleBuffer::releaseSpares() {
#if defined(__linux__)
    dropSpares();
#endif
}

std::size_t SampleBuffer::spares() {
#if defined(__linux__)
    return spareBytes();
#else
    return 0;
#endif
}

bool SampleBuffer::wouldFit(std::size_t bytes) {
    return fitsBeside(g_held.load(), bytes, budget());
}

void SampleBuffer::allocateZeroed(std::size_t bytes) {
    release();
    if (bytes == 0) {
        return;
    }
    static std::atomic<std::uint64_t> serials{0};
    m_serial = ++serials;
#if defined(__linux__)
    // Kept mappings give way to a buffer the budget has no room for beside them.
    if (!fitsBeside(held() + spareBytes(), bytes, budget())) {
        dropSpares();
    }
#endif
    reserve(bytes);
#if defined(__linux__)
    if (bytes >= kMappedBuffer) {
        if (const Spare spare = takeSpare(bytes); spare.mapping != nullptr) {
            m_mapping = spare.mapping;
            m_mappingSize = spare.mappingSize;
            m_data = spare.data;
            m_size = bytes;
            return;
        }
        // Fresh anonymous pages are zero; nothing is written until the buffer is used.
        const bool large = bytes >= kLargeBuffer;
        // The large pages cover the last one whole, or its tail faults 4 KiB at a time.
        const std::size_t advised = (bytes + kLargePage - 1) & ~(kLargePage - 1);
        const std::size_t mappingSize = large ? advised + kLargePage : bytes;
        void* mapping = ::mmap(nullptr, mappingSize, PROT_READ | PROT_WRITE,
                               MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (mapping == MAP_FAILED) {
            g_held -= bytes;
            throw RuntimeError(kOutOfMemory);
        }
        auto aligned = reinterpret_cast<std::uintptr_t>(mapping);
        if (large) {
            aligned = (aligned + kLargePage - 1) & ~(kLargePage - 1);
            ::madvise(reinterpret_cast<void*>(aligned), advised, MADV_HUGEPAGE);
        }
        m_mapping = mapping;
        m_mappingSize = mappingSize;
        m_data = reinterpret_cast<uint8_t*>(aligned);
        m_size = bytes;
        return;
    }
#endif
    m_data = static_cast<uint8_t*>(std::calloc(bytes, 1));
    if (m_data == nullptr) {
        g_held -= bytes;
        throw RuntimeError(kOutOfMemory);
    }
    m_size = bytes;
}

void SampleBuffer::shrink(std::size_t bytes) {
    if (bytes >= m_size) {
        return;
    }
    if (bytes == 0) {
        release();
        return;
    }
    if (heldElsewhere()) {
        // The holds see the whole block: it stays, and counts, until they go.
        m_held->shrunk += m_size - bytes;
        m_size = bytes;
        return;
    }
#if defined(__linux__)
    if (m_mapping != nullptr) {
        // Whole pages past the end go back to the system at once.
        const auto pageSize = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
        const auto mappingEnd = reinterpret_cast<std::uintptr_t>(m_mapping) + m_mappingSize;
        const std::uintptr_t keepEnd =
            (reinterpret_cast<std::uintptr_t>(m_data) + bytes + pageSize - 1) & ~(pageSize - 1);
        if (keepEnd < mappingEnd) {
            ::munmap(reinterpret_cast<void*>(keepEnd), mappingEnd - keepEnd);
            m_mappingSize = keepEnd - reinterpret_cast<std::uintptr_t>(m_mapping);
        }
    }
#endif
    g_held -= m_size - bytes;
    m_size = bytes;
}

int16_t paddedBound(int size) {
    return checkedInt16(((static_cast<long long>(size) + 3) / 4) * 4 - 1);
}

uint8_t* PixelBuffers::seriesImage(int image) {
    return seriesPixels.data() + static_cast<std::size_t>(image - 1) *
                                     static_cast<std::size_t>(seriesMaxY + 1) * seriesRowBytes();
}

const uint8_t* PixelBuffers::seriesImage(int image) const {
    return const_cast<PixelBuffers*>(this)->seriesImage(image);
}

uint8_t* PixelBuffers::montageSlot(int slot) {
    return montagePixels.data() + static_cast<std::size_t>(slot - kFirstMontageSlot) *
                                      static_cast<std::size_t>(montageMaxY + 1) * montageRowBytes();
}

const uint8_t* PixelBuffers::montageSlot(int slot) const {
    return const_cast<PixelBuffers*>(this)->montageSlot(slot);
}

int PixelBuffers::sampleAt(int channel, int x, int y, int picture) const {
    if (x < 0 || y < 0) {
        return 0;
    }
    if (picture < kFirstMontageSlot) {
        if (picture < 1 || x > seriesMaxX || y > seriesMaxY || picture > seriesMaxImage) {
            return 0;
        }
        return seriesImage(picture)[static_cast<std::size_t>(y) * seriesRowBytes() +
                                    static_cast<std::size_t>(x) * 3 + channel];
    }
    if (x > montageMaxX || y > montageMaxY || picture > montageMaxSlot) {
        return 0;
    }
    return montageSlot(picture)[static_cast<std::size_t>(y) * montageRowBytes() +
                                static_cast<std::size_t>(x) * 3 + channel];
}

void PixelBuffers::sizeSeries(int width, int height, int images) {
    seriesMaxX = paddedBound(width);
    seriesMaxY = paddedBound(height);
    seriesMaxImage = checkedInt16(images);
    seriesPixels.allocateZeroed(seriesRowBytes() * static_cast<std::size_t>(seriesMaxY + 1) *
                                static_cast<std::size_t>(std::max(images, 0)));
}

SampleBuffer PixelBuffers::takeSeries() {
    SampleBuffer taken = std::move(seriesPixels);
    seriesMaxX = -1;
    seriesMaxY = -1;
    seriesMaxImage = 0;
    return taken;
}

void PixelBuffers::sizeMontage(int width, int height) {
    montageMaxX = paddedBound(width);
    montageMaxY = paddedBound(height);
    montageMaxSlot = kLastMontageSlot;
    montagePixels.allocateZeroed(
        montageRowBytes() * static_cast<std::size_t>(montageMaxY + 1) *
        static_cast<std::size_t>(kLastMontageSlot - kFirstMontageSlot + 1));
}

void PixelBuffers::sizePreview(int width, int height) {
    previewMaxX = paddedBound(width);
    previewMaxY = paddedBound(height);
    previewPixels.allocateZeroed(3u * static_cast<std::size_t>(previewMaxX + 1) *
                                 static_cast<std::size_t>(previewMaxY + 1));
}

void PixelBuffers::adoptSeries(SampleBuffer&& samples, int width, int height, int images) {
    const int16_t maxX = paddedBound(width);
    const int16_t maxY = paddedBound(height);
    const int16_t maxImage = checkedInt16(images);
    const std::size_t bytes = 3u * static_cast<std::size_t>(maxX + 1) *
                              static_cast<std::size_t>(maxY + 1) *
                              static_cast<std::size_t>(std::max(images, 0));
    if (samples.size() < bytes) {
        throw RuntimeError(kInvalidProcedureCall);
    }
    seriesPixels = std::move(samples);
    seriesPixels.shrink(bytes);
    seriesMaxX = maxX;
    seriesMaxY = maxY;
    seriesMaxImage = maxImage;
}

bool SeriesFrames::holds(int image, int width, int height) const {
    return image >= 1 && image <= capacity && static_cast<std::size_t>(image) <= filled.size() &&
           filled[static_cast<std::size_t>(image - 1)] != 0 && width > 0 && height > 0 &&
           paddedBound(width) + 1 == frameWidth && paddedBound(height) + 1 == frameHeight &&
           pixels.size() >= static_cast<std::size_t>(image) * frameBytes();
}

void readPictureIntoFrame(const PictureView& picture, uint8_t* frame, int frameWidth,
                          int frameHeight) {
    readPictureRowsIntoFrame(picture, 0, picture.height, frame, frameWidth, frameHeight);
}

void readPictureRowsIntoFrame(const PictureView& picture, int first, int end, uint8_t* frame,
                              int frameWidth, int frameHeight) {
    if (picture.bits == nullptr || picture.width <= 0 || picture.height <= 0) {
        return;
    }
    const int columns = std::min(picture.width, frameWidth);
    // Picture row y lands in frame row height - 1 - y: the rows above the frame's top
    // are cut.
    first = std::max({first, 0, picture.height - frameHeight});
    end = std::min(end, picture.height);
    const std::size_t frameRow = 3u * static_cast<std::size_t>(frameWidth);
    for (int y = first; y < end; ++y) {
        copyRowAsBgr(picture.bits + static_cast<std::ptrdiff_t>(y) * picture.stride, picture.format,
                     columns, frame + static_cast<std::size_t>(picture.height - 1 - y) * frameRow);
    }
}

void copyRowAsBgr(const uint8_t* src, PixelFormat format, int columns, uint8_t* dst) {
    switch (format) {
        case PixelFormat::bgr24:
            std::memcpy(dst, src, 3u * static_cast<std::size_t>(columns));
            break;
        case PixelFormat::rgb24:
            for (int x = 0; x < columns; ++x, src += 3, dst += 3) {
                dst[0] = src[2];
                dst[1] = src[1];
                dst[2] = src[0];
            }
            break;
        case PixelFormat::bgrx32:
            packBgrx32(src, dst, columns);
            break;
    }
}

PictureView frameAsPicture(const uint8_t* frame, int frameWidth, int frameHeight, int width,
                           int height) {
    PictureView view;
    if (frame == nullptr || width < 1 || height < 1 || width > frameWidth || height > frameHeight) {
        return view;
    }
    const auto rowBytes = static_cast<std::ptrdiff_t>(3) * frameWidth;
    view.width = width;
    view.height = height;
    view.bits = frame + static_cast<std::ptrdiff_t>(height - 1) * rowBytes;
    view.stride = -rowBytes;
    view.format = PixelFormat::bgr24;
    return view;
}

namespace {

// Red and blue change places, three bytes at a time.
void swapRedAndBlue(const uint8_t* src, uint8_t* dst, int columns) {
    for (int x = 0; x < columns; ++x, src += 3, dst += 3) {
        const uint8_t blue = src[0];
        dst[0] = src[2];
        dst[1] = src[1];
        dst[2] = blue;
    }
}

void writeFrameRows(const uint8_t* frame, int frameWidth, int frameHeight, uint8_t* bits,
                    std::ptrdiff_t stride, int width, int height, bool redFirst) {
    const int columns = std::min(width, frameWidth);
    const std::size_t frameRow = 3u * static_cast<std::size_t>(frameWidth);
    for (int r = 0; r < height; ++r) {
        uint8_t* dst = bits + static_cast<std::ptrdiff_t>(r) * stride;
        const int y = height - 1 - r;
        if (y >= frameHeight || columns <= 0) {
            std::memset(dst, 0, 3u * static_cast<std::size_t>(width));
            continue;
        }
        const uint8_t* src = frame + static_cast<std::size_t>(y) * frameRow;
        if (redFirst) {
            swapRedAndBlue(src, dst, columns);
        } else {
            std::memcpy(dst, src, 3u * static_cast<std::size_t>(columns));
        }
        if (columns < width) {
            std::memset(dst + 3 * columns, 0, 3u * static_cast<std::size_t>(width - columns));
        }
    }
}

}  // namespace

void writeFrameToPicture(const uint8_t* frame, int frameWidth, int frameHeight, uint8_t* bits,
                         std::ptrdiff_t stride, int width, int height) {
    writeFrameRows(frame, frameWidth, frameHeight, bits, stride, width, height, false);
}

void writeFrameToRgbPicture(const uint8_t* frame, int frameWidth, int frameHeight, uint8_t* bits,
                            std::ptrdiff_t stride, int width, int height) {
    writeFrameRows(frame, frameWidth, frameHeight, bits, stride, width, height, true);
}

std::string dimensionMessage(int k, int width, int height, int width1, int height1) {
    return "Image" + numberToText(static_cast<long long>(k)) + " has a different dimension (" +
           std::to_string(width) + "," + std::to_string(height) + ") from Image 1 (" +
           std::to_string(width1) + "," + std::to_string(height1) +
           ").   All images must be the same size.";
}

}  // namespace lumiquilt
