#pragma once

#include <QImage>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "series/pixel_buffers.h"
#include "series/series_name.h"

namespace lumiquilt {

/// Reads a series ahead of the loading loop, on threads of its own: each member that
/// exists when reading starts is decoded and put straight into its frame of a series
/// buffer laid out for image 1, on the thread that decoded it, while the other
/// threads decode the next members. The loading loop then takes the members in order
/// through load(), which behaves as loading the file at that moment would.
class SeriesReader {
  public:
    /// What reading a member leaves.
    enum class ReadInto {
        frames,  ///< its frame alone: each thread decodes into one scratch
        /// its frame, which framed() shows as its picture where it holds it whole
        /// (opaque, of image 1's size); elsewhere its picture for picture()
        framesAndViews,
        pictures,  ///< its picture alone: no series buffer is laid out
    };

    /// The size a window shows a picture of the given size at; the picture's own size
    /// (or an empty one) when it is shown whole. Asked on the reading threads.
    using ShownSize = std::function<QSize(QSize picture)>;

    /// Starts reading on `threads` threads. A member that stands in its frame keeps
    /// only its size unless its picture is read as well. With shownSize, a kept
    /// picture is also scaled for its window on the thread that decoded it.
    SeriesReader(const SeriesPattern& pattern, ReadInto into, int threads,
                 ShownSize shownSize = nullptr);
    /// Stops reading ahead and waits for the threads.
    ~SeriesReader();
    SeriesReader(const SeriesReader&) = delete;
    SeriesReader& operator=(const SeriesReader&) = delete;

    /// Member k for the loading loop. Waits for it when it is being read; reads the
    /// file now when it was not read ahead, has changed since, or must be kept as a
    /// picture after all. Throws RuntimeError as loadPicture does: 53 when the file
    /// is missing, 481 when it is no picture.
    void load(int k, const std::string& fileName);

    /// Member k's picture as loaded; null when it stands only in its frame.
    QImage picture(int k) const;
    /// Member k's frame seen as its picture, while the reader has the frames, when
    /// the frame stands in for its picture; else a null view.
    FramedPicture framed(int k);
    /// Member k's picture at its shown size, when a reading thread made it; else null.
    QImage shown(int k) const;
    /// Member k's size, with its samples when the picture is kept.
    PictureView view(int k) const;

    /// Stops reading ahead and hands over the frames of the members loaded, for the
    /// buffers to take over; null when there are none. Members without a frame kept
    /// their pictures.
    SeriesFrames* frames();
    /// Takes back the buffer that frames() handed over, when it is that very block
    /// (nothing the buffers did since has taken memory anew): the members that stand
    /// in it need not be read again. Any other block is let go.
    void takeBackFrames(SampleBuffer&& pixels);
    /// True when this is the series it reads, every file read ahead stands as it was
    /// read and no member was added: loading the series again reads nothing. A member
    /// read on loading instead (its file changed meanwhile) counts as changed.
    bool servesUnchanged(const SeriesPattern& pattern) const;

  private:
    struct Member;

    void loadMember(int k, const std::string& fileName);
    /// Member k, or null when there is no such member; the caller holds the mutex.
    const Member* memberAt(int k) const;
    /// Member `index` (from 0) stands in a frame the reader still has. Under m_mutex.
    bool inHeldFrame(std::size_t index) const;
    void work();
    void decodeAhead(std::size_t index, SampleBuffer& scratch);
    void layOut(const QImage& first);
    void stop();

    const SeriesPattern m_pattern;
    const bool m_keepPictures;
    const bool m_framesAsPictures;
    const ShownSize m_shownSize;
    const bool m_intoFrames;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Member> m_members;  ///< one per image number; never resized
    std::size_t m_listed = 0;       ///< members that existed when reading started
    std::string m_nextName;         ///< the first name after them, when there is one
    std::size_t m_next = 0;
    bool m_stopping = false;
    /// The frames, laid out once image 1 is decoded; `layout` counts the layouts so
    /// that a frame filled under a layout given up is not taken.
    SeriesFrames m_frames;
    /// What frames() last handed over, to know it again.
    struct Lent {
        std::uint64_t serial = 0;
        int frameWidth = 0;
        int frameHeight = 0;
        int capacity = 0;
    } m_lent;
    int m_layout = 0;
    bool m_layoutDecided = false;
    std::vector<std::thread> m_threads;
};

}  // namespace lumiquilt
