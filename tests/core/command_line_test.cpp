#include "core/command_line.h"

#include <gtest/gtest.h>

namespace lumiquilt {
namespace {

TEST(CommandLine, Grammar) {
    const std::optional<std::string> none;
    const std::optional<std::pair<double, double>> noResolution;
    const struct {
        std::vector<std::string> args;
        std::string filePart;
        std::optional<std::string> increment;
        std::optional<std::pair<double, double>> resolution;
    } rows[] = {
        {{}, "", none, noResolution},
        {{"/pics/scene1.jpg", "-i20"}, "/pics/scene1.jpg", "20", noResolution},
        // The increment alone leaves the file to the settings.
        {{"-i30"}, "", "30", noResolution},
        {{"-I15"}, "", "15", noResolution},
        // A name with blanks needs no quotes; a quoted one loses them unless a switch follows.
        {{"/my pics/scene", "1.jpg"}, "/my pics/scene 1.jpg", none, noResolution},
        {{"\"/my pics/scene1.jpg\""}, "/my pics/scene1.jpg", none, noResolution},
        {{"\"/my pics/scene1.jpg\"", "-i20"}, "\"/my pics/scene1.jpg\"", "20", noResolution},
        // The increment takes the rest of the line.
        {{"-i20", "-resolution800x600"}, "", "20 -resolution800x600", std::pair(800.0, 600.0)},
        {{"/a/b1.jpg", "RESOLUTION1024X800"}, "/a/b1.jpg", none, std::pair(1024.0, 800.0)},
        // A switch in the middle of an argument is no switch.
        {{"/a/x-i2.jpg"}, "/a/x-i2.jpg", none, noResolution},
        {{"  /a/b1.jpg  "}, "/a/b1.jpg", none, noResolution},
    };
    for (const auto& row : rows) {
        const CommandLine cl = parseCommandLine(row.args);
        const std::string what = row.args.empty() ? "" : row.args[0];
        EXPECT_EQ(cl.filePart, row.filePart) << what;
        EXPECT_EQ(cl.incrementText, row.increment) << what;
        EXPECT_EQ(cl.resolution, row.resolution) << what;
    }
}

TEST(CommandLine, LineKeepsEverythingButTheEnclosingQuotes) {
    EXPECT_EQ(parseCommandLine({"\"/a b/c1.jpg\""}).line, "/a b/c1.jpg");
    EXPECT_EQ(parseCommandLine({"/a/c1.jpg", "-i5"}).line, "/a/c1.jpg -i5");
    EXPECT_EQ(parseCommandLine({"\""}).line, "\"");
}

}  // namespace
}  // namespace lumiquilt
