// The converter as Save As starts it: a program of its own, run here on a machine
// that has no display at all.
#include <gtest/gtest.h>
#include <QImage>
#include <QProcess>

#include "support/test_pictures.h"

namespace lumiquilt {
namespace {

struct Converted {
    int exitCode = -1;
    bool crashed = false;
    std::string err;
};

Converted runConverter(const QStringList& arguments, const std::string& folder) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        environment.remove(name);
    }
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(QString::fromStdString(folder));
    process.start(LUMIQUILT_BIN_DIR "/CSTjpeg", arguments);
    EXPECT_TRUE(process.waitForFinished(30000));
    Converted result;
    result.crashed = process.exitStatus() == QProcess::CrashExit;
    result.exitCode = process.exitCode();
    result.err = process.readAllStandardError().toStdString();
    return result;
}

// Each run gets a message and an exit code, never a signal; a good one a JPEG.
TEST(CSTjpeg, ConvertsWithoutAnyDisplayAndRefusesBadArguments) {
    testing::TestFolder dir;
    const QImage picture = testing::patternPicture(31, 17, 3);
    testing::savePictureFile(picture, dir.path("in put.bmp"));
    testing::writeBytes(dir.path("bad.bmp"), "no picture");
    testing::writeBytes(dir.path("old.jpg"), "old contents");
    struct Row {
        QStringList arguments;
        int exitCode;
        std::string message;
    };
    const std::string usage = "usage: CSTjpeg BMPFILE,JPEGFILE\n";
    const Row rows[] = {
        // The caller hands one argument; blanks in a name stay in it.
        {{"in put.bmp,out put.jpg"}, 0, ""},
        {{}, 2, "CSTjpeg: no file names given\n" + usage},
        {{"in put.bmp"}, 2, "CSTjpeg: no comma between the two file names\n" + usage},
        {{"in put.bmp,"}, 2, "CSTjpeg: a file name is empty\n" + usage},
        {{",old.jpg"}, 2, "CSTjpeg: a file name is empty\n" + usage},
        {{"gone.bmp,old.jpg"}, 1, "CSTjpeg: gone.bmp: File not found\n"},
        {{"bad.bmp,old.jpg"}, 1, "CSTjpeg: bad.bmp: Invalid picture\n"},
    };
    for (const Row& row : rows) {
        const Converted run = runConverter(row.arguments, dir.root());
        const std::string what = row.arguments.join(' ').toStdString();
        EXPECT_FALSE(run.crashed) << what;
        EXPECT_EQ(run.exitCode, row.exitCode) << what;
        EXPECT_EQ(run.err, row.message) << what;
        EXPECT_EQ(testing::readBytes(dir.path("old.jpg")), "old contents") << what;
    }
    EXPECT_EQ(testing::readBytes(dir.path("out put.jpg")).substr(0, 2), "\xFF\xD8");
    EXPECT_EQ(QImage(QString::fromStdString(dir.path("out put.jpg"))).size(), picture.size());
}

}  // namespace
}  // namespace lumiquilt
