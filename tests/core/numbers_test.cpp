#include "core/numbers.h"

#include <gtest/gtest.h>

#include "core/runtime_error.h"
#include "support/series_error_of.h"

namespace lumiquilt {
namespace {

struct LeadingRow {
    const char* name;
    const char* text;
    double value;
};

TEST(LeadingNumber, ReadsTheNumberATextStartsWith) {
    const LeadingRow rows[] = {
        {"plain", "20", 20},
        {"leading blanks", "   7", 7},
        {"trailing text", "12abc", 12},
        {"fraction", "2.5", 2.5},
        {"fraction without integer part", ".5", 0.5},
        {"negative", "-3", -3},
        {"explicit plus", "+4", 4},
        {"no digits", "abc", 0},
        {"empty", "", 0},
        {"sign alone", "-", 0},
        {"exponent is not read", "1e3", 1},
        {"second number ignored", "20 -resolution800x600", 20},
        {"big", "99999", 99999},
    };
    for (const auto& row : rows) {
        EXPECT_DOUBLE_EQ(leadingNumber(row.text), row.value) << row.name;
    }
}

TEST(IsNumber, AcceptsOnlyAWholeNumberText) {
    const std::pair<const char*, bool> rows[] = {
        {"20", true},    {" 20 ", true}, {"2.5", true},    {"-3", true},
        {"0.4", true},   {"1e3", true},  {"1.5E-2", true}, {".5", true},
        {"5.", true},    {"abc", false}, {"", false},      {"   ", false},
        {"20 x", false}, {"1e", false},  {"--1", false},   {"20 -resolution800x600", false},
        {".", false},    {"+", false},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(isNumber(text), expected) << '"' << text << '"';
    }
}

TEST(ToInt16, RoundsHalvesToEven) {
    const std::pair<double, int> rows[] = {
        {2.5, 2},    {3.5, 4},  {-2.5, -2},       {0.5, 0},           {1.5, 2},
        {2.4999, 2}, {-0.5, 0}, {32767.4, 32767}, {-32768.0, -32768}, {32766.5, 32766},
    };
    for (const auto& [value, expected] : rows) {
        EXPECT_EQ(toInt16(value), expected) << value;
    }
}

TEST(ToInt16, OutsideSixteenBitsIsOverflow) {
    for (double value : {32767.5, 32768.0, 99999.0, -32768.6, 1e300}) {
        EXPECT_EQ(testing::errorOf([&] { toInt16(value); }), kOverflow) << value;
    }
}

TEST(NumberToText, PutsABlankWhereNoSignStands) {
    EXPECT_EQ(numberToText(30LL), " 30");
    EXPECT_EQ(numberToText(-4LL), "-4");
    EXPECT_EQ(numberToText(0LL), " 0");
    EXPECT_EQ(numberToText(2.5), " 2.5");
    EXPECT_EQ(numberToText(-0.25), "-0.25");
    EXPECT_EQ(numberToText(12.0), " 12");
}

TEST(GeneralMessage, NamesNumberDescriptionStageAndRoutine) {
    EXPECT_EQ(generalMessage(RuntimeError(6), 1000, "CommandGo"),
              "error 6 (Overflow) at line 1000 of CommandGo");
    EXPECT_EQ(generalMessage(RuntimeError(481), 800, "mnuLoad"),
              "error 481 (Invalid picture) at line 800 of mnuLoad");
}

}  // namespace
}  // namespace lumiquilt
