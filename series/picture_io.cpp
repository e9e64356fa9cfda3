#include "series/picture_io.h"

#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QSaveFile>
#include <algorithm>

#include "core/files.h"
#include "core/runtime_error.h"
#include "core/text.h"

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

bool isThirtyTwoBit(QImage::Format format) {
    return format == QImage::Format_RGB32 || format == QImage::Format_ARGB32 ||
           format == QImage::Format_ARGB32_Premultiplied;
}

// Qt's decoders write into the picture they are given when it has the size and
// format they would make; otherwise they make their own. Only the JPEG decoder is
// trusted with memory that holds an older picture: it writes every row even of a cut
// file, where the BMP reader leaves the rows it never reached as it found them.
QImage decodePicture(const std::string& fileName, SampleBuffer* scratch) {
    if (!fileExists(fileName)) {
        throw RuntimeError(kFileNotFound);
    }
    QImageReader reader(QString::fromStdString(fileName));
    reader.setDecideFormatFromContent(true);
    QImage image;
    if (scratch != nullptr) {
        const QSize size = reader.size();
        const QImage::Format format = reader.imageFormat();
        const std::size_t rowBytes = 4u * static_cast<std::size_t>(std::max(size.width(), 0));
        const std::size_t bytes = rowBytes * static_cast<std::size_t>(std::max(size.height(), 0));
        // A picture the decoder would refuse for its size is left to refuse it.
        const auto limit = static_cast<std::size_t>(QImageReader::allocationLimit()) << 20;
        if (reader.format() == "jpeg" && isThirtyTwoBit(format) && bytes > 0 &&
            size.width() <= 32767 && size.height() <= 32767 && (limit == 0 || bytes <= limit)) {
            try {
                if (scratch->size() < bytes) {
                    scratch->allocateZeroed(bytes);
                }
                image = QImage(scratch->data(), size.width(), size.height(),
                               static_cast<qsizetype>(rowBytes), format);
            } catch (const RuntimeError&) {
                // Without room for a scratch the decoder finds its own memory, or fails.
            }
        }
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
    QImage image(width, height, QImage::Format_BGR888);
    if (image.isNull()) {
        throw RuntimeError(kOutOfMemory);
    }
    writeFrameToPicture(frame, frameWidth, frameHeight, image.bits(), image.bytesPerLine(), width,
                        height);
    return image;
}

QImage paintMontage(const PixelBuffers& buffers, int width, int height) {
    return pictureFromFrame(buffers.montageSlot(PixelBuffers::kFirstMontageSlot),
                            buffers.montageMaxX + 1, buffers.montageMaxY + 1, width, height);
}

QImage paintPreview(const PixelBuffers& buffers, int width, int height) {
    return pictureFromFrame(buffers.previewPixels.data(), buffers.previewMaxX + 1,
                            buffers.previewMaxY + 1, width, height);
}

void savePicture(const QImage& image, const std::string& fileName, const char* forced) {
    constexpr int kJpegQuality = 90;
    const QString name = QString::fromStdString(fileName);
    const std::string suffix = toLowerUtf8(QFileInfo(name).suffix().toStdString());
    QByteArray format;
    if (forced != nullptr) {
        format = forced;
    } else if (suffix == "bmp") {
        format = "BMP";
    } else if (suffix == "png") {
        format = "PNG";
    } else if (suffix == "jpg" || suffix == "jpeg") {
        format = "JPEG";
    } else {
        throw RuntimeError(kInvalidProcedureCall, "Unknown picture format ." + suffix);
    }
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
    QImageWriter writer(&file, format);
    if (format == "JPEG") {
        writer.setQuality(kJpegQuality);
    }
    if (!writer.write(image)) {
        // A writer that fails on a file it could open ran out of room.
        const bool deviceFailed =
            writer.error() == QImageWriter::DeviceError || file.error() != QFileDevice::NoError;
        file.cancelWriting();
        throw RuntimeError(deviceFailed ? kDiskFull : kPathFileAccessError);
    }
    if (!file.commit()) {
        throw RuntimeError(kDiskFull);
    }
}

}  // namespace lumiquilt
