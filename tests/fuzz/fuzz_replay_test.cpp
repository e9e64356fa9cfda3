// Every input kept for the fuzz targets, replayed: the seeds, and each input that
// once broke a promise, so that the fault stays fixed.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/fuzz_entries.h"

namespace lumiquilt::fuzz {
namespace {

namespace fs = std::filesystem;

}  // namespace

void PrintTo(const FuzzTarget& target, std::ostream* out) {
    *out << target.name;
}

namespace {

class FuzzReplay : public ::testing::TestWithParam<FuzzTarget> {};

TEST_P(FuzzReplay, KeptInputsKeepEveryPromise) {
    const FuzzTarget target = GetParam();
    int replayed = 0;
    for (const char* kind : {"seeds", "crashes"}) {
        const fs::path folder = fs::path(LUMIQUILT_TEST_DATA) / "fuzz" / target.name / kind;
        if (!fs::is_directory(folder)) {
            continue;
        }
        std::vector<fs::path> files;
        for (const auto& entry : fs::directory_iterator(folder)) {
            files.push_back(entry.path());
        }
        std::sort(files.begin(), files.end());
        for (const fs::path& file : files) {
            std::ifstream in(file, std::ios::binary);
            const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                                             std::istreambuf_iterator<char>());
            try {
                target.entry(bytes.data(), bytes.size());
            } catch (const FuzzFailure& failure) {
                ADD_FAILURE() << file.string() << ": " << failure.what();
            }
            ++replayed;
        }
    }
    EXPECT_GT(replayed, 0) << "no inputs kept for " << target.name;
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzReplay,
                         ::testing::ValuesIn(fuzzTargets().begin(), fuzzTargets().end()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace lumiquilt::fuzz
