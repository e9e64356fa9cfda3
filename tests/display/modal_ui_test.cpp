#include "display/modal_ui.h"

#include <gtest/gtest.h>

namespace lumiquilt {
namespace {

struct FilterRow {
    const char* name;
    const char* filter;
    const char* expected;
};

class QtFilterTest : public ::testing::TestWithParam<FilterRow> {};

TEST_P(QtFilterTest, EachFilterShowsItsPatternsOnce) {
    EXPECT_EQ(qtFilterFrom(GetParam().filter).toStdString(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Filters, QtFilterTest,
    ::testing::Values(
        FilterRow{"PlainCaption", "Pictures|*.bmp;*.jpg|All|*.*|",
                  "Pictures (*.bmp *.jpg);;All (*.*)"},
        // The caption's own brackets are where Qt looks for the patterns, so they
        // must hold blanks, not semicolons; the caption's double blank stays.
        FilterRow{"CaptionNamesItsPatterns",
                  "Picture files  (*.bmp;*.jpg;*.gif)|*.bmp;*.jpg;*.gif|All files  (*.*)|*.*|",
                  "Picture files  (*.bmp *.jpg *.gif);;All files  (*.*)"},
        FilterRow{"CaptionIsThePattern", "*.bmp|*.bmp|*.jpg|*.jpg|*.gif|*.gif|",
                  "*.bmp;;*.jpg;;*.gif"},
        // Brackets that say something else are part of the caption.
        FilterRow{"OtherBracketsStay", "JPEG (small)|*.jpg|", "JPEG (small) (*.jpg)"},
        FilterRow{"BracketsWithOtherPatterns", "Bitmaps (*.bmp)|*.bmp;*.dib|",
                  "Bitmaps (*.bmp) (*.bmp *.dib)"},
        FilterRow{"NoTrailingBar", "Pictures|*.gif", "Pictures (*.gif)"},
        FilterRow{"Empty", "", ""}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace lumiquilt
