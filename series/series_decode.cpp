#include "series/series_decode.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

#if defined(__unix__)
#include <sys/stat.h>
#endif

#include "core/files.h"
#include "core/runtime_error.h"
#include "series/picture_io.h"

namespace lumiquilt {

namespace {

// What tells a file from the one that stood under its name a moment ago.
struct FileIdentity {
    bool exists = false;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t modified = 0;
    std::int64_t changed = 0;

    bool operator==(const FileIdentity&) const = default;
};

// A read ahead that failed in a way only loading the member can tell.
constexpr int kReadAgain = -1;

FileIdentity identityOf(const std::string& fileName) {
    FileIdentity id;
#if defined(__unix__)
    struct stat info {};
    if (::stat(fileName.c_str(), &info) != 0) {
        return id;
    }
    id.exists = true;
    id.device = static_cast<std::uint64_t>(info.st_dev);
    id.inode = static_cast<std::uint64_t>(info.st_ino);
    id.size = static_cast<std::uint64_t>(info.st_size);
    id.modified =
        static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
    id.changed = static_cast<std::int64_t>(info.st_ctim.tv_sec) * 1000000000 + info.st_ctim.tv_nsec;
#else
    std::error_code error;
    const auto size = std::filesystem::file_size(fileName, error);
    if (error) {
        return id;
    }
    const auto modified = std::filesystem::last_write_time(fileName, error);
    if (error) {
        return id;
    }
    id.exists = true;
    id.size = size;
    id.modified = modified.time_since_epoch().count();
#endif
    return id;
}

}  // namespace

struct SeriesReader::Member {
    std::string fileName;
    FileIdentity identity;  // as found just before it was decoded
    enum class State { waiting, reading, done } state = State::waiting;
    QImage picture;
    QImage shown;  // the picture at its window's size, made ahead
    int width = 0;
    int height = 0;
    int errorNumber = 0;
    int frameLayout = 0;  // the layout its frame was filled under; 0 for none
    bool loaded = false;
};

SeriesReader::SeriesReader(const SeriesPattern& pattern, ReadInto into, int threads,
                           ShownSize shownSize)
    : m_pattern(pattern),
      m_keepPictures(into == ReadInto::pictures),
      m_framesAsPictures(into == ReadInto::framesAndViews),
      m_shownSize(std::move(shownSize)),
      m_intoFrames(into != ReadInto::pictures),
      m_members(static_cast<std::size_t>(kMaxImages)) {
    std::size_t listed = 0;
    for (int k = 1; k <= kMaxImages; ++k) {
        std::string name;
        try {
            name = memberName(pattern, k);
        } catch (const RuntimeError&) {
            break;
        }
        if (!fileExists(name)) {
            m_nextName = name;
            break;
        }
        m_members[listed++].fileName = name;
    }
    m_listed = listed;
    try {
        for (int t = 0; t < threads && static_cast<std::size_t>(t) < listed; ++t) {
            m_threads.emplace_back([this] { work(); });
        }
    } catch (const std::system_error&) {
        // Without threads of its own every member is read when it is loaded.
        stop();
    }
}

SeriesReader::~SeriesReader() {
    stop();
}

void SeriesReader::stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads) {
        thread.join();
    }
    m_threads.clear();
}

void SeriesReader::work() {
    // Without pictures to keep, each thread decodes every member into the same memory.
    SampleBuffer scratch;
    for (;;) {
        std::size_t index = 0;
        {
            const std::lock_guard lock(m_mutex);
            if (m_stopping || m_next >= m_listed) {
                break;
            }
            index = m_next++;
            m_members[index].state = Member::State::reading;
        }
        decodeAhead(index, scratch);
    }
    // Nothing of its size follows: kept, it would only add to the peak.
    scratch.discard();
}

void SeriesReader::decodeAhead(std::size_t index, SampleBuffer& scratch) {
    Member& m = m_members[index];
    const FileIdentity identity = identityOf(m.fileName);
    QImage picture;
    int errorNumber = 0;
    try {
        picture = m_keepPictures ? loadPicture(m.fileName) : loadPictureInto(m.fileName, scratch);
    } catch (const RuntimeError& error) {
        errorNumber = error.number();
    } catch (const std::bad_alloc&) {
        errorNumber = kOutOfMemory;
    } catch (...) {
        // Whatever else went wrong is met again when the member is loaded.
        errorNumber = kReadAgain;
    }
    // Scaled for its window here, while the picture is still in this core's caches and
    // off the thread that waits for it; without that copy the window scales it itself.
    const QSize shownSize =
        m_shownSize && !picture.isNull() ? m_shownSize(picture.size()) : QSize();
    QImage shown;

    std::unique_lock lock(m_mutex);
    m.identity = identity;
    m.errorNumber = errorNumber;
    m.width = picture.width();
    m.height = picture.height();
    if (index == 0) {
        // Image 1 fixes the frame of every image.
        if (!picture.isNull() && m_intoFrames) {
            layOut(picture);
        }
        m_layoutDecided = true;
        m_changed.notify_all();
    } else {
        m_changed.wait(lock, [this] { return m_layoutDecided || m_stopping; });
    }
    const int layout = m_layoutDecided ? m_layout : 0;
    if (!picture.isNull() && layout != 0) {
        uint8_t* frame = m_frames.frame(static_cast<int>(index) + 1);
        const int frameWidth = m_frames.frameWidth;
        const int frameHeight = m_frames.frameHeight;
        lock.unlock();
        try {
            shown = readIntoFrameAndScale(picture, frame, frameWidth, frameHeight, shownSize);
        } catch (...) {
            // The frame is filled before anything can fail.
        }
        lock.lock();
        m.frameLayout = layout;
    } else if (!shownSize.isEmpty() && shownSize != picture.size()) {
        lock.unlock();
        try {
            shown = scaledForDisplay(picture, shownSize);
        } catch (...) {
            // The window scales the picture itself.
        }
        lock.lock();
    }
    m.shown = std::move(shown);
    // A frame holds a picture whole when it is opaque and of image 1's size.
    const Member& first = m_members.front();
    const bool standsInFrame = m.frameLayout != 0 && m.frameLayout == m_layout &&
                               (!m_framesAsPictures || (picture.format() == QImage::Format_RGB32 &&
                                                        picture.width() == first.width &&
                                                        picture.height() == first.height));
    if (m_keepPictures) {
        m.picture = picture;
    } else if (!standsInFrame) {
        // No frame to stand in: the picture is kept, out of the scratch.
        m.picture = picture.copy();
    }
    m.state = Member::State::done;
    lock.unlock();
    m_changed.notify_all();
}

void SeriesReader::layOut(const QImage& first) {
    SeriesFrames frames;
    try {
        frames.frameWidth = paddedBound(first.width()) + 1;
        frames.frameHeight = paddedBound(first.height()) + 1;
        frames.capacity = static_cast<int>(m_listed);
        frames.pixels.allocateZeroed(frames.frameBytes() * m_listed);
    } catch (const RuntimeError&) {
        // Without room for the frames every member keeps its picture.
        return;
    }
    m_frames = std::move(frames);
    m_layout = 1;
}

void SeriesReader::load(int k, const std::string& fileName) {
    try {
        loadMember(k, fileName);
    } catch (...) {
        // The loading loop ends here: reading further ahead is wasted.
        {
            const std::lock_guard lock(m_mutex);
            m_stopping = true;
        }
        m_changed.notify_all();
        throw;
    }
}

void SeriesReader::loadMember(int k, const std::string& fileName) {
    const std::size_t index = static_cast<std::size_t>(k - 1);
    if (k < 1 || index >= m_members.size()) {
        throw RuntimeError(kSubscriptOutOfRange);
    }
    Member& m = m_members[index];
    std::unique_lock lock(m_mutex);
    bool readNow = index >= m_listed || m.fileName != fileName;
    if (!readNow) {
        if (m.state == Member::State::waiting && m_stopping) {
            readNow = true;  // nobody will read it ahead any more
        } else {
            m_changed.wait(lock, [&m] { return m.state == Member::State::done; });
        }
    }
    if (!readNow) {
        if (!fileExists(fileName)) {
            throw RuntimeError(kFileNotFound);
        }
        // A file replaced or changed since it was read ahead is read again, and so is
        // one whose frame went to the buffers and did not come back.
        readNow = identityOf(fileName) != m.identity || m.errorNumber == kReadAgain ||
                  (m.errorNumber == 0 && m.picture.isNull() && !inHeldFrame(index));
    }
    if (readNow) {
        lock.unlock();
        QImage picture = loadPicture(fileName);
        lock.lock();
        if (index == 0) {
            // The frames were laid out for another image 1.
            m_layout = 0;
        }
        if (m.fileName != fileName) {
            m.fileName = fileName;
        }
        m.picture = std::move(picture);
        m.shown = QImage();
        m.width = m.picture.width();
        m.height = m.picture.height();
        m.errorNumber = 0;
        m.frameLayout = 0;
    } else if (m.errorNumber != 0) {
        throw RuntimeError(m.errorNumber);
    }
    m.loaded = true;
}

FramedPicture SeriesReader::framed(int k) {
    const std::lock_guard lock(m_mutex);
    const Member* m = memberAt(k);
    FramedPicture framed;
    if (m == nullptr || !m_framesAsPictures || !m->loaded || m->errorNumber != 0 ||
        !m->picture.isNull() || !inHeldFrame(static_cast<std::size_t>(k) - 1)) {
        return framed;
    }
    framed.view = frameAsPicture(m_frames.frame(k), m_frames.frameWidth, m_frames.frameHeight,
                                 m->width, m->height);
    if (framed.view.bits != nullptr) {
        framed.hold = m_frames.pixels.hold();
    }
    return framed;
}

bool SeriesReader::inHeldFrame(std::size_t index) const {
    const Member& m = m_members[index];
    return m.frameLayout != 0 && m.frameLayout == m_layout && m_frames.pixels.data() != nullptr &&
           index < static_cast<std::size_t>(m_frames.capacity);
}

const SeriesReader::Member* SeriesReader::memberAt(int k) const {
    if (k < 1 || k > static_cast<int>(m_members.size())) {
        return nullptr;
    }
    return &m_members[static_cast<std::size_t>(k - 1)];
}

QImage SeriesReader::picture(int k) const {
    const std::lock_guard lock(m_mutex);
    const Member* m = memberAt(k);
    return m != nullptr ? m->picture : QImage();
}

QImage SeriesReader::shown(int k) const {
    const std::lock_guard lock(m_mutex);
    const Member* m = memberAt(k);
    return m != nullptr ? m->shown : QImage();
}

PictureView SeriesReader::view(int k) const {
    const std::lock_guard lock(m_mutex);
    const Member* m = memberAt(k);
    if (m == nullptr || !m->loaded) {
        return {};
    }
    if (!m->picture.isNull()) {
        return viewOf(m->picture);
    }
    PictureView sizeOnly;
    sizeOnly.width = m->width;
    sizeOnly.height = m->height;
    return sizeOnly;
}

SeriesFrames* SeriesReader::frames() {
    stop();
    const std::lock_guard lock(m_mutex);
    if (m_layout == 0 || m_frames.pixels.data() == nullptr) {
        return nullptr;
    }
    m_frames.filled.assign(static_cast<std::size_t>(m_frames.capacity), 0);
    for (std::size_t i = 0; i < m_listed && i < m_frames.filled.size(); ++i) {
        const Member& m = m_members[i];
        m_frames.filled[i] = m.loaded && m.frameLayout == m_layout ? 1 : 0;
    }
    m_lent = {m_frames.pixels.serial(), m_frames.frameWidth, m_frames.frameHeight,
              m_frames.capacity};
    return &m_frames;
}

bool SeriesReader::servesUnchanged(const SeriesPattern& pattern) const {
    if (pattern != m_pattern) {
        return false;
    }
    const std::lock_guard lock(m_mutex);
    for (std::size_t i = 0; i < m_listed; ++i) {
        const Member& m = m_members[i];
        if (m.state != Member::State::done || m.frameLayout != m_layout ||
            identityOf(m.fileName) != m.identity) {
            return false;
        }
    }
    return m_listed == m_members.size() || !fileExists(m_nextName);
}

void SeriesReader::takeBackFrames(SampleBuffer&& pixels) {
    SampleBuffer given = std::move(pixels);
    const std::lock_guard lock(m_mutex);
    const Lent lent = std::exchange(m_lent, Lent{});
    if (m_frames.pixels.data() != nullptr || lent.serial == 0 || given.serial() != lent.serial ||
        m_layout == 0 || lent.frameWidth < 1 || lent.frameHeight < 1) {
        return;
    }
    m_frames.frameWidth = lent.frameWidth;
    m_frames.frameHeight = lent.frameHeight;
    // The buffers keep only the frames of the images they took.
    m_frames.capacity =
        std::min(lent.capacity, static_cast<int>(given.size() / m_frames.frameBytes()));
    m_frames.pixels = std::move(given);
}

}  // namespace lumiquilt
