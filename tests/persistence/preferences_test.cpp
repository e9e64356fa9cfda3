#include "persistence/preferences.h"

#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "core/runtime_error.h"
#include "persistence/profile_file.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;

// Settings that note every key asked for.
class RecordingSettings : public Settings {
  public:
    using Settings::Settings;
    std::string readKey(std::string_view key) const override {
        asked.emplace_back(key);
        return Settings::readKey(key);
    }
    mutable std::vector<std::string> asked;
};

class PreferencesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        m_path = (fs::temp_directory_path() /
                  ("lumiquilt_prefs_" + std::to_string(::getpid()) + "_" +
                   ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".ini"))
                     .string();
        fs::remove(m_path);
    }
    void TearDown() override { fs::remove(m_path); }
    void put(const std::string& content) { std::ofstream(m_path, std::ios::binary) << content; }

    std::string m_path;
};

TEST_F(PreferencesTest, StartReadsEveryKeyInItsOrder) {
    RecordingSettings settings(m_path);
    ProgramState s;
    readSettingsBeforeWindows(s, settings);
    readSettingsAfterWindows(settings);
    std::vector<std::string> expected = {
        "autoSmooth", "edgeFactor", "focusFactor", "diffFactor",     "edgefactor2",      "shortcut",
        "rightmouse", "filename",   "Increment",   "Montage method", "Originating image"};
    for (int i = 0; i < 12; ++i) {
        expected.push_back("recent file " + std::to_string(i));
    }
    expected.emplace_back("Target color");
    EXPECT_EQ(settings.asked, expected);
}

TEST_F(PreferencesTest, MissingFileReadsZeroForEveryKey) {
    Settings settings(m_path);
    ProgramState s;
    s.edgeFactor = 5;
    s.rightMouseEnabled = 1;
    readSettingsBeforeWindows(s, settings);
    EXPECT_EQ(s.autoSmooth, 0);
    EXPECT_EQ(s.edgeFactor, 0);
    EXPECT_EQ(s.focusFactor, 0);
    EXPECT_EQ(s.diffFactor, 0);
    EXPECT_EQ(s.edgefactor2, 0);
    EXPECT_EQ(s.shortcutEnabled, 0);
    EXPECT_EQ(s.rightMouseEnabled, 0);
    const SettingsAfterWindows late = readSettingsAfterWindows(settings);
    EXPECT_EQ(late.fileName, "0");
    EXPECT_EQ(late.incrementText, "0");
    EXPECT_EQ(late.methodIndex, 0);
    EXPECT_EQ(late.showUsedWindow, 0);
    EXPECT_EQ(late.targetColor, 0);
    for (const std::string& item : late.recent.items()) {
        EXPECT_EQ(item, "");
    }
}

TEST_F(PreferencesTest, KeysTakeTheirScales) {
    put("[preferences]\nautoSmooth=1\nedgeFactor=29\nfocusFactor=10\ndiffFactor=100\n"
        "edgefactor2=4\nshortcut=1\nrightmouse=7\nTarget color=16777217\n");
    Settings settings(m_path);
    ProgramState s;
    readSettingsBeforeWindows(s, settings);
    EXPECT_EQ(s.autoSmooth, 1);
    EXPECT_EQ(s.edgeFactor, 0.29f);
    EXPECT_EQ(s.focusFactor, 0.1f);
    EXPECT_EQ(s.diffFactor, 100);
    EXPECT_EQ(s.edgefactor2, 0.4f);
    EXPECT_EQ(s.shortcutEnabled, 1);
    EXPECT_EQ(s.rightMouseEnabled, 1);  // any value but 0
    // The colour passes through a 32-bit float, which has no odd number above 2^24.
    EXPECT_EQ(readTargetColor(settings), 16777216.0);
}

TEST_F(PreferencesTest, AValueBeyondItsWidthReadsAsZeroAndTheOthersStillCount) {
    put("[preferences]\nautoSmooth=99999999\nedgeFactor=50\ndiffFactor=40000\nedgefactor2=" +
        std::string(400, '9') +
        "\nrightmouse=1\nMontage method=70000\nTarget color=" + std::string(50, '9') + "\n");
    Settings settings(m_path);
    ProgramState s;
    readSettingsBeforeWindows(s, settings);
    EXPECT_EQ(s.autoSmooth, 0);
    EXPECT_EQ(s.edgeFactor, 0.5f);
    EXPECT_EQ(s.diffFactor, 0);
    EXPECT_EQ(s.edgefactor2, 0);
    EXPECT_EQ(s.rightMouseEnabled, 1);
    EXPECT_EQ(readSettingsAfterWindows(settings).methodIndex, 0);
    EXPECT_EQ(readTargetColor(settings), 0);
}

// One row: a field's text, what OK writes under its key, and what the field shows
// when that key is read back at the next start.
struct FactorRow {
    const char* name;
    int field;
    const char* text;
    const char* keyText;
    const char* fieldAgain;
};

class FactorRoundTrip : public ::testing::TestWithParam<FactorRow> {};

TEST_P(FactorRoundTrip, FieldToKeyToField) {
    const FactorRow& row = GetParam();
    ProgramState s;
    setFactorFromField(s, row.field, row.text);
    EXPECT_EQ(factorKeyText(s, row.field), row.keyText);
    ProgramState next;
    setFactorFromKey(next, row.field, std::stod(row.keyText));
    EXPECT_EQ(factorFieldText(next, row.field), row.fieldAgain);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, FactorRoundTrip,
    ::testing::Values(
        // 0.29 as a float lies a little under 0.29: 71 writes 28, not 29.
        FactorRow{"Edge71LosesOne", 0, "71", "28", "72"},
        FactorRow{"Edge72Stays", 0, "72", "28", "72"}, FactorRow{"Edge90", 0, "90", "10", "90"},
        FactorRow{"EdgeNoNumberIsZero", 0, "abc", "100", "0"},
        FactorRow{"Edge150", 0, "150", "-50", "150"}, FactorRow{"Focus10", 1, "10", "10", "10"},
        FactorRow{"Focus150", 1, "150", "150", "150"},
        FactorRow{"FocusFraction", 1, "12.5", "12", "12"}, FactorRow{"Diff1", 2, "1", "100", "1"},
        FactorRow{"DiffHalf", 2, "0.5", "50", "0.5"},
        FactorRow{"DiffExponent", 2, "2e1", "2000", "20"},
        FactorRow{"DiffRoundsHalfToEven", 2, "0.125", "12", "0.12"},
        FactorRow{"Edge2Sixty", 3, "60", "40", "60"},
        FactorRow{"Edge2OneLosesOne", 3, "1", "98", "1.999998"}),
    [](const ::testing::TestParamInfo<FactorRow>& info) { return info.param.name; });

TEST(Factors, TwentyNineBecomesTwentyEightOnceAndThenStays) {
    ProgramState s;
    setFactorFromKey(s, 0, 29);
    EXPECT_EQ(factorFieldText(s, 0), "71");
    setFactorFromField(s, 0, factorFieldText(s, 0));
    EXPECT_EQ(factorKeyText(s, 0), "28");
    for (int start = 0; start < 3; ++start) {
        setFactorFromKey(s, 0, std::stod(factorKeyText(s, 0)));
        setFactorFromField(s, 0, factorFieldText(s, 0));
        EXPECT_EQ(factorKeyText(s, 0), "28");
    }
}

TEST(Factors, TextThatIsNoNumberLeavesTheLastThreeAsTheyWere) {
    for (int i = 1; i < kSmoothFactorCount; ++i) {
        ProgramState s;
        setFactorFromKey(s, i, 7);
        const std::string before = factorKeyText(s, i);
        for (const char* text : {"", "abc", "12abc", "1,5"}) {
            try {
                setFactorFromField(s, i, text);
                ADD_FAILURE() << "field " << i << " took '" << text << "'";
            } catch (const RuntimeError& e) {
                EXPECT_EQ(e.number(), 13);
            }
            EXPECT_EQ(factorKeyText(s, i), before);
        }
    }
}

TEST(Factors, ResultsBeyondTheirWidthOverflow) {
    ProgramState s;
    EXPECT_THROW(setFactorFromField(s, 2, "400"), RuntimeError);   // 40000 is beyond 16 bits
    EXPECT_THROW(setFactorFromField(s, 1, "1e60"), RuntimeError);  // beyond a float
    EXPECT_THROW(setFactorFromKey(s, 0, 1e300), RuntimeError);
    EXPECT_THROW(setFactorFromKey(s, 4, 1), RuntimeError);
}

TEST(Factors, ResetGivesTheDefaultsAndTheirFields) {
    ProgramState s;
    resetSmoothing(s);
    EXPECT_EQ(s.autoSmooth, 1);
    const char* fields[] = {"90", "10", "1", "60"};
    const char* keys[] = {"10", "10", "100", "40"};
    for (int i = 0; i < kSmoothFactorCount; ++i) {
        EXPECT_EQ(factorFieldText(s, i), fields[i]) << i;
        EXPECT_EQ(factorKeyText(s, i), keys[i]) << i;
    }
}

TEST(PlainDecimal, NoExponentNoBlank) {
    const std::pair<double, const char*> rows[] = {
        {20, "20"},           {20.5, "20.5"}, {-3, "-3"},
        {0.1, "0.1"},         {-0.0, "0"},    {1e20, "100000000000000000000"},
        {0.00001, "0.00001"},
    };
    for (const auto& [value, text] : rows) {
        EXPECT_EQ(plainDecimal(value), text) << value;
    }
}

// Settings files a user or a crash may leave behind: start-up reads the
// default or the value, and never stops.
struct HostileRow {
    const char* file;
    const char* increment;
    int method;
    int16_t rightMouse;
};

class HostileSettings : public ::testing::TestWithParam<HostileRow> {};

TEST_P(HostileSettings, StartReadsDefaultsOrValues) {
    const HostileRow& row = GetParam();
    Settings settings(std::string(LUMIQUILT_TEST_DATA) + "/settings/" + row.file);
    ProgramState s;
    readSettingsBeforeWindows(s, settings);
    const SettingsAfterWindows late = readSettingsAfterWindows(settings);
    EXPECT_EQ(late.incrementText, row.increment);
    EXPECT_EQ(late.methodIndex, row.method);
    EXPECT_EQ(s.rightMouseEnabled, row.rightMouse);
}

INSTANTIATE_TEST_SUITE_P(Files, HostileSettings,
                         ::testing::Values(
                             // A NUL ends a value; a key with a NUL in it is another key.
                             HostileRow{"nul_bytes.ini", "2", 0, 1},
                             HostileRow{"garbage.ini", "0", 0, 0},
                             HostileRow{"no_section.ini", "0", 0, 0},
                             // A lone CR ends no line: the file is one section head.
                             HostileRow{"cr_only.ini", "0", 0, 0},
                             HostileRow{"lf_only.ini", "20", 3, 1},
                             // The first of a repeated key counts, in any repeat of the section.
                             HostileRow{"repeated_key.ini", "20", 3, 1}));

TEST(HostileSettingsFile, NulBytesCutTheValueNotTheFile) {
    Settings settings(std::string(LUMIQUILT_TEST_DATA) + "/settings/nul_bytes.ini");
    ProgramState s;
    readSettingsBeforeWindows(s, settings);
    EXPECT_EQ(s.edgeFactor, 0);  // "edge\0Factor" is not the key
}

TEST_F(PreferencesTest, TenMegabyteLinesAreReadAndWrittenAround) {
    const std::string big(10 * 1024 * 1024, 'x');
    put("[preferences]\nfilename=" + big + "\n" + big + "\n" + big + "=1\nIncrement=20\n");
    Settings settings(m_path);
    ProgramState s;
    readSettingsBeforeWindows(s, settings);
    SettingsAfterWindows late = readSettingsAfterWindows(settings);
    EXPECT_EQ(late.fileName, std::string(254, 'x'));
    EXPECT_EQ(late.incrementText, "20");
    ASSERT_TRUE(settings.writeKey("Increment", "30"));
    EXPECT_EQ(settings.readKey("Increment"), "30");
    std::ifstream in(m_path, std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(in)), {});
    EXPECT_TRUE(content ==
                "[preferences]\nfilename=" + big + "\n" + big + "\n" + big + "=1\nIncrement=30\n");
}

TEST_F(PreferencesTest, RepeatedKeyIsRewrittenAtItsFirstPlace) {
    put("[preferences]\nIncrement=20\nIncrement=30\n");
    Settings settings(m_path);
    ASSERT_TRUE(settings.writeKey("Increment", "25"));
    EXPECT_EQ(readProfileString(m_path, "preferences", "Increment", "0"), "25");
    std::ifstream in(m_path, std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(in)), {});
    EXPECT_EQ(content, "[preferences]\nIncrement=25\nIncrement=30\n");
}

}  // namespace
}  // namespace lumiquilt
