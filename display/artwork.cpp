#include "display/artwork.h"

#include <QFont>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <cstdio>
#include <vector>

namespace lumiquilt {

namespace {

// Shapes in a 256-unit square; the SVG and the pixel pictures both come from here,
// so the two can never tell different stories.
constexpr double kIconUnits = 256;

struct IconBlock {
    double x, y, size, radius;
    QColor fill;
};

std::vector<IconBlock> iconBlocks() {
    std::vector<IconBlock> blocks;
    blocks.push_back({8, 8, 240, 44, QColor(0x2e, 0x26, 0x40)});
    // Lightness of each block, as if each came from another exposure: the quilt
    // mixes them the way a montage does.
    static const int lightness[3][3] = {{62, 38, 80}, {30, 70, 50}, {86, 46, 24}};
    const double cell = 64;
    const double gap = 8;
    const double origin = 128 - (3 * cell + 2 * gap) / 2;
    for (int row = 0; row < 3; ++row) {
        for (int col = 0; col < 3; ++col) {
            QColor c;
            c.setHsl(38 + 6 * (row - col), 200, lightness[row][col] * 255 / 100);
            blocks.push_back(
                {origin + col * (cell + gap), origin + row * (cell + gap), cell, 6, c});
        }
    }
    return blocks;
}

}  // namespace

QImage appIconImage(int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.scale(size / kIconUnits, size / kIconUnits);
    p.setPen(Qt::NoPen);
    for (const IconBlock& b : iconBlocks()) {
        p.setBrush(b.fill);
        p.drawRoundedRect(QRectF(b.x, b.y, b.size, b.size), b.radius, b.radius);
    }
    p.end();
    return image;
}

std::string appIconSvg() {
    std::string svg =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"256\" height=\"256\" "
        "viewBox=\"0 0 256 256\">\n";
    for (const IconBlock& b : iconBlocks()) {
        char line[200];
        std::snprintf(line, sizeof line,
                      "  <rect x=\"%g\" y=\"%g\" width=\"%g\" height=\"%g\" rx=\"%g\" "
                      "fill=\"%s\"/>\n",
                      b.x, b.y, b.size, b.size, b.radius, b.fill.name().toStdString().c_str());
        svg += line;
    }
    svg += "</svg>\n";
    return svg;
}

QImage splashPicture() {
    const QSize size(480, 300);
    QImage image(size, QImage::Format_RGB32);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);

    QLinearGradient sky(0, 0, 0, size.height());
    sky.setColorAt(0, QColor(0x1d, 0x18, 0x33));
    sky.setColorAt(1, QColor(0x4a, 0x3b, 0x6b));
    p.fillRect(image.rect(), sky);

    // The sun that the ring of arcs will circle.
    QRadialGradient sun(QPointF(380, 40), 22);
    sun.setColorAt(0, QColor(0xff, 0xf1, 0xc4));
    sun.setColorAt(0.7, QColor(0xf5, 0xb9, 0x42));
    sun.setColorAt(1, QColor(0xf5, 0xb9, 0x42, 0));
    p.setPen(Qt::NoPen);
    p.setBrush(sun);
    p.drawEllipse(QPointF(380, 40), 22, 22);

    // The quilt: a five by three field of blocks, each lit as another exposure.
    const int cell = 34;
    const int gap = 4;
    for (int row = 0; row < 3; ++row) {
        for (int col = 0; col < 5; ++col) {
            const int light = 22 + ((row * 7 + col * 11) % 9) * 8;
            QColor c;
            c.setHsl(30 + 5 * row + 3 * col, 190, light * 255 / 100);
            p.setBrush(c);
            p.drawRoundedRect(QRectF(48 + col * (cell + gap), 150 + row * (cell + gap), cell, cell),
                              4, 4);
        }
    }

    p.setPen(QColor(0xf7, 0xf3, 0xff));
    QFont title("DejaVu Sans");
    title.setPixelSize(54);
    title.setBold(true);
    p.setFont(title);
    p.drawText(QRect(40, 60, 400, 70), Qt::AlignLeft | Qt::AlignVCenter, "Lumiquilt");

    QFont small("DejaVu Sans");
    small.setPixelSize(15);
    p.setFont(small);
    p.setPen(QColor(0xd8, 0xcf, 0xea));
    p.drawText(QRect(250, 152, 200, 100), Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
               "One well-exposed picture\nfrom a series of exposures");
    small.setPixelSize(12);
    p.setFont(small);
    p.setPen(QColor(0xa9, 0x9c, 0xc6));
    p.drawText(QRect(250, 236, 200, 20), Qt::AlignLeft | Qt::AlignVCenter, "Tarnhollow Software");
    p.end();
    return image;
}

}  // namespace lumiquilt
