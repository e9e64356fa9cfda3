// Reading a series ahead, straight into its frames, must give the buffers exactly
// what loading each picture and reading it into the buffers gives.
#include "series/series_decode.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>
#include <tuple>

#include "core/program_state.h"
#include "core/runtime_error.h"
#include "engine/montage_run.h"
#include "output/gif_encoder.h"
#include "series/picture_io.h"
#include "support/test_pictures.h"

namespace lumiquilt {
namespace {

using testing::TestFolder;

// What the loading loop and the buffers end with.
struct SeriesResult {
    SeriesEnd end = SeriesEnd::gap;
    int count = 0, errorNumber = 0, maxX = 0, maxY = 0, maxImage = 0;
    std::vector<uint8_t> samples;
    bool tookFrames = false;
};

SeriesResult buffersOf(ProgramState& s, const SeriesLoopResult& loop,
                       const std::vector<PictureView>& views, SeriesFrames* frames) {
    SeriesResult r;
    r.end = loop.end;
    r.count = s.imageCount;
    r.errorNumber = loop.errorNumber;
    if (s.imageCount < 1) {
        return r;
    }
    s.evaluationPass = 1;  // no dimension messages here
    loadPixelBuffers(s, PictureView{}, views[0].width, views[0].height, views, nullptr, frames);
    const PixelBuffers& b = s.buffers;
    r.maxX = b.seriesMaxX;
    r.maxY = b.seriesMaxY;
    r.maxImage = b.seriesMaxImage;
    r.samples.assign(b.seriesPixels.data(), b.seriesPixels.data() + b.seriesPixels.size());
    r.tookFrames = frames != nullptr && frames->pixels.data() == nullptr;
    return r;
}

// Each picture loaded when the loop reaches it, then read into the buffers.
SeriesResult loadedOneByOne(const std::string& first) {
    const SeriesPattern pattern = findDigits(first);
    ProgramState s;
    std::vector<QImage> pictures;
    std::string current;
    const SeriesLoopResult loop = loadSeriesLoop(
        pattern,
        [&pictures](int, const std::string& name) { pictures.push_back(loadPicture(name)); },
        s.imageCount, current);
    std::vector<PictureView> views;
    for (const QImage& p : pictures) {
        views.push_back(viewOf(p));
    }
    return buffersOf(s, loop, views, nullptr);
}

// Read ahead; `meanwhile` changes the files once the reading has begun.
using ReadInto = SeriesReader::ReadInto;
const std::pair<ReadInto, std::string> kEveryWay[] = {
    {ReadInto::frames, " into frames"},
    {ReadInto::framesAndViews, " into frames seen as pictures"},
    {ReadInto::pictures, " into pictures"}};

SeriesResult readAhead(const std::string& first, ReadInto into, int threads,
                       const std::function<void()>& meanwhile) {
    const SeriesPattern pattern = findDigits(first);
    ProgramState s;
    SeriesReader reader(pattern, into, threads);
    if (meanwhile) {
        // Small files are read ahead long before this; the change comes after.
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        meanwhile();
    }
    std::string current;
    const SeriesLoopResult loop = loadSeriesLoop(
        pattern, [&reader](int k, const std::string& name) { reader.load(k, name); }, s.imageCount,
        current);
    std::vector<PictureView> views;
    for (int k = 1; k <= s.imageCount; ++k) {
        views.push_back(reader.view(k));
        const FramedPicture framed = reader.framed(k);
        if (into == ReadInto::frames) {
            EXPECT_EQ(views.back().bits == nullptr, reader.picture(k).isNull()) << k;
        } else if (into == ReadInto::framesAndViews && framed.view.bits != nullptr) {
            // The frame shows the very picture the file holds now.
            EXPECT_TRUE(reader.picture(k).isNull()) << k;
            EXPECT_EQ(opaquePictureOf(framed.view), loadPicture(memberName(pattern, k))) << k;
        } else {
            EXPECT_FALSE(reader.picture(k).isNull()) << k;
        }
    }
    SeriesFrames* frames = reader.frames();
    if (into == ReadInto::pictures) {
        EXPECT_EQ(frames, nullptr);
    }
    return buffersOf(s, loop, views, frames);
}

// Member k as a file of the series' type; GIF files come from the program's encoder.
void writeMember(const QImage& picture, const std::string& fileName) {
    if (fileName.ends_with(".gif")) {
        GIF gif;
        ASSERT_TRUE(gif.SaveGIF(
            mapToHalftone(viewOf(picture.convertToFormat(QImage::Format_RGB888))), fileName));
    } else {
        testing::savePictureFile(picture, fileName);
    }
}

// Writes through a new file renamed over the old one, as an editor saving would.
void replaceMember(const QImage& picture, const std::string& fileName) {
    const std::string fresh = fileName + ".new" + fileName.substr(fileName.rfind('.'));
    writeMember(picture, fresh);
    std::filesystem::rename(fresh, fileName);
}

// Four members of mixed sizes, none a multiple of four wide, and of the kinds of
// samples each format gives: colour, alpha, grey and a palette.
void makeMixedSeries(const TestFolder& dir, const std::string& extension) {
    const QImage colour = testing::patternPicture(41, 23, 1);
    QImage alpha = testing::patternPicture(40, 30, 2).convertToFormat(QImage::Format_ARGB32);
    alpha.setPixelColor(3, 4, QColor(10, 20, 30, 128));
    const QImage grey =
        testing::patternPicture(45, 21, 3).convertToFormat(QImage::Format_Grayscale8);
    const QImage palette = testing::patternPicture(13, 7, 4).convertToFormat(
        QImage::Format_Indexed8, Qt::ThresholdDither);
    const QImage members[] = {colour, alpha, grey, palette};
    for (int k = 1; k <= 4; ++k) {
        writeMember(members[k - 1], dir.path("m" + std::to_string(k) + extension));
    }
}

void expectSame(const SeriesResult& ahead, const SeriesResult& oneByOne, const std::string& what) {
    const auto sizes = [](const SeriesResult& r) {
        return std::tie(r.end, r.count, r.errorNumber, r.maxX, r.maxY, r.maxImage);
    };
    EXPECT_EQ(sizes(ahead), sizes(oneByOne)) << what;
    EXPECT_TRUE(ahead.samples == oneByOne.samples) << what;
}

TEST(SeriesReader, GivesTheBuffersOfLoadingOneByOne) {
    for (const std::string extension : {".bmp", ".jpg", ".gif", ".png"}) {
        TestFolder dir;
        makeMixedSeries(dir, extension);
        const std::string first = dir.path("m1" + extension);
        const SeriesResult oneByOne = loadedOneByOne(first);
        ASSERT_EQ(oneByOne.count, 4) << extension;
        ASSERT_EQ(oneByOne.maxX, 43) << extension;
        for (const auto& [into, way] : kEveryWay) {
            for (const int threads : {1, 2}) {
                const std::string what = extension + way + " threads " + std::to_string(threads);
                const SeriesResult ahead = readAhead(first, into, threads, nullptr);
                expectSame(ahead, oneByOne, what);
                // The frames are taken over whole: no picture is read twice.
                EXPECT_EQ(ahead.tookFrames, into != ReadInto::pictures) << what;
            }
        }
    }
}

TEST(SeriesReader, FilesThatChangeDuringTheRunAreReadAsTheyAreThen) {
    struct Row {
        std::string name;
        std::function<void(const TestFolder&)> change;
    };
    const Row rows[] = {
        {"member 2 replaced by a bigger picture",
         [](const TestFolder& d) {
             replaceMember(testing::patternPicture(50, 33, 9), d.path("m2.jpg"));
         }},
        {"member 1 replaced by one of another frame",
         [](const TestFolder& d) {
             replaceMember(testing::patternPicture(64, 9, 8), d.path("m1.jpg"));
         }},
        {"member 1 replaced by one of the same frame",
         [](const TestFolder& d) {
             replaceMember(testing::patternPicture(42, 24, 7), d.path("m1.jpg"));
         }},
        {"member 3 vanishes",
         [](const TestFolder& d) { std::filesystem::remove(d.path("m3.jpg")); }},
        {"member 5 appears",
         [](const TestFolder& d) {
             writeMember(testing::patternPicture(30, 30, 5), d.path("m5.jpg"));
         }},
        {"member 2 becomes no picture",
         [](const TestFolder& d) { testing::writeBytes(d.path("m2.jpg"), "no picture"); }},
    };
    for (const Row& row : rows) {
        for (const auto& [into, way] : kEveryWay) {
            TestFolder dir;
            makeMixedSeries(dir, ".jpg");
            const std::string first = dir.path("m1.jpg");
            const SeriesResult ahead = readAhead(first, into, 2, [&] { row.change(dir); });
            expectSame(ahead, loadedOneByOne(first), row.name + way);
        }
    }
}

// The window copies a reading thread scales are the window's own scaling of the
// very picture loaded, never of one the file held before; a picture shown whole
// needs none.
TEST(SeriesReader, ShownCopiesAreThePictureScaledForItsWindow) {
    TestFolder dir;
    makeMixedSeries(dir, ".png");
    const auto half = [](QSize picture) { return picture.width() > 40 ? picture / 2 : picture; };
    SeriesReader reader(findDigits(dir.path("m1.png")), ReadInto::framesAndViews, 2, half);
    for (int k = 1; k <= 4; ++k) {
        if (k == 3) {
            // Read ahead or not yet, member 3 now holds another picture.
            replaceMember(testing::patternPicture(60, 30, 9), dir.path("m3.png"));
        }
        reader.load(k, dir.path("m" + std::to_string(k) + ".png"));
        const QImage picture =
            reader.picture(k).isNull() ? opaquePictureOf(reader.framed(k).view) : reader.picture(k);
        const QImage shown = reader.shown(k);
        if (k == 3 && shown.isNull()) {
            continue;  // read again as it was loaded: the window scales it
        }
        if (half(picture.size()) == picture.size()) {
            EXPECT_TRUE(shown.isNull()) << k;
            continue;
        }
        ASSERT_EQ(shown.size(), picture.size() / 2) << k;
        EXPECT_EQ(shown, scaledForDisplay(picture, picture.size() / 2)) << k;
    }
}

TEST(SeriesReader, BrokenMembersEndTheLoopAsLoadingWould) {
    TestFolder dir;
    makeMixedSeries(dir, ".png");
    testing::writeBytes(dir.path("m3.png"), "corrupt");
    const std::string bytes = testing::readBytes(dir.path("m2.png"));
    for (const int cut : {0, 1}) {
        if (cut == 1) {
            // A cut file in the middle of the series.
            testing::writeBytes(dir.path("m2.png"), bytes.substr(0, bytes.size() / 2));
        }
        const SeriesResult oneByOne = loadedOneByOne(dir.path("m1.png"));
        EXPECT_EQ(oneByOne.end, SeriesEnd::invalidPicture);
        for (const auto& [into, way] : kEveryWay) {
            expectSame(readAhead(dir.path("m1.png"), into, 2, nullptr), oneByOne,
                       "cut " + std::to_string(cut) + way);
        }
    }
    // No first picture at all.
    testing::writeBytes(dir.path("m1.png"), "corrupt");
    expectSame(readAhead(dir.path("m1.png"), ReadInto::frames, 2, nullptr),
               loadedOneByOne(dir.path("m1.png")), "first");
}

// An evaluation loads the same series again and again: the frames the buffers took
// come back to the reader and serve the next load of every file that stayed as it
// was. A mark in image 1's padding tells a frame served again from one read anew.
TEST(SeriesReader, FramesGivenBackServeTheNextLoadOfTheSameFiles) {
    struct Row {
        std::string name;
        bool sameBlock;
        std::function<void(const TestFolder&)> change;
        bool frameOneServedAgain;
    };
    const Row rows[] = {
        {"the very block", true, nullptr, true},
        {"another block of its size", false, nullptr, false},
        {"the very block, member 2 changed since", true,
         [](const TestFolder& d) {
             replaceMember(testing::patternPicture(50, 33, 9), d.path("m2.bmp"));
         },
         true},
        {"the very block, member 1 changed since", true,
         [](const TestFolder& d) {
             replaceMember(testing::patternPicture(42, 24, 7), d.path("m1.bmp"));
         },
         false},
    };
    constexpr std::size_t kMark = 3 * 43;  // image 1 is 41 wide in a frame of 44
    for (const Row& row : rows) {
        TestFolder dir;
        makeMixedSeries(dir, ".bmp");
        const std::string first = dir.path("m1.bmp");
        const SeriesPattern pattern = findDigits(first);
        SeriesReader reader(pattern, ReadInto::frames, 2);
        auto loadAll = [&](ProgramState& s) {
            std::string current;
            const SeriesLoopResult loop = loadSeriesLoop(
                pattern, [&reader](int k, const std::string& name) { reader.load(k, name); },
                s.imageCount, current);
            std::vector<PictureView> views;
            for (int k = 1; k <= s.imageCount; ++k) {
                views.push_back(reader.view(k));
            }
            return buffersOf(s, loop, views, reader.frames());
        };
        ProgramState last;
        ASSERT_TRUE(loadAll(last).tookFrames) << row.name;
        last.buffers.seriesPixels.data()[kMark] = 0x5A;
        if (row.change) {
            row.change(dir);
        }
        SampleBuffer given = last.buffers.takeSeries();
        if (!row.sameBlock) {
            given.allocateZeroed(given.size());
        }
        reader.takeBackFrames(std::move(given));
        ProgramState next;
        SeriesResult again = loadAll(next);
        ASSERT_FALSE(again.samples.empty()) << row.name;
        EXPECT_EQ(again.samples[kMark] == 0x5A, row.frameOneServedAgain) << row.name;
        again.samples[kMark] = 0;
        expectSame(again, loadedOneByOne(first), row.name);
    }
}

TEST(LoadPictureInto, ReusesTheScratchAndGivesTheSamePicture) {
    TestFolder dir;
    // Largest first, so that later pictures land in memory holding an older one; a
    // cut JPEG still gives every row.
    testing::savePictureFile(testing::patternPicture(256, 192, 1), dir.path("a.jpg"));
    testing::savePictureFile(testing::patternPicture(201, 150, 2), dir.path("b.jpg"));
    const std::string whole = testing::readBytes(dir.path("b.jpg"));
    testing::writeBytes(dir.path("c.jpg"), whole.substr(0, whole.size() * 2 / 3));
    testing::savePictureFile(testing::patternPicture(20, 10, 3), dir.path("d.bmp"));
    SampleBuffer scratch;
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg", "d.bmp"}) {
        const QImage fresh = loadPicture(dir.path(name));
        const QImage reused = loadPictureInto(dir.path(name), scratch);
        EXPECT_EQ(reused, fresh) << name;
        EXPECT_EQ(reused.format(), fresh.format()) << name;
        // JPEG pictures live in the scratch; others get memory of their own.
        const bool inScratch = reused.constBits() == scratch.data();
        EXPECT_EQ(inScratch, std::string(name).ends_with(".jpg")) << name;
    }
}

}  // namespace
}  // namespace lumiquilt
