#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QPushButton>
#include <array>
#include <functional>
#include <memory>
#include <string>

#include "core/program_state.h"
#include "display/form_picture.h"
#include "display/modal_ui.h"
#include "engine/form_preview.h"
#include "engine/montage_run.h"
#include "output/output_commands.h"
#include "persistence/settings.h"
#include "series/offset_commands.h"

namespace lumiquilt {

class SeriesReader;

/// The entries of the main window's menu, by their program names. Arrays keep the
/// program's indices: mnuWindow runs 1 to 12 (slot 0 unused).
struct MenuEntries {
    QMenu* mnuFile = nullptr;
    QMenu* mnuMontage = nullptr;
    QMenu* mnuignore = nullptr;
    QMenu* mnuOffset = nullptr;
    QMenu* mnuWindowMenu = nullptr;
    QMenu* mnuHelpMenu = nullptr;

    QAction* mnublank = nullptr;
    QAction* mnuOpen = nullptr;
    QAction* mnuLoad = nullptr;
    QAction* mnuOpenProject = nullptr;
    QAction* mnuSave = nullptr;
    QAction* mnuMakeMontage = nullptr;
    QAction* mnuJPG = nullptr;
    QAction* mnucopy = nullptr;
    QAction* mnuEditor = nullptr;
    QAction* mnuPrint100 = nullptr;
    QAction* mnuPrint = nullptr;
    QAction* mnuPrintHalf = nullptr;
    QAction* mnuSelect = nullptr;
    QAction* mnuPreferences = nullptr;
    std::array<QAction*, 12> mnuRecentFile{};
    QAction* mnuExit = nullptr;

    std::array<QAction*, kMethodCount> mnusimpleCol{};
    QAction* mnuAllMethods = nullptr;
    QAction* mnuEvaluate = nullptr;
    QAction* mnuEvaluateAll = nullptr;
    QAction* mnuSmooth = nullptr;

    std::array<QAction*, kIgnorableImages> mnuignoreImage{};

    QAction* mnuAddOffsets = nullptr;
    QAction* mnuActivateOffsetsMin = nullptr;
    QAction* mnuActivateOffsetsMax = nullptr;
    QAction* mnuActivateOffsetsSame = nullptr;

    std::array<QAction*, 13> mnuWindow{};
    std::array<QAction*, 10> mnuWindow2{};

    QAction* mnuHelp = nullptr;
    QAction* mnuContact = nullptr;
    QAction* mnuAbout = nullptr;
};

/// The address of the product's web page.
inline constexpr const char* kProductWebPage = "https://lumiquilt.example.org/";

/// Text of `textFileName` at design time: a sample name in a folder that doesn't
/// exist on a user's machine.
inline constexpr const char* kDesignFileName = "/nonexistent/lumiquilt/sample1.bmp";

/// The main window: the row of controls, the whole menu, and the commands that
/// start from it. The menus' checks and the two fields are the master copy of
/// the user's choices.
class FormMontage : public QMainWindow {
    Q_OBJECT
  public:
    FormMontage(ProgramState& state, ModalUi& ui, Settings& settings);
    ~FormMontage() override;

    // Controls.
    QLineEdit* textFileName = nullptr;
    QPushButton* CommandBrowse = nullptr;
    QLabel* Label1 = nullptr;
    QLineEdit* TextIncrement = nullptr;
    QPushButton* CommandGo = nullptr;
    QWidget* background = nullptr;

    MenuEntries m;

    // Windows, created on first use.
    FormPicture* pictureWindow(int k);
    bool hasPictureWindow(int k) const {
        return k >= 1 && k < kImageSlots && m_pictureWindows[static_cast<size_t>(k)] != nullptr;
    }
    FormMontagePicture* montageWindow();
    FormUsed* usedWindow();
    FormMontagePicture* methodWindow(int i);
    bool hasMethodWindow(int i) const {
        return i >= 0 && i < 8 && m_methodWindows[static_cast<size_t>(i)] != nullptr;
    }
    FormUsed* methodUsedWindow(int i);
    bool hasMethodUsedWindow(int i) const {
        return i >= 0 && i < 8 && m_methodUsedWindows[static_cast<size_t>(i)] != nullptr;
    }
    FormStatus* statusWindow();
    FormPreview* previewWindow();
    bool hasPreviewWindow() const { return m_previewWindow != nullptr; }

    // Commands.
    void CommandGo_Click();
    void mnuLoad_Click();
    void CommandBrowse_Click();
    void mnuRecentFile_Click(int index);
    void mnusimpleCol_Click(int index);
    void mnuWindow_Click(int index);
    void mnuWindow2_Click(int index);
    void mnuHelp_Click();
    void mnuContact_Click();
    void mnuExit_Click();
    void mnuSmooth_Click();

    /// Save As, clipboard, editor and printing.
    OutputCommands& output() { return *m_output; }
    /// The target marks and the offset entries.
    OffsetCommands& offsets() { return *m_offsets; }

    /// Rebuilds the Window menu from the visible windows.
    void updateWindowMenu();
    void addRecentFile(const std::string& item);
    void setTargetColor(double color) { m_offsets->setTargetColor(color); }
    uint32_t targetColor() const { return m_offsets->targetColor(); }

    /// Applies the window scale to this window and its controls.
    void scaleWindow(double scaleX, double scaleY);

    /// The first activation: loads the series named at start.
    void activateFirstTime();
    /// What the window does when it is created: its background, and the load of
    /// the last series when the settings ask for it.
    void loadEvent();
    /// Shows the recent-file items as the File menu's entries.
    void refreshRecentMenu();

    const RecentFiles& recentFiles() const { return m_recent; }
    RecentFiles& recentFiles() { return m_recent; }
    bool runInProgress() const { return m_runInProgress; }

    ProgramState& state() { return m_state; }
    ModalUi& ui() { return m_ui; }
    Settings& settings() { return m_settings; }

    /// Lets the window queue run once; throws ProcessEnding once the window closed.
    void yieldEvents();
    /// Holds the commands off for as long as it lives, whichever way a run ends.
    struct RunGuard {
        explicit RunGuard(FormMontage& form) : form(form) { form.setRunInProgress(true); }
        ~RunGuard() { form.setRunInProgress(false); }
        RunGuard(const RunGuard&) = delete;
        RunGuard& operator=(const RunGuard&) = delete;
        FormMontage& form;
    };

    /// Called when the main window closes; ends the process. Tests replace it.
    std::function<void()> endProcess;

  protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void buildControls();
    void buildMenus();
    void connectMenus();
    void makeBackground();

    friend class CreateImageWindows;
    void removeWindowEntry(const QString& caption);
    void removeWindow2Entry(const QString& caption);

    void setRunInProgress(bool on);
    void showGeneralMessage(int number, const std::string& description, int stage,
                            const char* routine);
    /// Loads series member k into its window, with its caption, and yields once.
    void loadSeriesMember(int k, const std::string& fileName);
    /// The same with the member as a reader read it: its frame, where that stands in
    /// for its picture, else its picture; either perhaps already scaled for its window.
    void loadSeriesMember(int k, const std::string& fileName, SeriesReader& reader);
    /// The size a series window shows a picture of a given size at, for the reading
    /// threads: the screen is read now, on this thread.
    std::function<QSize(QSize)> seriesWindowSize() const;
    /// Shows images 1 to imageCount in a cascade down the left of the screen.
    void placePictureWindows();
    /// Hides the windows of the last run or load; the ignore entries go too.
    void hideSeriesWindows();
    void unloadMethodWindows();

    ProgramState& m_state;
    ModalUi& m_ui;
    Settings& m_settings;
    RecentFiles m_recent;
    std::unique_ptr<OutputCommands> m_output;
    std::unique_ptr<OffsetCommands> m_offsets;
    bool m_runInProgress = false;
    bool m_closing = false;

    std::array<FormPicture*, kImageSlots> m_pictureWindows{};
    FormMontagePicture* m_montageWindow = nullptr;
    FormUsed* m_usedWindow = nullptr;
    std::array<FormMontagePicture*, 8> m_methodWindows{};
    std::array<FormUsed*, 8> m_methodUsedWindows{};
    FormStatus* m_statusWindow = nullptr;
    FormPreview* m_previewWindow = nullptr;

    struct DesignPlace {
        QWidget* control;
        QRect twips;
    };
    std::vector<DesignPlace> m_designPlaces;

    // The reader of the series Create Image last loaded, kept from run to run so that
    // a file that stayed as it was is not decoded again. Its pictures are the
    // windows' own; Load Image Files, which gives the windows others, drops it.
    std::unique_ptr<SeriesReader> m_seriesReader;
    /// The caption of member k's window, which has its picture, and one yield.
    void seriesMemberLoaded(int k, const std::string& fileName);
};

/// Thrown out of a yield when the main window has closed, so that a long command
/// stops where it stands.
struct ProcessEnding {};

}  // namespace lumiquilt
