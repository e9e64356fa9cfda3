// Makes the bundled sample series: one photograph re-exposed as a camera's
// bracketing would, from -2 to +2 EV in whole stops. Each exposure works in
// linear light: sRGB to linear, times 2^EV, clipped, back to sRGB.
//
//   make_samples PHOTO OUTPUT_FOLDER [NAME]
//
// writes NAME1.jpg (darkest) to NAME5.jpg (brightest), NAME defaulting to "coffee".
#include <QCoreApplication>
#include <QImage>
#include <QString>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace {

double toLinear(double c) {
    return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

double toSrgb(double c) {
    return c <= 0.0031308 ? 12.92 * c : 1.055 * std::pow(c, 1.0 / 2.4) - 0.055;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 3) {
        std::fprintf(stderr, "usage: make_samples PHOTO OUTPUT_FOLDER [NAME]\n");
        return 2;
    }
    const QImage photo =
        QImage(QString::fromLocal8Bit(argv[1])).convertToFormat(QImage::Format_RGB888);
    if (photo.isNull()) {
        std::fprintf(stderr, "make_samples: cannot read %s\n", argv[1]);
        return 1;
    }
    const QString folder = QString::fromLocal8Bit(argv[2]);
    const QString name = argc > 3 ? QString::fromLocal8Bit(argv[3]) : QString("coffee");
    const int stops[] = {-2, -1, 0, 1, 2};
    for (int i = 0; i < 5; ++i) {
        const double gain = std::pow(2.0, stops[i]);
        std::array<uchar, 256> table{};
        for (int v = 0; v < 256; ++v) {
            const double linear = std::min(1.0, toLinear(v / 255.0) * gain);
            table[static_cast<size_t>(v)] =
                static_cast<uchar>(std::lround(std::clamp(toSrgb(linear), 0.0, 1.0) * 255.0));
        }
        QImage exposed = photo;
        for (int y = 0; y < exposed.height(); ++y) {
            uchar* row = exposed.scanLine(y);
            for (int x = 0; x < exposed.width() * 3; ++x) {
                row[x] = table[row[x]];
            }
        }
        const QString out = folder + "/" + name + QString::number(i + 1) + ".jpg";
        if (!exposed.save(out, "JPEG", 92)) {
            std::fprintf(stderr, "make_samples: cannot write %s\n", qPrintable(out));
            return 1;
        }
        std::printf("%s  %+d EV\n", qPrintable(out), stops[i]);
    }
    return 0;
}
