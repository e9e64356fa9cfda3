#include "persistence/preferences.h"

#include <gtest/gtest.h>

#include <tuple>

#include "core/runtime_error.h"
#include "support/persistence_files.h"

namespace lumiquilt {
namespace {

// One row: a settings file (none when empty), and what start-up takes from it.
struct ScaleRow {
    std::string content;
    int16_t autoSmooth;
    float edge, focus;
    int16_t diff;
    float edge2;
    int16_t shortcut, rightMouse;
    int method;
    double color;
};

using PreferencesTest = testing::ScratchFolderTest;

TEST_F(PreferencesTest, KeysTakeTheirScalesAndAValueBeyondItsWidthReadsAsZero) {
    const ScaleRow rows[] = {
        {"", 0, 0, 0, 0, 0, 0, 0, 0, 0},
        // Any rightmouse but 0 is 1. The colour passes through a 32-bit float, which
        // has no odd number above 2^24.
        {"[preferences]\nautoSmooth=1\nedgeFactor=29\nfocusFactor=10\ndiffFactor=100\n"
         "edgefactor2=4\nshortcut=1\nrightmouse=7\nMontage method=5\nTarget color=16777217\n",
         1, 0.29f, 0.1f, 100, 0.4f, 1, 1, 5, 16777216.0},
        // Values beyond their width read as 0; the others still count.
        {"[preferences]\nautoSmooth=99999999\nedgeFactor=50\ndiffFactor=40000\nedgefactor2=" +
             std::string(400, '9') +
             "\nrightmouse=1\nMontage method=70000\nTarget color=" + std::string(50, '9') + "\n",
         0, 0.5f, 0, 0, 0, 0, 1, 0, 0},
    };
    for (const ScaleRow& row : rows) {
        SCOPED_TRACE(row.content);
        const std::string name = path("Lumiquilt.ini");
        std::filesystem::remove(name);
        if (!row.content.empty()) {
            testing::putFile(name, row.content);
        }
        Settings settings(name);
        ProgramState s;
        s.edgeFactor = 5;  // each read replaces what was in memory
        s.rightMouseEnabled = 1;
        readSettingsBeforeWindows(s, settings);
        EXPECT_EQ(std::tuple(s.autoSmooth, s.edgeFactor, s.focusFactor, s.diffFactor, s.edgefactor2,
                             s.shortcutEnabled, s.rightMouseEnabled),
                  std::tuple(row.autoSmooth, row.edge, row.focus, row.diff, row.edge2, row.shortcut,
                             row.rightMouse));
        const SettingsAfterWindows late = readSettingsAfterWindows(settings);
        EXPECT_EQ(late.methodIndex, row.method);
        EXPECT_EQ(late.targetColor, row.color);
        EXPECT_EQ(readTargetColor(settings), row.color);
    }
}

// A field's text, what OK writes under its key, and what the field shows when that
// key is read back at the next start.
TEST(Factors, FieldToKeyToField) {
    const struct {
        int field;
        const char* text;
        const char* keyText;
        const char* fieldAgain;
    } rows[] = {
        // 0.29 as a float lies a little under 0.29: 71 writes 28, not 29.
        {0, "71", "28", "72"},    {0, "72", "28", "72"},      {0, "90", "10", "90"},
        {0, "abc", "100", "0"},   {0, "150", "-50", "150"},   {1, "10", "10", "10"},
        {1, "150", "150", "150"}, {1, "12.5", "12", "12"},    {2, "1", "100", "1"},
        {2, "0.5", "50", "0.5"},  {2, "2e1", "2000", "20"},   {2, "0.125", "12", "0.12"},
        {3, "60", "40", "60"},    {3, "1", "98", "1.999998"},
    };
    for (const auto& row : rows) {
        ProgramState s;
        setFactorFromField(s, row.field, row.text);
        EXPECT_EQ(factorKeyText(s, row.field), row.keyText) << row.field << " " << row.text;
        ProgramState next;
        setFactorFromKey(next, row.field, std::stod(row.keyText));
        EXPECT_EQ(factorFieldText(next, row.field), row.fieldAgain) << row.field << " " << row.text;
    }
}

TEST(Factors, ResultsBeyondTheirWidthOverflow) {
    ProgramState s;
    EXPECT_THROW(setFactorFromField(s, 2, "400"), RuntimeError);   // 40000 is beyond 16 bits
    EXPECT_THROW(setFactorFromField(s, 1, "1e60"), RuntimeError);  // beyond a float
    EXPECT_THROW(setFactorFromKey(s, 0, 1e300), RuntimeError);
    EXPECT_THROW(setFactorFromKey(s, 4, 1), RuntimeError);
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

}  // namespace
}  // namespace lumiquilt
