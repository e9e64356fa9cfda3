// GIF files read back by Qt's reader and by ImageMagick.
#include <gtest/gtest.h>
#include <QProcess>

#include "output/gif_encoder.h"
#include "series/picture_io.h"
#include "support/test_pictures.h"

namespace lumiquilt {
namespace {

using testing::TestFolder;

// The colour the fixed palette gives a pixel: each channel to the nearest of 0, 64,
// 128, 192 and 255, ties to the lower.
QRgb halftoneOf(QRgb pixel) {
    auto level = [](int v) { return v > 223 ? 255 : (v + 31) / 64 * 64; };
    return qRgb(level(qRed(pixel)), level(qGreen(pixel)), level(qBlue(pixel)));
}

// Raw RGB of a picture as ImageMagick decodes it, or empty when it can't.
QByteArray imageMagickRgb(const std::string& fileName) {
    QProcess convert;
    convert.start("/usr/bin/convert", {QString::fromStdString(fileName), "-depth", "8", "rgb:-"});
    if (!convert.waitForFinished(30000) || convert.exitCode() != 0) {
        return {};
    }
    return convert.readAllStandardOutput();
}

TEST(GifFiles, OtherDecodersReadTheExactMapping) {
    TestFolder dir;
    const QImage picture = testing::patternPicture(301, 37, 6);  // rows past 254 codes
    const std::string name = dir.path("p.gif");
    GIF gif;
    ASSERT_TRUE(gif.SaveGIF(mapToHalftone(viewOf(picture)), name));

    const QImage viaQt(QString::fromStdString(name));
    ASSERT_EQ(viaQt.size(), picture.size());
    const QByteArray viaMagick = imageMagickRgb(name);
    ASSERT_EQ(viaMagick.size(), 301 * 37 * 3) << "ImageMagick could not read the file";
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb expected = halftoneOf(picture.pixel(x, y));
            ASSERT_EQ(viaQt.pixel(x, y) & 0xFFFFFF, expected & 0xFFFFFF) << x << "," << y;
            const auto* m =
                reinterpret_cast<const uchar*>(viaMagick.constData()) + (y * 301 + x) * 3;
            ASSERT_EQ(qRgb(m[0], m[1], m[2]), expected) << x << "," << y;
        }
    }
}

}  // namespace
}  // namespace lumiquilt
