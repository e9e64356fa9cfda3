#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>

#include "core/runtime_error.h"
#include "engine/create_image.h"

namespace lumiquilt::testing {

/// A picture, blue-green-red, top row first.
struct FakePicture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> bytes;
};

/// A Create Image front end without windows. Files on disk decide what exists; the
/// pictures they decode to come from a table, and a file without an entry is no picture.
class ScriptedFront : public CreateImageFront {
  public:
    RunChoices chosen;
    std::string fileName;
    std::map<std::string, FakePicture> pictures;
    std::vector<std::string> log;       ///< the stages, in order
    std::vector<std::string> runs;      ///< "method/increment" of each run past its checks
    std::vector<std::string> messages;  ///< "text | title | icon"
    std::function<void(int k)> afterLoad;
    std::function<void()> onShow;           ///< when slot 100 is finished
    std::function<void(int run)> afterRun;  ///< when run number `run` has ended, either way
    std::map<int, MarkCentre> marks;        ///< images without one keep the design place

    RunChoices choices() override { return chosen; }
    void setIncrementText(const std::string& text) override { chosen.incrementText = text; }
    std::string fileNameText() override { return fileName; }
    void setFileNameText(const std::string& text) override { fileName = text; }
    void message(const std::string& text, const std::string& title, MessageIcon icon) override {
        messages.push_back(text + " | " + title + " | " + std::to_string(static_cast<int>(icon)));
    }
    void loadMember(int k, const std::string& name) override {
        if (!std::filesystem::is_regular_file(name)) {
            throw RuntimeError(kFileNotFound);
        }
        const auto found = pictures.find(name);
        if (found == pictures.end()) {
            throw RuntimeError(kInvalidPicture);
        }
        m_loaded.resize(static_cast<size_t>(k));
        m_loaded[static_cast<size_t>(k - 1)] = &found->second;
        log.push_back("load " + std::to_string(k));
        if (afterLoad) {
            afterLoad(k);
        }
    }
    PictureView memberPicture(int k) override {
        const FakePicture& p = *m_loaded.at(static_cast<size_t>(k - 1));
        return PictureView{p.width, p.height, p.bytes.data(), 3 * p.width, PixelFormat::bgr24};
    }
    void setBusy(bool busy) override {
        log.push_back(busy ? "busy" : "idle");
        // Every way out of a run ends the hourglass, once.
        if (!busy && afterRun) {
            afterRun(++m_runs);
        }
    }
    void clearMontagePicture() override {
        runs.push_back(std::to_string(ticked()) + "/" + chosen.incrementText);
    }
    void hideLastRun(const std::string&) override { log.push_back("hide"); }
    void forgetMissingFile(const std::string&) override { log.push_back("forget"); }
    void arrangeWindows() override { log.push_back("arrange"); }
    MarkCentre markCentre(int k) override {
        const auto found = marks.find(k);
        return found == marks.end() ? kDesignMarkCentre : found->second;
    }
    void montageResized() override { log.push_back("resized"); }
    void hideMontage() override { log.push_back("hide montage"); }
    void startPreview() override { log.push_back("preview"); }
    void showMontage() override {
        log.push_back("show");
        if (onShow) {
            onShow();
        }
    }
    void runReported(const std::string&) override { log.push_back("reported"); }
    void runClosed(const std::string&) override { log.push_back("closed"); }

    /// The first ticked method, or -1.
    int ticked() const {
        const auto& m = chosen.methodChecked;
        const auto found = std::find(m.begin(), m.end(), true);
        return found == m.end() ? -1 : static_cast<int>(found - m.begin());
    }
    int count(const std::string& entry) const {
        return static_cast<int>(std::count(log.begin(), log.end(), entry));
    }

  private:
    std::vector<const FakePicture*> m_loaded;
    int m_runs = 0;
};

/// A program state whose folder is one of the test's own, and a scripted front end.
class ScriptedRoadTest : public ::testing::Test {
  public:
    void SetUp() override {
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string(test->test_suite_name()) + "_" + test->name();
        std::replace(name.begin(), name.end(), '/', '_');
        dir = std::filesystem::temp_directory_path() / ("lumiquilt_road_" + name);
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
        initialiseProgramState(state);
        state.appPath = dir.string() + "/";
    }
    void TearDown() override { std::filesystem::remove_all(dir); }

    std::string path(const std::string& name) const { return (dir / name).string(); }
    /// Members s1 .. sN.bmp, member k a picture in red 20 * k.
    void makeSeries(int count, int width = 12, int height = 8) {
        for (int k = 1; k <= count; ++k) {
            const std::string name = path("s" + std::to_string(k) + ".bmp");
            std::ofstream(name) << "x";
            FakePicture& p = front.pictures[name] = {width, height, {}};
            for (int i = 0; i < width * height; ++i) {
                p.bytes.insert(p.bytes.end(), {0, 0, static_cast<uint8_t>(20 * k)});
            }
        }
    }

    std::filesystem::path dir;
    ProgramState state;
    ScriptedFront front;
};

}  // namespace lumiquilt::testing
