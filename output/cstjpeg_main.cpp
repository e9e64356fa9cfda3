// CSTjpeg: the JPEG converter that Save As starts. One argument,
// "<bmp name>,<jpeg name>", split at the first comma: it reads the BMP and writes
// the JPEG over whatever stands under that name.
#include <QGuiApplication>
#include <QImage>
#include <cstdio>

#include "core/runtime_error.h"
#include "series/picture_io.h"

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    const QStringList args = QGuiApplication::arguments();
    const QString line = args.mid(1).join(' ');
    const qsizetype comma = line.indexOf(',');
    if (comma < 0) {
        std::fprintf(stderr, "usage: CSTjpeg BMPFILE,JPEGFILE\n");
        return 2;
    }
    try {
        const QImage picture = lumiquilt::loadPicture(line.left(comma).toStdString());
        lumiquilt::savePicture(picture, line.mid(comma + 1).toStdString(), "JPEG");
    } catch (const lumiquilt::RuntimeError& error) {
        std::fprintf(stderr, "CSTjpeg: %s\n", error.description().c_str());
        return 1;
    }
    return 0;
}
