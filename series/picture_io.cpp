#include "series/picture_io.h"

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>

#include "core/files.h"
#include "core/runtime_error.h"
#include "core/text.h"
#include "persistence/profile_file.h"

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

QImage loadPicture(const std::string& fileName) {
    if (!fileExists(fileName)) {
        throw RuntimeError(kFileNotFound);
    }
    QImageReader reader(QString::fromStdString(fileName));
    reader.setDecideFormatFromContent(true);
    QImage image = reader.read();
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
    // Encoded in memory and written by the checked writer: a file device can take a
    // short write on a full disk for success and commit a cut picture.
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    if (format == "JPEG") {
        writer.setQuality(kJpegQuality);
    }
    if (!writer.write(image)) {
        throw RuntimeError(writer.error() == QImageWriter::DeviceError ? kOutOfMemory
                                                                       : kPathFileAccessError);
    }
    writeFileAtomically(fileName, std::string_view(bytes.constData(), bytes.size()));
}

}  // namespace lumiquilt
