#include "series/picture_io.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageIOHandler>
#include <QImageReader>
#include <QImageWriter>
#include <QSaveFile>
#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <type_traits>

#include "core/files.h"
#include "core/runtime_error.h"
#include "core/text.h"
#include "display/picture_reduction.h"
#include "output/bmp_writer.h"
#include "output/gif_encoder.h"

namespace lumiquilt {

namespace {

bool isBufferFormat(QImage::Format format) {
    switch (format) {
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
        case QImage::Format_ARGB32_Premultiplied:
        case QImage::Format_RGB888:
        case QImage::Format_BGR888:
            return true;
        default:
            return false;
    }
}

}  // namespace

void configurePictureReading() {
    // Photographs of 50 MP and more decode to more than Qt's default limit.
    QImageReader::setAllocationLimit(2048);
}

namespace {

// The format a reader will decode into. A cut JPEG header leaves Qt's JPEG reader
// answering with memory it never set, no format at all: its bytes are checked as a
// number before they are taken as one.
QImage::Format readerFormat(const QImageReader& reader) {
    const QImage::Format told = reader.imageFormat();
    std::underlying_type_t<QImage::Format> number = 0;
    std::memcpy(&number, &told, sizeof number);
    const auto known = static_cast<long long>(number);
    return known >= 0 && known < QImage::NImageFormats ? static_cast<QImage::Format>(number)
                                                       : QImage::Format_Invalid;
}

bool isThirtyTwoBit(QImage::Format format) {
    return format == QImage::Format_RGB32 || format == QImage::Format_ARGB32 ||
           format == QImage::Format_ARGB32_Premultiplied;
}

// A blank picture in memory of the program's own, which a buffer owns: zero-filled
// and, when large, in big pages, so that its first filling costs a fault every 2 MiB
// rather than every 4 KiB. Throws RuntimeError 7 when there is no room.
QImage ownedPicture(int width, int height, QImage::Format format, std::size_t bytesPerLine) {
    auto samples = std::make_unique<SampleBuffer>();
    samples->allocateZeroed(bytesPerLine * static_cast<std::size_t>(height));
    uint8_t* bits = samples->data();
    return QImage(
        bits, width, height, static_cast<qsizetype>(bytesPerLine), format,
        [](void* owner) { delete static_cast<SampleBuffer*>(owner); }, samples.release());
}

// Whether every chunk of a PNG file lies inside the file. The PNG library takes
// memory for a chunk by its length field before it reads it, so a 300-byte file
// whose text chunk claims 2 GB would cost 2 GB and seconds before it is refused.
bool pngChunksWithinFile(const std::string& fileName) {
    QFile file(QString::fromStdString(fileName));
    if (!file.open(QIODevice::ReadOnly)) {
        return true;  // the decoder says what is wrong with it
    }
    const qint64 size = file.size();
    qint64 at = 8;  // past the signature
    while (at + 8 <= size) {
        uchar head[8];
        if (!file.seek(at) || file.read(reinterpret_cast<char*>(head), 8) != 8) {
            return true;
        }
        const quint32 length = (quint32{head[0]} << 24) | (quint32{head[1]} << 16) |
                               (quint32{head[2]} << 8) | quint32{head[3]};
        const qint64 next = at + 12 + static_cast<qint64>(length);
        if (next > size) {
            return false;
        }
        if (std::memcmp(head + 4, "IEND", 4) == 0) {
            return true;
        }
        at = next;
    }
    return true;
}

// Qt's decoders write into the picture they are given when it has the size and
// format they would make; otherwise they make their own. A decoder given memory
// that holds an older picture must write every row, as the JPEG decoder does even
// for a cut file: the BMP reader leaves the rows it never reached as it found them.
QImage decodePicture(const std::string& fileName, SampleBuffer* scratch) {
    if (!fileExists(fileName)) {
        throw RuntimeError(kFileNotFound);
    }
    QImageReader reader(QString::fromStdString(fileName));
    reader.setDecideFormatFromContent(true);
    // Before the size: reading the header reads every chunk ahead of the pixels.
    if (reader.format() == "png" && !pngChunksWithinFile(fileName)) {
        throw RuntimeError(kInvalidPicture);
    }
    QImage image;
    const QSize size = reader.size();
    const QImage::Format format = readerFormat(reader);
    const std::size_t rowBytes = 4u * static_cast<std::size_t>(std::max(size.width(), 0));
    const std::size_t bytes = rowBytes * static_cast<std::size_t>(std::max(size.height(), 0));
    const bool sizeTaken =
        size.width() > 0 && size.height() > 0 && size.width() <= 32767 && size.height() <= 32767;
    // A picture of a size the program takes, but more than memory allows, is refused
    // before the decoder takes anything; any other size is left to the decoder.
    const auto limit = static_cast<std::size_t>(QImageReader::allocationLimit()) << 20;
    const bool intoScratch =
        scratch != nullptr && isThirtyTwoBit(format) && reader.format() == "jpeg";
    const std::size_t fresh = intoScratch ? bytes - std::min(bytes, scratch->size()) : bytes;
    if (sizeTaken && ((limit != 0 && bytes > limit) || !SampleBuffer::wouldFit(fresh))) {
        throw RuntimeError(kOutOfMemory);
    }
    if (isThirtyTwoBit(format) && sizeTaken) {
        if (intoScratch) {
            if (scratch->size() < bytes) {
                scratch->allocateZeroed(bytes);
            }
            image = QImage(scratch->data(), size.width(), size.height(),
                           static_cast<qsizetype>(rowBytes), format);
        } else {
            image = ownedPicture(size.width(), size.height(), format, rowBytes);
        }
    } else if (QImageIOHandler::allocateImage(size, format, &image)) {
        // A decoder that meets the end of a short file (a BMP above all) stops and calls
        // the picture good, its missing rows left as the memory was found: black here.
        image.fill(0);
    }
    if (!reader.read(&image)) {
        image = QImage();
    }
    if (image.isNull()) {
        if (reader.error() == QImageReader::FileNotFoundError) {
            throw RuntimeError(kFileNotFound);
        }
        throw RuntimeError(kInvalidPicture);
    }
    if (image.width() > 32767 || image.height() > 32767) {
        throw RuntimeError(kInvalidPicture);
    }
    if (!isBufferFormat(image.format())) {
        image = image.convertToFormat(QImage::Format_RGB32);
        if (image.isNull()) {
            throw RuntimeError(kOutOfMemory);
        }
    }
    return image;
}

}  // namespace

QImage loadPicture(const std::string& fileName) {
    return decodePicture(fileName, nullptr);
}

QImage loadPictureInto(const std::string& fileName, SampleBuffer& scratch) {
    return decodePicture(fileName, &scratch);
}

PictureView viewOf(const QImage& image) {
    PictureView view;
    if (image.isNull()) {
        return view;
    }
    view.width = image.width();
    view.height = image.height();
    view.bits = image.constBits();
    view.stride = image.bytesPerLine();
    switch (image.format()) {
        case QImage::Format_RGB888:
            view.format = PixelFormat::rgb24;
            break;
        case QImage::Format_BGR888:
            view.format = PixelFormat::bgr24;
            break;
        default:
            // 32-bit formats keep blue, green, red, alpha in memory on little-endian.
            static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN,
                          "32-bit pixel layout assumes little-endian");
            view.format = PixelFormat::bgrx32;
            break;
    }
    return view;
}

QImage pictureFromFrame(const uint8_t* frame, int frameWidth, int frameHeight, int width,
                        int height) {
    // Rows of whole 32-bit words, as Qt lays out a picture of its own.
    const std::size_t rowBytes =
        ((static_cast<std::size_t>(std::max(width, 0)) * 24 + 31) / 32) * 4;
    QImage image = width > 0 && height > 0
                       ? ownedPicture(width, height, QImage::Format_BGR888, rowBytes)
                       : QImage();
    if (image.isNull()) {
        throw RuntimeError(kOutOfMemory);
    }
    writeFrameToPicture(frame, frameWidth, frameHeight, image.bits(), image.bytesPerLine(), width,
                        height);
    return image;
}

namespace {

// Fills `image` with the part of a frame seen as a picture that starts at `from`.
void fillOpaque(const PictureView& framed, QPoint from, QImage& image) {
    for (int y = 0; y < image.height(); ++y) {
        const uint8_t* src = framed.bits +
                             static_cast<std::ptrdiff_t>(from.y() + y) * framed.stride +
                             3 * static_cast<std::ptrdiff_t>(from.x());
        auto* dst = reinterpret_cast<uint32_t*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x, src += 3) {
            dst[x] = 0xFF000000u | (uint32_t{src[2]} << 16) | (uint32_t{src[1]} << 8) | src[0];
        }
    }
}

bool isFrameView(const PictureView& framed) {
    return framed.bits != nullptr && framed.width >= 1 && framed.height >= 1 &&
           framed.format == PixelFormat::bgr24;
}

}  // namespace

QImage opaquePictureOf(const PictureView& framed) {
    if (!isFrameView(framed)) {
        return QImage();
    }
    QImage image = ownedPicture(framed.width, framed.height, QImage::Format_RGB32,
                                4u * static_cast<std::size_t>(framed.width));
    fillOpaque(framed, QPoint(0, 0), image);
    return image;
}

QImage bgrPictureOf(const PictureView& framed) {
    if (!isFrameView(framed)) {
        return QImage();
    }
    const std::size_t rowBytes = ((static_cast<std::size_t>(framed.width) * 24 + 31) / 32) * 4;
    QImage image = ownedPicture(framed.width, framed.height, QImage::Format_BGR888, rowBytes);
    for (int y = 0; y < framed.height; ++y) {
        std::memcpy(image.scanLine(y), framed.bits + static_cast<std::ptrdiff_t>(y) * framed.stride,
                    3u * static_cast<std::size_t>(framed.width));
    }
    return image;
}

QImage opaquePartOf(const PictureView& framed, QRect area) {
    area &= QRect(0, 0, framed.width, framed.height);
    if (!isFrameView(framed) || area.isEmpty()) {
        return QImage();
    }
    QImage image(area.size(), QImage::Format_RGB32);
    if (!image.isNull()) {
        fillOpaque(framed, area.topLeft(), image);
    }
    return image;
}

namespace {

QImage qtSmoothScaled(const QImage& picture, QSize size) {
    return picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

// Bilinear filtering: below half the size it would skip pixels, down to half it reads
// every one.
QImage bilinearScaled(const PictureView& picture, QSize size) {
    QImage scaled(size, QImage::Format_RGB32);
    if (scaled.isNull()) {
        return scaled;  // no memory: no picture, as Qt's scaling gives
    }
    scalePicture(picture, size.width(), size.height(), reinterpret_cast<uint32_t*>(scaled.bits()),
                 scaled.bytesPerLine());
    return scaled;
}

// The factor of scaledForDisplay's whole squares, 1 when it filters the picture as it
// is, 0 when it leaves the whole work to Qt.
int displayReduction(const QImage& picture, QSize size) {
    const QImage::Format format = picture.format();
    const bool known = format == QImage::Format_RGB888 || format == QImage::Format_BGR888 ||
                       format == QImage::Format_RGB32 || format == QImage::Format_ARGB32;
    if (!known || size.isEmpty() || size.width() > picture.width() ||
        size.height() > picture.height()) {
        return 0;
    }
    return std::max(1, std::min(picture.width() / size.width(), picture.height() / size.height()));
}

QImage reducedFor(const QImage& picture, int factor) {
    return QImage(reducedSide(picture.width(), factor), reducedSide(picture.height(), factor),
                  QImage::Format_RGB32);
}

}  // namespace

namespace {

// Qt's smooth scaling weighs every source pixel into every output pixel it touches,
// and spreads that over Qt's own threads. A mean over whole squares, then bilinear
// filtering over the last step of less than half, shows the same picture (a level or
// two apart) for less work, all of it on the calling thread.
QImage reducedThenFiltered(const PictureView& picture, int factor, QSize size) {
    if (factor == 1) {
        return bilinearScaled(picture, size);
    }
    QImage reduced(reducedSide(picture.width, factor), reducedSide(picture.height, factor),
                   QImage::Format_RGB32);
    if (reduced.isNull()) {
        return reduced;
    }
    reducePicture(picture, factor, reinterpret_cast<uint32_t*>(reduced.bits()),
                  reduced.bytesPerLine());
    return bilinearScaled(viewOf(reduced), size);
}

}  // namespace

QImage scaledForDisplay(const QImage& picture, QSize size) {
    const int factor = displayReduction(picture, size);
    return factor == 0 ? qtSmoothScaled(picture, size)
                       : reducedThenFiltered(viewOf(picture), factor, size);
}

QImage scaledFrameForDisplay(const PictureView& framed, QSize size) {
    if (!isFrameView(framed) || size.isEmpty()) {
        return QImage();
    }
    if (size.width() > framed.width || size.height() > framed.height) {
        return qtSmoothScaled(opaquePictureOf(framed), size);  // enlarged: rare
    }
    const int factor =
        std::max(1, std::min(framed.width / size.width(), framed.height / size.height()));
    return reducedThenFiltered(framed, factor, size);
}

QImage readIntoFrameAndScale(const QImage& picture, uint8_t* frame, int frameWidth, int frameHeight,
                             QSize size) {
    const PictureView view = viewOf(picture);
    const bool wanted = !picture.isNull() && !size.isEmpty() && size != picture.size();
    const int factor = wanted ? displayReduction(picture, size) : 0;
    QImage reduced = factor >= 2 ? reducedFor(picture, factor) : QImage();
    if (reduced.isNull()) {
        readPictureIntoFrame(view, frame, frameWidth, frameHeight);
        return wanted ? scaledForDisplay(picture, size) : QImage();
    }
    // Bands of whole squares, a few dozen kilobytes of rows each.
    const int band = factor * std::max(1, 16 / factor);
    bool reducing = true;
    for (int first = 0; first < view.height; first += band) {
        const int end = std::min(first + band, view.height);
        readPictureRowsIntoFrame(view, first, end, frame, frameWidth, frameHeight);
        if (!reducing) {
            continue;
        }
        const PictureView rows{view.width, end - first,
                               view.bits + static_cast<std::ptrdiff_t>(first) * view.stride,
                               view.stride, view.format};
        try {
            reducePicture(rows, factor,
                          reinterpret_cast<uint32_t*>(reduced.scanLine(first / factor)),
                          reduced.bytesPerLine());
        } catch (const std::bad_alloc&) {
            reducing = false;  // the frame is still filled; the window scales for itself
        }
    }
    return reducing ? bilinearScaled(viewOf(reduced), size) : QImage();
}

QImage paintMontage(const PixelBuffers& buffers, int width, int height) {
    return pictureFromFrame(buffers.montageSlot(PixelBuffers::kFirstMontageSlot),
                            buffers.montageMaxX + 1, buffers.montageMaxY + 1, width, height);
}

QImage paintPreview(const PixelBuffers& buffers, int width, int height) {
    return pictureFromFrame(buffers.previewPixels.data(), buffers.previewMaxX + 1,
                            buffers.previewMaxY + 1, width, height);
}

namespace {

// Qt's writer of each format, and the quality of JPEG files.
QByteArray formatOf(const std::string& fileName, const char* forced) {
    if (forced != nullptr) {
        return forced;
    }
    const std::string suffix =
        toLowerUtf8(QFileInfo(QString::fromStdString(fileName)).suffix().toStdString());
    if (suffix == "bmp") {
        return "BMP";
    }
    if (suffix == "png") {
        return "PNG";
    }
    if (suffix == "jpg" || suffix == "jpeg") {
        return "JPEG";
    }
    throw RuntimeError(kInvalidProcedureCall, "Unknown picture format ." + suffix);
}

constexpr int kJpegQuality = 90;

// How writing into the temporary file went.
enum class Written { done, deviceFailed, failed };

// Writes a file through a temporary file beside it that replaces the target only
// when the whole file is written.
void writeThrough(const std::string& fileName, const std::function<Written(QSaveFile&)>& write) {
    const QString name = QString::fromStdString(fileName);
    const QFileInfo existing(name);
    if (existing.exists() &&
        (!existing.isWritable() ||
         !(existing.permissions() & (QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther)))) {
        // Renaming over a read-only file would succeed, even for root.
        throw RuntimeError(kPermissionDenied);
    }
    QSaveFile file(name);
    if (!file.open(QIODevice::WriteOnly)) {
        const QFileInfo info(name);
        if (!info.absoluteDir().exists()) {
            throw RuntimeError(kPathNotFound);
        }
        throw RuntimeError(kPermissionDenied);
    }
    Written written = write(file);
    // A buffered write that fails on its way to the disk is seen only here: the file's
    // commit would take it for whole.
    if (written == Written::done && !file.flush()) {
        written = Written::deviceFailed;
    }
    if (written != Written::done) {
        // A writer that fails on a file it could open ran out of room.
        const bool deviceFailed =
            written == Written::deviceFailed || file.error() != QFileDevice::NoError;
        file.cancelWriting();
        throw RuntimeError(deviceFailed ? kDiskFull : kPathFileAccessError);
    }
    if (!file.commit()) {
        throw RuntimeError(kDiskFull);
    }
}

Written writeBmpFile(QSaveFile& file, const PictureView& picture, int dotsPerMeterX,
                     int dotsPerMeterY) {
    const bool done = writeBmp(
        picture, dotsPerMeterX, dotsPerMeterY, [&file](const uint8_t* bytes, std::size_t count) {
            return file.write(reinterpret_cast<const char*>(bytes), static_cast<qint64>(count)) ==
                   static_cast<qint64>(count);
        });
    return done ? Written::done : Written::deviceFailed;
}

Written writeWithQt(QSaveFile& file, const QImage& image, const QByteArray& format) {
    QImageWriter writer(&file, format);
    if (format == "JPEG") {
        writer.setQuality(kJpegQuality);
    }
    if (writer.write(image)) {
        return Written::done;
    }
    return writer.error() == QImageWriter::DeviceError ? Written::deviceFailed : Written::failed;
}

// Pictures whose BMP file the program writes itself: those without alpha or palette,
// which Qt's writer puts down as 24-bit rows.
bool writesBmpItself(const QImage& image) {
    return image.format() == QImage::Format_RGB32 || image.format() == QImage::Format_RGB888 ||
           image.format() == QImage::Format_BGR888;
}

}  // namespace

void savePicture(const QImage& image, const std::string& fileName, const char* forced) {
    const QByteArray format = formatOf(fileName, forced);
    writeThrough(fileName, [&](QSaveFile& file) {
        if (format == "BMP" && writesBmpItself(image)) {
            return writeBmpFile(file, viewOf(image), image.dotsPerMeterX(), image.dotsPerMeterY());
        }
        return writeWithQt(file, image, format);
    });
}

void saveMontage(const PixelBuffers& buffers, int width, int height, const std::string& fileName) {
    const uint8_t* frame = buffers.montageSlot(PixelBuffers::kFirstMontageSlot);
    const int frameWidth = buffers.montageMaxX + 1;
    const int frameHeight = buffers.montageMaxY + 1;
    if (width < 1 || height < 1 || width > frameWidth || height > frameHeight) {
        throw RuntimeError(kInvalidProcedureCall);
    }
    const PictureView view = frameAsPicture(frame, frameWidth, frameHeight, width, height);
    if (toLowerUtf8(fileName).ends_with(".gif")) {
        GIF gif;
        gif.SaveGIF(mapToHalftone(view), fileName);
        return;
    }
    const QByteArray format = formatOf(fileName, nullptr);
    if (format == "BMP") {
        // The frame is a bottom-up picture already: it goes out as it stands, with the
        // resolution a picture made now would have.
        const QImage probe(1, 1, QImage::Format_RGB32);
        writeThrough(fileName, [&](QSaveFile& file) {
            return writeBmpFile(file, view, probe.dotsPerMeterX(), probe.dotsPerMeterY());
        });
        return;
    }
    // JPEG and PNG writers take red, green, blue rows as they stand.
    QImage image(width, height, QImage::Format_RGB888);
    if (image.isNull()) {
        throw RuntimeError(kOutOfMemory);
    }
    writeFrameToRgbPicture(frame, frameWidth, frameHeight, image.bits(), image.bytesPerLine(),
                           width, height);
    writeThrough(fileName, [&](QSaveFile& file) { return writeWithQt(file, image, format); });
}

}  // namespace lumiquilt
