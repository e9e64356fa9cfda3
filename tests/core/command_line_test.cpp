#include "core/command_line.h"

#include <gtest/gtest.h>

namespace lumiquilt {
namespace {

struct Row {
    const char* name;
    std::vector<std::string> args;
    std::string filePart;
    std::optional<std::string> increment;
    std::optional<std::pair<double, double>> resolution;
};

TEST(CommandLine, Grammar) {
    const Row rows[] = {
        {"empty line", {}, "", std::nullopt, std::nullopt},
        {"file and increment",
         {"/pics/scene1.jpg", "-i20"},
         "/pics/scene1.jpg",
         "20",
         std::nullopt},
        {"increment alone leaves the file to the settings", {"-i30"}, "", "30", std::nullopt},
        {"upper-case switch", {"-I15"}, "", "15", std::nullopt},
        {"name with blanks needs no quotes",
         {"/my pics/scene", "1.jpg"},
         "/my pics/scene 1.jpg",
         std::nullopt,
         std::nullopt},
        {"quoted name loses its quotes",
         {"\"/my pics/scene1.jpg\""},
         "/my pics/scene1.jpg",
         std::nullopt,
         std::nullopt},
        {"quote kept when a switch follows",
         {"\"/my pics/scene1.jpg\"", "-i20"},
         "\"/my pics/scene1.jpg\"",
         "20",
         std::nullopt},
        {"increment takes the rest of the line",
         {"-i20", "-resolution800x600"},
         "",
         "20 -resolution800x600",
         std::make_pair(800.0, 600.0)},
        {"resolution without dash",
         {"/a/b1.jpg", "RESOLUTION1024X800"},
         "/a/b1.jpg",
         std::nullopt,
         std::make_pair(1024.0, 800.0)},
        {"switch in the middle of an argument is no switch",
         {"/a/x-i2.jpg"},
         "/a/x-i2.jpg",
         std::nullopt,
         std::nullopt},
        {"blanks around the file part are trimmed",
         {"  /a/b1.jpg  "},
         "/a/b1.jpg",
         std::nullopt,
         std::nullopt},
    };
    for (const auto& row : rows) {
        const CommandLine cl = parseCommandLine(row.args);
        EXPECT_EQ(cl.filePart, row.filePart) << row.name;
        EXPECT_EQ(cl.incrementText, row.increment) << row.name;
        EXPECT_EQ(cl.resolution, row.resolution) << row.name;
    }
}

TEST(CommandLine, LineKeepsEverythingButTheEnclosingQuotes) {
    EXPECT_EQ(parseCommandLine({"\"/a b/c1.jpg\""}).line, "/a b/c1.jpg");
    EXPECT_EQ(parseCommandLine({"/a/c1.jpg", "-i5"}).line, "/a/c1.jpg -i5");
    EXPECT_EQ(parseCommandLine({"\""}).line, "\"");
}

}  // namespace
}  // namespace lumiquilt
