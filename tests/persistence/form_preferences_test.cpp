#include "persistence/form_preferences.h"

#include <QApplication>
#include <QPointer>

#include "persistence/profile_file.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

// Notes each call of the desktop ties with the switches as they stood then.
class RecordingTies : public PreferencesShellTies {
  public:
    explicit RecordingTies(const ProgramState& s, const Settings& settings)
        : s(s), settings(settings) {}
    void makeDesktopShortcut() override { note("shortcut"); }
    void addContextMenuVerb() override { note("add verb"); }
    void removeContextMenuVerb() override { note("remove verb"); }

    std::vector<std::string> calls;

  private:
    void note(const std::string& what) {
        calls.push_back(what + " shortcutKey=" + settings.readKey("shortcut") +
                        " rightMouse=" + std::to_string(s.rightMouseEnabled) +
                        " rightmouseKey=" + settings.readKey("rightmouse"));
    }
    const ProgramState& s;
    const Settings& settings;
};

class FormPreferencesTest : public testing::UiTest {
  protected:
    void putSettings(const std::string& content) {
        testing::writeBytes(dir.path("Lumiquilt.ini"), "[preferences]\n" + content);
    }
    FormPreferences& open() {
        form().m.mnuPreferences->trigger();
        FormPreferences* dialog = PreferencesCommands::of(form()).dialog();
        EXPECT_NE(dialog, nullptr);
        return *dialog;
    }
    // The keys of the settings file, in the order they stand.
    std::vector<std::string> keysInFile() {
        std::vector<std::string> keys;
        std::string content = testing::readBytes(dir.path("Lumiquilt.ini"));
        size_t pos = 0;
        while (pos < content.size()) {
            size_t end = content.find('\n', pos);
            const std::string line = content.substr(pos, end - pos);
            if (line.find('=') != std::string::npos) {
                keys.push_back(line.substr(0, line.find('=')));
            }
            pos = end == std::string::npos ? content.size() : end + 1;
        }
        return keys;
    }
    std::string key(const std::string& name) { return settings->readKey(name); }
    static void settle() { QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
};

TEST_F(FormPreferencesTest, OpensModelessOwnedByTheMainWindowWithItsControls) {
    start();
    FormPreferences& p = open();
    EXPECT_TRUE(p.isVisible());
    EXPECT_FALSE(p.isModal());
    EXPECT_EQ(p.parentWidget(), &form());
    EXPECT_EQ(p.windowTitle(), "Preferences");
    for (int i = 0; i < kMethodCount; ++i) {
        EXPECT_EQ(p.OptionMontageMethod[static_cast<size_t>(i)]->text(),
                  form().m.mnusimpleCol[static_cast<size_t>(i)]->text());
    }
    const std::pair<QWidget*, bool> seen[] = {
        {p.Frame1, true},           {p.CheckLoadImages, true},     {p.CheckShortcut, true},
        {p.CheckRight, true},       {p.PictureColor, true},        {p.CommandColor, true},
        {p.CommandOK, true},        {p.CheckUsed, false},          {p.Label1, false},
        {p.Text1, false},           {p.VScroll1, false},           {p.Frame2, false},
        {p.CheckAutoSmooth, false}, {p.CommandSmoothReset, false},
    };
    for (const auto& [control, visible] : seen) {
        EXPECT_EQ(control->isVisible(), visible) << control->metaObject()->className();
    }
    EXPECT_EQ(p.CommandColor->text(), "Change Target Color");
    EXPECT_EQ(p.CheckRight->text(),
              "Add  'Lumiquilt' to the Windows Explorer Right Mouse Click menu");
    EXPECT_EQ(p.LabelSmooth[2]->text(), "Look at detailed areas vs background areas");
    EXPECT_EQ(p.VScroll1->maximum(), 32767);
    EXPECT_EQ(p.VScrollSmooth[3]->minimum(), 1);
    EXPECT_EQ(p.VScrollSmooth[3]->maximum(), 100);

    // A second click brings up the same dialog.
    FormPreferences* first = &p;
    form().m.mnuPreferences->trigger();
    EXPECT_EQ(PreferencesCommands::of(form()).dialog(), first);
}

TEST_F(FormPreferencesTest, NoFileShowsZerosAndTheFirstOkWritesAllButThreeKeys) {
    start();
    FormPreferences& p = open();
    EXPECT_TRUE(p.OptionMontageMethod[0]->isChecked());
    EXPECT_EQ(p.Text1->text(), "0");
    EXPECT_EQ(p.VScroll1->value(), 0);
    EXPECT_EQ(p.pictureColor(), 0u);
    EXPECT_FALSE(p.CheckLoadImages->isChecked());
    const char* fields[] = {"100", "0", "0", "100"};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(p.TextSmooth[i]->text(), fields[i]) << i;
    }
    QPointer<FormPreferences> dialog(&p);
    p.CommandOK->click();
    settle();
    EXPECT_TRUE(dialog.isNull());
    const std::vector<std::string> expected = {"Montage method", "Originating image", "Load images",
                                               "Increment",      "shortcut",          "rightmouse",
                                               "autoSmooth",     "edgeFactor",        "focusFactor",
                                               "diffFactor",     "edgefactor2"};
    EXPECT_EQ(keysInFile(), expected);
    EXPECT_EQ(key("edgeFactor"), "0");
    EXPECT_EQ(key("edgefactor2"), "0");
    EXPECT_EQ(key("Increment"), "0");
}

TEST_F(FormPreferencesTest, OkWritesWhatTheControlsHoldAndChangesNoMenu) {
    start();
    FormPreferences& p = open();
    p.OptionMontageMethod[4]->setChecked(true);
    p.CheckUsed->setChecked(true);
    p.CheckLoadImages->setChecked(true);
    p.Text1->setText("25");
    p.CheckAutoSmooth->setChecked(true);
    p.TextSmooth[2]->setText("0.5");
    p.CommandOK->click();
    EXPECT_EQ(key("Montage method"), "4");
    EXPECT_EQ(key("Originating image"), "1");
    EXPECT_EQ(key("Load images"), "1");
    EXPECT_EQ(key("Increment"), "25");
    EXPECT_EQ(key("autoSmooth"), "1");
    EXPECT_EQ(key("diffFactor"), "50");
    EXPECT_EQ(state.showUsedWindow, 1);
    EXPECT_EQ(state.diffFactor, 50);
    // The method and increment take effect at the next start.
    EXPECT_TRUE(form().m.mnusimpleCol[0]->isChecked());
    EXPECT_EQ(form().TextIncrement->text(), "0");

    settle();
    start();
    EXPECT_TRUE(form().m.mnusimpleCol[4]->isChecked());
    EXPECT_EQ(form().TextIncrement->text(), "25");
    FormPreferences& again = open();
    EXPECT_TRUE(again.OptionMontageMethod[4]->isChecked());
    EXPECT_TRUE(again.CheckLoadImages->isChecked());
    EXPECT_EQ(again.TextSmooth[2]->text(), "0.5");
}

TEST_F(FormPreferencesTest, TwentyNineShowsSeventyOneAndWritesTwentyEightThenStays) {
    putSettings("edgeFactor=29\n");
    start();
    FormPreferences& p = open();
    EXPECT_EQ(p.TextSmooth[0]->text(), "71");
    EXPECT_EQ(p.VScrollSmooth[0]->value(), 71);
    p.CommandOK->click();
    EXPECT_EQ(key("edgeFactor"), "28");
    settle();
    start();
    FormPreferences& again = open();
    EXPECT_EQ(again.TextSmooth[0]->text(), "72");
    again.CommandOK->click();
    EXPECT_EQ(key("edgeFactor"), "28");
}

TEST_F(FormPreferencesTest, NinetyInTheFirstFieldWritesTenAndShowsNinetyAgain) {
    start();
    FormPreferences& p = open();
    p.TextSmooth[0]->setText("90");
    p.TextSmooth[2]->setText("1");
    p.CommandOK->click();
    EXPECT_FLOAT_EQ(state.edgeFactor, 0.1f);
    EXPECT_EQ(key("edgeFactor"), "10");
    EXPECT_EQ(key("diffFactor"), "100");
    settle();
    start();
    EXPECT_EQ(open().TextSmooth[0]->text(), "90");
}

TEST_F(FormPreferencesTest, FieldAndBarKeepInStepBothWays) {
    start();
    FormPreferences& p = open();
    p.TextSmooth[1]->setText("42");
    EXPECT_EQ(p.VScrollSmooth[1]->value(), 42);
    p.VScrollSmooth[1]->setValue(57);
    EXPECT_EQ(p.TextSmooth[1]->text(), "57");
    // 150 lies outside 1 to 100: the bar stays, the field keeps it, and OK stores it.
    p.TextSmooth[1]->setText("150");
    EXPECT_EQ(p.VScrollSmooth[1]->value(), 57);
    EXPECT_EQ(p.TextSmooth[1]->text(), "150");
    // The limits themselves are within the range.
    p.TextSmooth[1]->setText("100");
    EXPECT_EQ(p.VScrollSmooth[1]->value(), 100);
    p.TextSmooth[1]->setText("150");
    // The hidden increment pair runs 0 to 32767.
    p.Text1->setText("32767");
    EXPECT_EQ(p.VScroll1->value(), 32767);
    p.Text1->setText("40000");
    EXPECT_EQ(p.VScroll1->value(), 32767);
    p.VScroll1->setValue(12);
    EXPECT_EQ(p.Text1->text(), "12");
    p.CommandOK->click();
    EXPECT_EQ(key("focusFactor"), "150");
    EXPECT_EQ(key("Increment"), "12");
}

TEST_F(FormPreferencesTest, ResetWithoutOkChangesMemoryButNotTheFile) {
    putSettings("edgeFactor=50\nfocusFactor=20\ndiffFactor=300\nedgefactor2=7\nautoSmooth=0\n");
    start();
    const std::string before = testing::readBytes(dir.path("Lumiquilt.ini"));
    FormPreferences& p = open();
    p.CommandSmoothReset->click();
    EXPECT_TRUE(p.CheckAutoSmooth->isChecked());
    const char* fields[] = {"90", "10", "1", "60"};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(p.TextSmooth[i]->text(), fields[i]) << i;
    }
    EXPECT_EQ(state.autoSmooth, 1);
    EXPECT_FLOAT_EQ(state.focusFactor, 0.1f);
    EXPECT_FLOAT_EQ(state.edgeFactor, 0.1f);
    EXPECT_EQ(state.diffFactor, 100);
    EXPECT_FLOAT_EQ(state.edgefactor2, 4);
    // Closing saves nothing.
    p.close();
    settle();
    EXPECT_EQ(PreferencesCommands::of(form()).dialog(), nullptr);
    EXPECT_EQ(testing::readBytes(dir.path("Lumiquilt.ini")), before);
}

TEST_F(FormPreferencesTest, AFieldThatIsNoNumberKeepsItsSettingAndRewritesItsKey) {
    putSettings("focusFactor=20\ndiffFactor=300\n");
    start();
    FormPreferences& p = open();
    p.TextSmooth[0]->setText("abc");  // read as 0: edgeFactor 1
    p.TextSmooth[1]->setText("abc");
    p.TextSmooth[2]->setText("");
    p.CommandOK->click();
    EXPECT_EQ(key("edgeFactor"), "100");
    EXPECT_EQ(key("focusFactor"), "20");
    EXPECT_EQ(key("diffFactor"), "300");
    EXPECT_EQ(key("edgefactor2"), "0");
}

TEST_F(FormPreferencesTest, OpeningSkipsWhatFailsAndGoesOn) {
    putSettings("Montage method=9\nIncrement=40000\nOriginating image=1\nTarget color=65280\n");
    start();
    FormPreferences& p = open();
    for (QRadioButton* option : p.OptionMontageMethod) {
        EXPECT_FALSE(option->isChecked());
    }
    EXPECT_EQ(p.Text1->text(), "40000");
    EXPECT_EQ(p.VScroll1->value(), 0);
    EXPECT_TRUE(p.CheckUsed->isChecked());
    EXPECT_EQ(p.pictureColor(), 65280u);
    // With no option chosen, OK leaves the method's key alone.
    p.CommandOK->click();
    EXPECT_EQ(key("Montage method"), "9");
    EXPECT_EQ(key("Increment"), "40000");
}

TEST_F(FormPreferencesTest, LoadImagesIsReadAgainEachTimeTheWindowBecomesActive) {
    start();
    FormPreferences& p = open();
    EXPECT_FALSE(p.CheckLoadImages->isChecked());
    settings->writeKey("Load images", "1");
    EXPECT_FALSE(p.CheckLoadImages->isChecked());
    QApplication::setActiveWindow(&form());
    QApplication::setActiveWindow(&p);
    EXPECT_TRUE(p.CheckLoadImages->isChecked());
    settings->writeKey("Load images", "0");
    form().m.mnuPreferences->trigger();
    EXPECT_FALSE(p.CheckLoadImages->isChecked());
}

TEST_F(FormPreferencesTest, ColorIsStoredAtOnceAndGivenToTheMarks) {
    putSettings("Target color=255\n");
    start();
    makeSeries("c", 2);
    setFileName(dir.path("c1.png"));
    form().mnuLoad_Click();
    FormPreferences& p = open();
    ui.colorAnswers.push_back(0x00FF00u);
    p.CommandColor->click();
    ASSERT_EQ(ui.colorRequests.size(), 1u);
    EXPECT_EQ(ui.colorRequests[0], 255u);
    EXPECT_EQ(key("Target color"), "65280");
    EXPECT_EQ(p.pictureColor(), 0x00FF00u);
    EXPECT_EQ(form().targetColor(), 0x00FF00u);

    // Cancel hands back the colour it started from, and that is stored.
    settings->writeKey("Target color", "7");
    p.CommandColor->click();
    EXPECT_EQ(ui.colorRequests.back(), 0x00FF00u);
    EXPECT_EQ(key("Target color"), "65280");

    // Closing without OK keeps the colour: it was stored already.
    p.close();
    settle();
    EXPECT_EQ(key("Target color"), "65280");
    EXPECT_EQ(form().targetColor(), 0x00FF00u);
}

TEST_F(FormPreferencesTest, LoadImageFilesReadsTheTargetColorAgain) {
    start();
    makeSeries("t", 2);
    setFileName(dir.path("t1.png"));
    settings->writeKey("Target color", "16711680");
    form().mnuLoad_Click();
    EXPECT_EQ(form().targetColor(), 0xFF0000u);
}

// One row: the box, the switch in memory before OK, and the calls OK makes.
struct TiesRow {
    const char* name;
    bool shortcutBox;
    bool rightBox;
    int16_t rightMouseBefore;
    std::vector<std::string> calls;
};

class PreferencesTies : public FormPreferencesTest,
                        public ::testing::WithParamInterface<TiesRow> {};

TEST_P(PreferencesTies, OkCallsTheDesktopTiesAtItsSteps) {
    const TiesRow& row = GetParam();
    putSettings("shortcut=0\nrightmouse=" + std::to_string(row.rightMouseBefore) + "\n");
    start();
    RecordingTies ties(state, *settings);
    PreferencesCommands::of(form()).setShellTies(&ties);
    FormPreferences& p = open();
    p.CheckShortcut->setChecked(row.shortcutBox);
    p.CheckRight->setChecked(row.rightBox);
    p.CommandOK->click();
    EXPECT_EQ(ties.calls, row.calls);
    EXPECT_EQ(state.shortcutEnabled, row.shortcutBox ? 1 : 0);
    EXPECT_EQ(state.rightMouseEnabled, row.rightBox ? 1 : 0);
    EXPECT_EQ(key("rightmouse"), row.rightBox ? "1" : "0");
}

INSTANTIATE_TEST_SUITE_P(
    Steps, PreferencesTies,
    ::testing::Values(
        // The shortcut is made after its key is written; the verb changes before
        // the switch takes the box.
        TiesRow{"ShortcutAndAdd",
                true,
                true,
                0,
                {"shortcut shortcutKey=1 rightMouse=0 rightmouseKey=0",
                 "add verb shortcutKey=1 rightMouse=0 rightmouseKey=0"}},
        TiesRow{
            "Remove", false, false, 1, {"remove verb shortcutKey=0 rightMouse=1 rightmouseKey=1"}},
        TiesRow{"AlreadyOnTouchesNothing", false, true, 1, {}},
        TiesRow{"AlreadyOffTouchesNothing", false, false, 0, {}}),
    [](const ::testing::TestParamInfo<TiesRow>& info) { return info.param.name; });

TEST_F(FormPreferencesTest, WithoutTiesOkOnlyWritesTheKeys) {
    putSettings("rightmouse=1\n");
    start();
    FormPreferences& p = open();
    p.CheckShortcut->setChecked(true);
    p.CheckRight->setChecked(false);
    p.CommandOK->click();
    EXPECT_EQ(key("shortcut"), "1");
    EXPECT_EQ(key("rightmouse"), "0");
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(FormPreferencesTest, AFailingTieDoesNotStopOk) {
    struct Failing : PreferencesShellTies {
        void makeDesktopShortcut() override { throw RuntimeError(kPermissionDenied); }
        void addContextMenuVerb() override { throw std::runtime_error("no desktop"); }
        void removeContextMenuVerb() override {}
    } failing;
    start();
    PreferencesCommands::of(form()).setShellTies(&failing);
    FormPreferences& p = open();
    p.CheckShortcut->setChecked(true);
    p.CheckRight->setChecked(true);
    p.CommandOK->click();
    EXPECT_EQ(key("rightmouse"), "1");
    EXPECT_EQ(key("edgefactor2"), "0");
}

TEST_F(FormPreferencesTest, AnUnwritableSettingsFileLosesNothingAndSaysNothing) {
    putSettings("Increment=20\n");
    start();
    FormPreferences& p = open();
    p.Text1->setText("30");
    ::chmod(dir.path("Lumiquilt.ini").c_str(), 0444);
    p.CommandOK->click();
    ::chmod(dir.path("Lumiquilt.ini").c_str(), 0644);
    EXPECT_EQ(testing::readBytes(dir.path("Lumiquilt.ini")), "[preferences]\nIncrement=20\n");
    EXPECT_TRUE(ui.messages.empty());
}

}  // namespace
}  // namespace lumiquilt
