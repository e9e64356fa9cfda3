// CSTjpeg: the JPEG converter that Save As starts. One argument,
// "<bmp name>,<jpeg name>", split at the first comma: it reads the BMP and writes
// the JPEG over whatever stands under that name.
//
// It needs no display: a core application is enough for the picture plugins, and
// a GUI application would abort where no window system answers.
#include <QCoreApplication>
#include <QImage>
#include <QStringList>
#include <cstdio>

#include "core/runtime_error.h"
#include "series/picture_io.h"

namespace {

constexpr int kConverted = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

int usage(const char* why) {
    std::fprintf(stderr, "CSTjpeg: %s\nusage: CSTjpeg BMPFILE,JPEGFILE\n", why);
    return kUsage;
}

int failure(const QString& fileName, const lumiquilt::RuntimeError& error) {
    std::fprintf(stderr, "CSTjpeg: %s: %s\n", fileName.toLocal8Bit().constData(),
                 error.description().c_str());
    return kFailed;
}

}  // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    // The caller passes one argument; a shell that split it at blanks gets it joined again.
    const QString line = QCoreApplication::arguments().mid(1).join(' ');
    if (line.isEmpty()) {
        return usage("no file names given");
    }
    const qsizetype comma = line.indexOf(',');
    if (comma < 0) {
        return usage("no comma between the two file names");
    }
    const QString bmpName = line.left(comma);
    const QString jpegName = line.mid(comma + 1);
    if (bmpName.isEmpty() || jpegName.isEmpty()) {
        return usage("a file name is empty");
    }
    lumiquilt::configurePictureReading();
    QImage picture;
    try {
        picture = lumiquilt::loadPicture(bmpName.toStdString());
    } catch (const lumiquilt::RuntimeError& error) {
        return failure(bmpName, error);
    }
    try {
        lumiquilt::savePicture(picture, jpegName.toStdString(), "JPEG");
    } catch (const lumiquilt::RuntimeError& error) {
        return failure(jpegName, error);
    }
    return kConverted;
}
