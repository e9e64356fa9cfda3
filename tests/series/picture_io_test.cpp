#include "series/picture_io.h"

#include <sys/resource.h>

#include <gtest/gtest.h>

#include <QImageWriter>
#include <filesystem>
#include <string>
#include <vector>

#include "core/runtime_error.h"
#include "engine/montage_run.h"
#include "output/gif_encoder.h"
#include "support/series_error_of.h"
#include "support/test_pictures.h"

namespace lumiquilt {
namespace {

using testing::errorOf;
using testing::TestFolder;

int loadError(const std::string& fileName) {
    return errorOf([&] { loadPicture(fileName); });
}

// BMP and PNG files come back pixel for pixel through lumiquilt-cli's one-image
// montages, JPEG files through its sample montages.
TEST(LoadPicture, GifPaletteIsWidenedToThirtyTwoBits) {
    TestFolder dir;
    // A one-pixel GIF whose only colour is red.
    const unsigned char gif[] = {0x47, 0x49, 0x46, 0x38, 0x39, 0x61, 0x01, 0x00, 0x01,
                                 0x00, 0x80, 0x00, 0x00, 0xFF, 0x00, 0x00, 0x00, 0x00,
                                 0x00, 0x2C, 0x00, 0x00, 0x00, 0x00, 0x01, 0x00, 0x01,
                                 0x00, 0x00, 0x02, 0x02, 0x44, 0x01, 0x00, 0x3B};
    testing::writeBytes(dir.path("red1.gif"),
                        std::string(reinterpret_cast<const char*>(gif), sizeof gif));
    const QImage red = loadPicture(dir.path("red1.gif"));
    ASSERT_EQ(red.size(), QSize(1, 1));
    EXPECT_EQ(viewOf(red).format, PixelFormat::bgrx32);
    EXPECT_EQ(QColor(red.pixel(0, 0)), QColor(255, 0, 0));
}

// What is no picture is the hostile series' and the fuzz corpus' work; a name that
// names no file is "not found", whatever stands in its place.
TEST(LoadPicture, WhatIsNoFileIsNotFound) {
    TestFolder dir;
    std::filesystem::create_directories(dir.path("folder1.jpg"));
    for (const std::string& name :
         std::vector<std::string>{"missing1.jpg", "folder1.jpg", std::string(300, 'n') + "1.jpg"}) {
        EXPECT_EQ(loadError(dir.path(name)), 53) << name;
    }
}

// A chunk whose length runs past the end of the file is refused before the PNG
// library takes memory for it: each of these would have cost 2 GB, whether the
// chunk stands among the header's chunks or after the pixels.
TEST(LoadPicture, PngChunkLongerThanItsFileTakesNoMemory) {
    for (const char* name :
         {"png_text_chunk_claims_2GB.png", "png_text_chunk_before_the_pixels_claims_2GB.png"}) {
        rusage before{};
        ::getrusage(RUSAGE_SELF, &before);
        EXPECT_EQ(loadError(std::string(LUMIQUILT_TEST_DATA "/hostile/") + name), 481) << name;
        rusage after{};
        ::getrusage(RUSAGE_SELF, &after);
        EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 256 * 1024)
            << name << ": KB more at the peak";
    }
}

TEST(LoadPicture, RowsAShortBmpLacksAreBlackNotLeftovers) {
    TestFolder dir;
    const QImage picture = testing::patternPicture(12, 8, 5);
    testing::savePictureFile(picture, dir.path("full1.bmp"));
    const std::string bytes = testing::readBytes(dir.path("full1.bmp"));
    // 24-bit rows of 36 bytes, bottom row first: keep the bottom three.
    ASSERT_EQ(bytes.size(), 54u + 8 * 36);
    testing::writeBytes(dir.path("short1.bmp"), bytes.substr(0, 54 + 3 * 36));
    for (int attempt = 0; attempt < 3; ++attempt) {
        // Leave freed memory of the picture's size full of non-zero bytes, where a
        // decoder's fresh picture is likely to land.
        std::vector<char> litter(12 * 8 * 4 + attempt, '\x5a');
        litter = {};
        const QImage loaded = loadPicture(dir.path("short1.bmp"));
        ASSERT_EQ(loaded.size(), QSize(12, 8));
        for (int y = 0; y < 8; ++y) {
            for (int x = 0; x < 12; ++x) {
                const QRgb expected = y >= 5 ? picture.pixel(x, y) : qRgb(0, 0, 0);
                ASSERT_EQ(loaded.pixel(x, y) & 0xFFFFFF, expected & 0xFFFFFF)
                    << x << "," << y << " attempt " << attempt;
            }
        }
    }
}

// What Qt's own writer makes of a picture, with the quality the program writes JPEG at.
std::string qtWrites(const QImage& picture, const TestFolder& dir, const char* format) {
    const std::string name = dir.path(std::string("qt.") + format);
    QImageWriter writer(QString::fromStdString(name), format);
    if (std::string(format) == "JPEG") {
        writer.setQuality(90);
    }
    EXPECT_TRUE(writer.write(picture)) << format;
    return testing::readBytes(name);
}

TEST(SavePicture, BmpFilesAreByteForByteQtsOwn) {
    TestFolder dir;
    const QImage::Format formats[] = {QImage::Format_RGB32, QImage::Format_RGB888,
                                      QImage::Format_BGR888, QImage::Format_ARGB32,
                                      QImage::Format_Indexed8};
    for (const QImage::Format format : formats) {
        for (int width = 1; width <= 9; ++width) {
            QImage picture = testing::patternPicture(width, 3 + width % 4, width)
                                 .convertToFormat(format, Qt::ThresholdDither);
            if (width % 2 == 0) {
                picture.setDotsPerMeterX(1234);
                picture.setDotsPerMeterY(4321);
            }
            savePicture(picture, dir.path("ours.bmp"));
            EXPECT_EQ(testing::readBytes(dir.path("ours.bmp")), qtWrites(picture, dir, "BMP"))
                << "format " << format << " width " << width;
        }
    }
}

// A window shows a montage straight from its slot, and copies it out only when a
// command asks: both must be what the painted picture gives.
TEST(MontageFrame, CopiedAndShownAsThePaintedPicture) {
    struct Row {
        QSize montage;
        QSize shown;
    };
    const Row rows[] = {
        {{1, 1}, {1, 1}},     {{7, 9}, {3, 4}},   {{41, 23}, {40, 22}}, {{41, 23}, {20, 11}},
        {{64, 48}, {21, 16}}, {{64, 48}, {5, 3}}, {{64, 48}, {80, 60}}, {{33, 2}, {10, 1}},
    };
    for (const Row& row : rows) {
        PixelBuffers b;
        b.sizeMontage(row.montage.width(), row.montage.height());
        const int frameWidth = b.montageMaxX + 1;
        const int frameHeight = b.montageMaxY + 1;
        const QImage whole = testing::patternPicture(frameWidth, frameHeight, 5)
                                 .convertToFormat(QImage::Format_BGR888);
        readPictureIntoFrame(viewOf(whole), b.montageSlot(100), frameWidth, frameHeight);
        const PictureView framed = frameAsPicture(b.montageSlot(100), frameWidth, frameHeight,
                                                  row.montage.width(), row.montage.height());
        const QImage painted = paintMontage(b, row.montage.width(), row.montage.height());
        const std::string what =
            std::to_string(row.montage.width()) + " to " + std::to_string(row.shown.width());

        const QImage copy = bgrPictureOf(framed);
        EXPECT_EQ(copy.format(), painted.format()) << what;
        EXPECT_EQ(copy.bytesPerLine(), painted.bytesPerLine()) << what;
        EXPECT_EQ(copy, painted) << what;
        EXPECT_EQ(scaledFrameForDisplay(framed, row.shown).convertToFormat(QImage::Format_RGB32),
                  scaledForDisplay(painted, row.shown).convertToFormat(QImage::Format_RGB32))
            << what;
    }
    EXPECT_TRUE(scaledFrameForDisplay(PictureView{}, QSize(3, 3)).isNull());
}

TEST(SaveMontage, SameBytesAsSavingThePaintedPicture) {
    TestFolder dir;
    const QSize sizes[] = {{1, 1}, {2, 3}, {5, 4}, {8, 5}, {7, 9}, {41, 23}, {64, 48}};
    for (const QSize size : sizes) {
        PixelBuffers b;
        b.sizeMontage(size.width(), size.height());
        // Padding columns and rows hold samples too, as a montage may leave them.
        const int frameWidth = b.montageMaxX + 1;
        const int frameHeight = b.montageMaxY + 1;
        const QImage whole = testing::patternPicture(frameWidth, frameHeight, size.width())
                                 .convertToFormat(QImage::Format_BGR888);
        readPictureIntoFrame(viewOf(whole), b.montageSlot(100), frameWidth, frameHeight);
        const QImage painted = paintMontage(b, size.width(), size.height());
        const std::string what = std::to_string(size.width()) + "x" + std::to_string(size.height());

        GIF gif;
        gif.SaveGIF(mapToHalftone(viewOf(painted)), dir.path("painted.gif"));
        const std::pair<const char*, std::string> rows[] = {
            {"m.bmp", qtWrites(painted, dir, "BMP")},
            {"m.png", qtWrites(painted, dir, "PNG")},
            {"m.jpg", qtWrites(painted, dir, "JPEG")},
            {"m.JPEG", qtWrites(painted, dir, "JPEG")},
            {"m.gif", testing::readBytes(dir.path("painted.gif"))}};
        for (const auto& [name, bytes] : rows) {
            saveMontage(b, size.width(), size.height(), dir.path(name));
            EXPECT_EQ(testing::readBytes(dir.path(name)), bytes) << name << " " << what;
        }
    }
    PixelBuffers b;
    b.sizeMontage(4, 4);
    EXPECT_THROW(saveMontage(b, 4, 4, dir.path("m.tif")), RuntimeError);
}

// A window's reduced picture: the exact size asked for, and the picture Qt's own
// smooth scaling gives within a few levels, for every pixel layout a window shows.
TEST(ScaledForDisplay, ExactSizeAndCloseToSmoothScaling) {
    const QImage photo(LUMIQUILT_SAMPLES "/coffee3.jpg");
    ASSERT_FALSE(photo.isNull());
    for (QImage::Format format : {QImage::Format_BGR888, QImage::Format_RGB888,
                                  QImage::Format_RGB32, QImage::Format_ARGB32}) {
        const QImage picture = photo.convertToFormat(format);
        for (const QSize size : {QSize(97, 61), QSize(141, 99), QSize(299, 199), QSize(500, 380)}) {
            const QImage shown =
                scaledForDisplay(picture, size).convertToFormat(QImage::Format_RGB32);
            const QImage qt = picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                                  .convertToFormat(QImage::Format_RGB32);
            ASSERT_EQ(shown.size(), size);
            double difference = 0;
            for (int y = 0; y < size.height(); ++y) {
                for (int x = 0; x < size.width(); ++x) {
                    const QRgb a = shown.pixel(x, y);
                    const QRgb b = qt.pixel(x, y);
                    difference += std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) +
                                  std::abs(qBlue(a) - qBlue(b));
                }
            }
            EXPECT_LT(difference / (3.0 * size.width() * size.height()), 4.0)
                << format << " " << size.width();
        }
    }
}

// Packing while reducing leaves the very frame and the very window picture that the
// two steps one after the other give: pictures cut by their frame or padded in it,
// squares of every size, none at all.
TEST(ReadIntoFrameAndScale, TheSameAsPackingThenScaling) {
    struct Row {
        QSize picture;
        QSize frame;
        QSize shown;
    };
    const Row rows[] = {
        {{64, 40}, {68, 44}, {30, 19}},  {{64, 40}, {68, 44}, {32, 20}},
        {{64, 40}, {68, 44}, {50, 33}},  {{65, 41}, {68, 44}, {21, 13}},
        {{64, 40}, {52, 30}, {31, 19}},  {{90, 70}, {68, 44}, {9, 7}},
        {{64, 40}, {68, 44}, {}},        {{64, 40}, {68, 44}, {64, 40}},
        {{200, 35}, {204, 36}, {11, 2}},
    };
    for (QImage::Format format : {QImage::Format_RGB32, QImage::Format_ARGB32,
                                  QImage::Format_RGB888, QImage::Format_BGR888}) {
        for (const Row& row : rows) {
            const QImage picture =
                testing::patternPicture(row.picture.width(), row.picture.height(), 7)
                    .convertToFormat(format);
            const std::size_t bytes = 3u * row.frame.width() * row.frame.height();
            std::vector<uint8_t> apart(bytes, 0x3C);
            std::vector<uint8_t> together(bytes, 0x3C);
            readPictureIntoFrame(viewOf(picture), apart.data(), row.frame.width(),
                                 row.frame.height());
            const bool wanted = !row.shown.isEmpty() && row.shown != row.picture;
            const QImage expected = wanted ? scaledForDisplay(picture, row.shown) : QImage();
            const QImage shown = readIntoFrameAndScale(picture, together.data(), row.frame.width(),
                                                       row.frame.height(), row.shown);
            const std::string what =
                std::to_string(format) + " " + std::to_string(row.picture.width()) + " in " +
                std::to_string(row.frame.width()) + " to " + std::to_string(row.shown.width());
            EXPECT_EQ(together, apart) << what;
            EXPECT_EQ(shown, expected) << what;
        }
    }
}

}  // namespace
}  // namespace lumiquilt
