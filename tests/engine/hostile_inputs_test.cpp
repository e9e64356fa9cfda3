// Hostile inputs against Create Image: each row names a series (or a settings
// file) and the message or montage a run must come to. Both front ends read a series
// through the same engine and decoders, so lumiquilt-cli runs every series; the
// window program runs those whose names must pass through its field. The files are
// in tests/data/hostile/.
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <sstream>

#include "cli/cli_app.h"
#include "persistence/profile_file.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;
using testing::UiTest;

const std::string kHostile = LUMIQUILT_TEST_DATA "/hostile/";

// What a run must end with.
struct Outcome {
    std::string message;  ///< the message that stops the run; empty when a montage is made
    int images = 0;       ///< the pictures the montage is made from
    std::function<void(const QImage&)> checkMontage = nullptr;
};

const Outcome kNotAPicture{"This is not a valid picture file that I can read."};
const Outcome kNotFound{"So very sorry, but I can't find that file."};
const Outcome kOutOfMemory{"error 7 (Out of memory) at line 5100 of CommandGo"};

Outcome montageOf(int images, std::function<void(const QImage&)> check = nullptr) {
    return {"", images, std::move(check)};
}

// One file of a series: a good picture of the series' type, a fixture, these bytes,
// or a folder under the member's name.
struct Member {
    enum Kind { good, fixture, bytes, folder } kind = good;
    std::string content;  ///< the fixture's name, or the bytes
};

const Member kGood{Member::good, ""};
const Member kEmpty{Member::bytes, ""};
const Member kFolder{Member::folder, ""};
std::vector<Member> fixture(const std::string& file) {
    return {{Member::fixture, file}};
}

struct SeriesRow {
    std::string what;
    std::string extension;  ///< of every member
    std::vector<Member> members;
    Outcome outcome;
    std::string folder = "series";  ///< where the members lie
    std::string stem = "h";         ///< member k is stem + k + extension
    bool window = false;            ///< the window program runs it too
    std::size_t budget = 0;  ///< bytes the buffers may take beyond what they hold; 0: no limit
};

void PrintTo(const SeriesRow& row, std::ostream* out) {
    *out << row.what;
}

template <class Row>
std::string rowName(const ::testing::TestParamInfo<Row>& info) {
    std::string name;
    for (char c : info.param.what) {
        name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    }
    return name;
}

void makeMember(const Member& member, const std::string& extension, int k,
                const std::string& name) {
    switch (member.kind) {
        case Member::good:
            // GIF can only be read here, so every good GIF member is the same picture.
            if (extension == ".gif") {
                fs::copy_file(kHostile + "good.gif", name);
            } else {
                testing::savePictureFile(testing::patternPicture(16, 12, k), name);
            }
            break;
        case Member::fixture:
            fs::copy_file(kHostile + member.content, name);
            break;
        case Member::bytes:
            testing::writeBytes(name, member.content);
            break;
        case Member::folder:
            fs::create_directories(name);
            break;
    }
}

// Members of three at the start, in the middle and at the end of a series.
std::vector<Member> withMemberAt(int position, const Member& odd) {
    std::vector<Member> members(3, kGood);
    members[static_cast<size_t>(position)] = odd;
    return members;
}

void expectBlack(const QImage& montage) {
    for (int y = 0; y < montage.height(); ++y) {
        for (int x = 0; x < montage.width(); ++x) {
            ASSERT_EQ(montage.pixel(x, y) & 0xFFFFFF, 0u) << x << "," << y;
        }
    }
}

std::vector<SeriesRow> seriesRows() {
    // The fixtures' pixel bytes run blue, green, red from the first row in the file.
    const std::string pixels = testing::readBytes(kHostile + "bmp_top_down.bmp").substr(54);
    const QRgb first = qRgb(static_cast<uint8_t>(pixels[2]), static_cast<uint8_t>(pixels[1]),
                            static_cast<uint8_t>(pixels[0]));
    const auto firstFileRowAt = [first](bool top) {
        return [first, top](const QImage& montage) {
            EXPECT_EQ(montage.pixel(0, top ? 0 : montage.height() - 1) & 0xFFFFFF,
                      first & 0xFFFFFF);
        };
    };
    const std::vector<Member> two(2, kGood);
    const std::vector<Member> three(3, kGood);
    std::vector<SeriesRow> rows = {
        {"BMP claiming 100000 by 100000", ".bmp", fixture("bmp_100000x100000.bmp"), kNotAPicture},
        {"PNG claiming 30000 by 30000 is more than memory allows", ".png",
         fixture("png_30000x30000.png"), kOutOfMemory},
        {"series beyond the memory budget", ".png", three, kOutOfMemory, "series", "h", false, 100},
        {"PNG whose text chunk claims 2 GB", ".png", fixture("png_text_chunk_claims_2GB.png"),
         kNotAPicture},
        {"PNG whose text chunk before the pixels claims 2 GB", ".png",
         fixture("png_text_chunk_before_the_pixels_claims_2GB.png"), kNotAPicture},
        {"BMP of negative width", ".bmp", fixture("bmp_negative_width.bmp"), kNotAPicture},
        {"BMP of zero width", ".bmp", fixture("bmp_zero_width.bmp"), kNotAPicture},
        {"BMP of zero height", ".bmp", fixture("bmp_zero_height.bmp"), kNotAPicture},
        {"BMP of negative height runs top-down", ".bmp", fixture("bmp_top_down.bmp"),
         montageOf(1, firstFileRowAt(true))},
        {"BMP whose size fields lie reads by its header", ".bmp",
         fixture("bmp_size_fields_lie.bmp"), montageOf(1, firstFileRowAt(false))},
        {"BMP whose pixels start past its end is black", ".bmp",
         fixture("bmp_offset_beyond_end.bmp"), montageOf(1, expectBlack)},
        {"GIF with a 65535 by 65535 screen", ".gif", fixture("gif_65535x65535_screen.gif"),
         kNotAPicture},
        {"folder named like the middle member ends the series", ".png", withMemberAt(1, kFolder),
         montageOf(1)},
        {"folder named like the last member ends the series", ".png", withMemberAt(2, kFolder),
         montageOf(2)},
        {"path of 300 characters", ".png", three, montageOf(3),
         std::string(100, 'a') + "/" + std::string(100, 'b') + "/" + std::string(100, 'c'),
         "scene ", true},
        {"blanks in folder and name", ".jpg", two, montageOf(2), " my pictures ", "a scene ", true},
        {"UTF-8 in folder and name", ".bmp", two, montageOf(2), "Bilder Ünïcødé", "été_ß_日本",
         true},
    };
    // Truncated members: BMP, JPEG and GIF decoders give what they read (the rest
    // black), a truncated PNG is no picture.
    const char* const places[] = {"first", "middle", "last"};
    for (const char* extension : {".bmp", ".jpg", ".gif", ".png"}) {
        for (int at = 0; at < 3; ++at) {
            const bool decodes = std::string(extension) != ".png";
            rows.push_back(
                {std::string("truncated ") + (extension + 1) + " as the " + places[at] + " member",
                 extension,
                 withMemberAt(at, {Member::fixture, std::string("truncated") + extension}),
                 decodes ? montageOf(3) : kNotAPicture});
        }
    }
    for (int at = 0; at < 3; ++at) {
        rows.push_back({std::string("empty file as the ") + places[at] + " member", ".png",
                        withMemberAt(at, kEmpty), kNotAPicture});
    }
    return rows;
}

class HostileSeries : public UiTest, public ::testing::WithParamInterface<SeriesRow> {};

TEST_P(HostileSeries, EndsAsItShould) {
    const SeriesRow& row = GetParam();
    const std::string folder = dir.path(row.folder);
    fs::create_directories(folder);
    for (size_t i = 0; i < row.members.size(); ++i) {
        const int k = static_cast<int>(i) + 1;
        makeMember(row.members[i], row.extension, k,
                   folder + "/" + row.stem + std::to_string(k) + row.extension);
    }
    const std::string first = folder + "/" + row.stem + "1" + row.extension;
    const Outcome& expected = row.outcome;
    struct BudgetScope {
        explicit BudgetScope(std::size_t extra) {
            if (extra != 0) {
                SampleBuffer::setBudget(SampleBuffer::held() + extra);
            }
        }
        ~BudgetScope() { SampleBuffer::setBudget(0); }
    } budget(row.budget);

    std::ostringstream out;
    std::ostringstream err;
    const std::string written = dir.path("cli.png");
    const int code =
        runCli({"montage", first, "-i", "4", "-o", written, "--report", "-"}, "/", out, err);
    if (!expected.message.empty()) {
        EXPECT_EQ(code, 1);
        EXPECT_EQ(err.str(), expected.message + "\n");
        EXPECT_FALSE(fs::exists(written));
        return;
    }
    ASSERT_EQ(code, 0) << err.str();
    EXPECT_EQ(err.str(), "");
    EXPECT_NE(out.str().find("Number of files found = " + std::to_string(expected.images) + "\r"),
              std::string::npos)
        << out.str();
    const QImage montage =
        QImage(QString::fromStdString(written)).convertToFormat(QImage::Format_RGB888);
    if (expected.checkMontage) {
        expected.checkMontage(montage);
    }
    if (!row.window) {
        return;
    }
    start();
    form().activateFirstTime();
    setFileName(first);
    setIncrement("4");
    form().CommandGo_Click();
    EXPECT_TRUE(ui.messages.empty()) << lastMessage().text;
    EXPECT_EQ(state.imageCount, expected.images);
    EXPECT_EQ(form().montageWindow()->PictureFile->picture().convertToFormat(QImage::Format_RGB888),
              montage);
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileSeries, ::testing::ValuesIn(seriesRows()),
                         rowName<SeriesRow>);

// A settings file the program starts with, and what the file must be after one
// Create Image of the window program.
struct SettingsRow {
    std::string what;
    std::function<void(const std::string& path)> make;
    std::function<void(const std::string& before, const std::string& path,
                       const std::string& first)>
        after;
};

void PrintTo(const SettingsRow& row, std::ostream* out) {
    *out << row.what;
}

std::vector<std::string> linesOf(const std::string& content) {
    std::vector<std::string> lines;
    std::istringstream in(content);
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

// Every old line stays, in its order, but for the keys a run writes; the run's name
// reads back.
void otherLinesKept(const std::string& before, const std::string& path, const std::string& first) {
    const std::vector<std::string> now = linesOf(testing::readBytes(path));
    size_t j = 0;
    for (const std::string& line : linesOf(before)) {
        if (line.rfind("filename=", 0) == 0 || line.rfind("recent file", 0) == 0) {
            continue;
        }
        while (j < now.size() && now[j] != line) {
            ++j;
        }
        ASSERT_LT(j, now.size()) << "lost: " << line.substr(0, 60);
    }
    EXPECT_EQ(readProfileString(path, "preferences", "filename", "0"), first);
}

void untouched(const std::string& before, const std::string& path, const std::string&) {
    EXPECT_EQ(testing::readBytes(path), before);
}

void stillAnEmptyFolder(const std::string&, const std::string& path, const std::string&) {
    EXPECT_TRUE(fs::is_directory(path));
    EXPECT_TRUE(fs::is_empty(path));
    for (const auto& entry : fs::directory_iterator(fs::path(path).parent_path())) {
        EXPECT_EQ(entry.path().filename().string().find(".tmp-"), std::string::npos)
            << entry.path();
    }
}

std::function<void(const std::string&)> copyOf(const std::string& fixtureName) {
    return [fixtureName](const std::string& path) { fs::copy_file(kHostile + fixtureName, path); };
}

// Reading and writing each kind of file is the settings' own tests' work; these
// are the ones a run must get past without a word.
std::vector<SettingsRow> settingsRows() {
    return {
        {"NUL bytes cut a value and stay in the file", copyOf("settings_nul.ini"), otherLinesKept},
        {"a folder in its place", [](const std::string& path) { fs::create_directory(path); },
         stillAnEmptyFolder},
        {"read-only file",
         [](const std::string& path) {
             testing::writeBytes(path, "[preferences]\nIncrement=7\nfilename=/old1.png\n");
             fs::permissions(
                 path, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
         },
         untouched},
    };
}

class HostileSettings : public UiTest, public ::testing::WithParamInterface<SettingsRow> {};

TEST_P(HostileSettings, CostNothingButTheSettings) {
    const SettingsRow& row = GetParam();
    const std::string path = settings->path();
    row.make(path);
    const std::string before = fs::is_directory(path) ? "" : testing::readBytes(path);
    makeSeries("s", 2);
    start();
    form().activateFirstTime();
    setFileName(dir.path("s1.png"));
    setIncrement("10");
    form().CommandGo_Click();
    EXPECT_TRUE(ui.messages.empty()) << lastMessage().text;
    EXPECT_EQ(state.imageCount, 2);
    EXPECT_TRUE(form().montageWindow()->isVisible());
    row.after(before, path, dir.path("s1.png"));
}

INSTANTIATE_TEST_SUITE_P(Rows, HostileSettings, ::testing::ValuesIn(settingsRows()),
                         rowName<SettingsRow>);

}  // namespace
}  // namespace lumiquilt
