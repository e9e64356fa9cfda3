// Writes the program's icon for the install: an SVG and PNGs of the sizes a
// desktop's icon theme asks for, all from the shapes in display/artwork.cpp.
//
//   make_icon OUTPUT_FOLDER
//
// writes OUTPUT_FOLDER/lumiquilt.svg and OUTPUT_FOLDER/lumiquilt-SIZE.png.
#include <QCoreApplication>
#include <QImage>
#include <QString>
#include <cstdio>
#include <fstream>

#include "display/artwork.h"

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_icon OUTPUT_FOLDER\n");
        return 2;
    }
    const std::string folder = argv[1];
    std::ofstream svg(folder + "/lumiquilt.svg", std::ios::binary);
    svg << lumiquilt::appIconSvg();
    svg.close();
    if (!svg) {
        std::fprintf(stderr, "make_icon: cannot write %s/lumiquilt.svg\n", folder.c_str());
        return 1;
    }
    for (int size : {16, 24, 32, 48, 64, 128, 256}) {
        const QString name =
            QString::fromStdString(folder) + QString("/lumiquilt-%1.png").arg(size);
        if (!lumiquilt::appIconImage(size).save(name, "PNG")) {
            std::fprintf(stderr, "make_icon: cannot write %s\n", name.toLocal8Bit().constData());
            return 1;
        }
    }
    return 0;
}
