// Every writer of a file the user keeps, against a full disk, a read-only folder and
// a missing folder: the old file stays byte for byte, the failure is reported, and
// no temporary file is left behind.
#include <sys/wait.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>

#include "core/runtime_error.h"
#include "persistence/profile_file.h"
#include "series/picture_io.h"
#include "support/full_disk.h"
#include "support/locked_folder.h"
#include "support/series_error_of.h"
#include "support/test_pictures.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;
using testing::errorOf;
using testing::TestFolder;

// A writer: writes its file under `target` and returns 0, or the error number it
// reports. Each file it writes is larger than kRoom.
struct Writer {
    std::string name;
    std::string file;  ///< the target's name
    std::string old;   ///< what stands there before
    std::function<int(const std::string& target, const std::string& scratch)> write;
};

void PrintTo(const Writer& writer, std::ostream* out) {
    *out << writer.name;
}

constexpr long kRoom = 200;  // bytes a full disk still takes

const std::string kOldPicture = "old picture " + std::string(300, 'o');

// Noise, so that no format packs it into fewer bytes than a full disk takes.
QImage picture() {
    QImage image(64, 48, QImage::Format_RGB32);
    uint32_t seed = 12345;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            seed = seed * 1664525u + 1013904223u;
            image.setPixel(x, y, 0xFF000000u | (seed >> 8));
        }
    }
    return image;
}

Writer pictureWriter(const std::string& name, const std::string& file, const char* format) {
    return {name, file, kOldPicture, [format](const std::string& target, const std::string&) {
                return errorOf([&] { savePicture(picture(), target, format); });
            }};
}

Writer montageWriter(const std::string& name, const std::string& file) {
    return {
        name, file, kOldPicture, [](const std::string& target, const std::string&) {
            const QImage image = picture();
            PixelBuffers buffers;
            buffers.sizeMontage(image.width(), image.height());
            readPictureIntoFrame(viewOf(image),
                                 buffers.montageSlot(PixelBuffers::kFirstMontageSlot),
                                 buffers.montageMaxX + 1, buffers.montageMaxY + 1);
            return errorOf([&] { saveMontage(buffers, image.width(), image.height(), target); });
        }};
}

// The converter that Save As starts, as a program of its own; its exit code.
Writer converterWriter() {
    return {"CSTjpeg", "p.jpg", kOldPicture,
            [](const std::string& target, const std::string& scratch) {
                const std::string source = scratch + "/source.bmp";
                if (!fs::exists(source)) {
                    testing::savePictureFile(picture(), source);
                }
                const std::string command = std::string("QT_QPA_PLATFORM= DISPLAY= '") +
                                            LUMIQUILT_BIN_DIR "/CSTjpeg' '" + source + "," +
                                            target + "' 2>/dev/null";
                const int status = std::system(command.c_str());
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }};
}

Writer settingsWriter() {
    return {
        "Settings", "Lumiquilt.ini",
        "[preferences]\r\nnotes=" + std::string(300, 'n') + "\r\nIncrement=10\r\n",
        [](const std::string& target, const std::string&) {
            return errorOf([&] { writeProfileString(target, "preferences", "Increment", "20"); });
        }};
}

std::vector<Writer> writers() {
    // A picture's PNG goes through the montage's writer, and the encoder's GIF file is
    // the montage's.
    return {pictureWriter("Bmp", "p.bmp", "BMP"),
            pictureWriter("Jpeg", "p.jpg", "JPEG"),
            montageWriter("MontageBmp", "m.bmp"),
            montageWriter("MontagePng", "m.png"),
            montageWriter("MontageGif", "m.gif"),
            converterWriter(),
            settingsWriter()};
}

// The error number each writer reports; the converter's exit code is 1 for all.
int expectedError(const Writer& writer, int inProcess) {
    return writer.name == "CSTjpeg" ? 1 : inProcess;
}

std::vector<std::string> entriesOf(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class WritersKeepTheOldFile : public ::testing::TestWithParam<Writer> {
  protected:
    void SetUp() override {
        target = dir.path("pictures/" + GetParam().file);
        fs::create_directories(dir.path("pictures"));
        fs::create_directories(dir.path("scratch"));
        testing::writeBytes(target, GetParam().old);
    }
    void expectOldFileAlone() {
        EXPECT_EQ(testing::readBytes(target), GetParam().old);
        EXPECT_EQ(entriesOf(dir.path("pictures")), std::vector<std::string>{GetParam().file});
    }
    TestFolder dir;
    std::string target;
};

TEST_P(WritersKeepTheOldFile, WriteWhereAllIsWellReplacesIt) {
    EXPECT_EQ(GetParam().write(target, dir.path("scratch")), 0);
    const std::string now = testing::readBytes(target);
    EXPECT_NE(now, GetParam().old);
    EXPECT_GT(static_cast<long>(now.size()), kRoom);
    EXPECT_EQ(entriesOf(dir.path("pictures")), std::vector<std::string>{GetParam().file});
}

TEST_P(WritersKeepTheOldFile, FullDisk) {
    const Writer& writer = GetParam();
    const std::string scratch = dir.path("scratch");
    if (writer.name == "CSTjpeg") {
        writer.write(dir.path("scratch/warm-up.jpg"), scratch);  // its source, made at full size
        fs::remove(dir.path("scratch/warm-up.jpg"));
    }
    const int error = testing::withFullDisk(kRoom, [&] { return writer.write(target, scratch); });
    EXPECT_EQ(error, expectedError(writer, kDiskFull));
    expectOldFileAlone();
}

TEST_P(WritersKeepTheOldFile, ReadOnlyFolder) {
    const Writer& writer = GetParam();
    testing::LockedFolder lock(dir.path("pictures"));
    if (!lock.locked()) {
        GTEST_SKIP() << "this user may write into any folder";
    }
    const int error = writer.write(target, dir.path("scratch"));
    lock.unlock();
    EXPECT_EQ(error, expectedError(writer, kPermissionDenied));
    expectOldFileAlone();
}

TEST_P(WritersKeepTheOldFile, MissingFolder) {
    const Writer& writer = GetParam();
    const int error = writer.write(dir.path("gone/" + writer.file), dir.path("scratch"));
    EXPECT_EQ(error, expectedError(writer, kPathNotFound));
    EXPECT_FALSE(fs::exists(dir.path("gone")));
    expectOldFileAlone();
}

INSTANTIATE_TEST_SUITE_P(Writers, WritersKeepTheOldFile, ::testing::ValuesIn(writers()),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace lumiquilt
