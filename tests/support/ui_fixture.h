#pragma once

#include <gtest/gtest.h>
#include <QGuiApplication>
#include <QScreen>

#include <memory>

#include "core/startup.h"
#include "support/test_pictures.h"

namespace lumiquilt::testing {

/// A started program with a scripted user, its own folder as the program's folder
/// and its own settings file.
class UiTest : public ::testing::Test {
  protected:
    void SetUp() override {
        state.appPath = dir.root() + "/";
        settings = std::make_unique<Settings>(dir.path("Lumiquilt.ini"));
    }

    /// Runs start-up with these arguments; the main window is `form`.
    void start(const std::vector<std::string>& arguments = {}) {
        StartupResult started =
            startLumiquilt(arguments, state, ui, *settings, QSize(1024, 768), hooks);
        handedToDesktop = started.handedToDesktop;
        window = std::move(started.window);
        if (window) {
            window->endProcess = [this] { ended = true; };
        }
    }

    FormMontage& form() { return *window; }

    /// A series name1.png .. nameN.png of pattern pictures.
    void makeSeries(const std::string& name, int count, int width = 40, int height = 30) {
        for (int k = 1; k <= count; ++k) {
            savePictureFile(patternPicture(width, height, k),
                            dir.path(name + std::to_string(k) + ".png"));
        }
    }

    void setFileName(const std::string& text) {
        form().textFileName->setText(QString::fromStdString(text));
    }
    void setIncrement(const std::string& text) {
        form().TextIncrement->setText(QString::fromStdString(text));
    }

    int visiblePictureWindows() {
        int n = 0;
        for (int k = 1; k < kImageSlots; ++k) {
            n += form().hasPictureWindow(k) && form().pictureWindow(k)->isVisible();
        }
        return n;
    }

    const MessageRecord& lastMessage() const { return ui.messages.back(); }

    TestFolder dir;
    ProgramState state;
    ScriptedModalUi ui;
    std::unique_ptr<Settings> settings;
    StartupHooks hooks;
    std::unique_ptr<FormMontage> window;
    bool handedToDesktop = false;
    bool ended = false;
};

}  // namespace lumiquilt::testing
