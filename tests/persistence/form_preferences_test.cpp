#include "persistence/form_preferences.h"

#include <QApplication>
#include <QPointer>

#include <tuple>

#include "persistence/profile_file.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

// Notes each call of the desktop ties with the switches as they stood then; failing
// ties go on to throw from the first two.
class RecordingTies : public PreferencesShellTies {
  public:
    RecordingTies(const ProgramState& s, const Settings& settings, bool failing)
        : s(s), settings(settings), failing(failing) {}
    void makeDesktopShortcut() override {
        note("shortcut");
        if (failing) {
            throw RuntimeError(kPermissionDenied);
        }
    }
    void addContextMenuVerb() override {
        note("add verb");
        if (failing) {
            throw std::runtime_error("no desktop");
        }
    }
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
    bool failing;
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
    // The program started again on its settings file, with the dialog open.
    FormPreferences& reopen() {
        settle();
        start();
        return open();
    }
    std::string file() { return testing::readBytes(dir.path("Lumiquilt.ini")); }
    // The four smoothing fields.
    static std::string fields(const FormPreferences& p) {
        std::string s;
        for (const QLineEdit* field : p.TextSmooth) {
            s += field->text().toStdString() + " ";
        }
        return s;
    }
    std::string key(const std::string& name) { return settings->readKey(name); }
    static void settle() { QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
};

TEST_F(FormPreferencesTest, OpensModelessOnceAndOkWritesAllButThreeKeysForTheNextStart) {
    start();
    FormPreferences& p = open();
    EXPECT_TRUE(p.isVisible());
    EXPECT_FALSE(p.isModal());
    EXPECT_EQ(p.parentWidget(), &form());
    form().m.mnuPreferences->trigger();  // a second click brings up the same dialog
    EXPECT_EQ(PreferencesCommands::of(form()).dialog(), &p);
    // No settings file: zeros.
    EXPECT_TRUE(p.OptionMontageMethod[0]->isChecked());
    EXPECT_EQ(p.Text1->text(), "0");
    EXPECT_EQ(p.VScroll1->value(), 0);
    EXPECT_EQ(p.pictureColor(), 0u);
    EXPECT_FALSE(p.CheckLoadImages->isChecked());
    EXPECT_EQ(fields(p), "100 0 0 100 ");

    p.OptionMontageMethod[4]->setChecked(true);
    p.CheckUsed->setChecked(true);
    p.CheckLoadImages->setChecked(true);
    p.Text1->setText("25");
    p.CheckAutoSmooth->setChecked(true);
    p.TextSmooth[2]->setText("0.5");
    QPointer<FormPreferences> dialog(&p);
    p.CommandOK->click();
    settle();
    EXPECT_TRUE(dialog.isNull());
    EXPECT_EQ(file(),
              "[preferences]\nMontage method=4\nOriginating image=1\nLoad images=1\nIncrement=25\n"
              "shortcut=0\nrightmouse=0\nautoSmooth=1\nedgeFactor=0\nfocusFactor=0\n"
              "diffFactor=50\nedgefactor2=0\n");
    EXPECT_EQ(state.showUsedWindow, 1);
    EXPECT_EQ(state.diffFactor, 50);
    // The method and increment take effect at the next start.
    EXPECT_TRUE(form().m.mnusimpleCol[0]->isChecked());
    EXPECT_EQ(form().TextIncrement->text(), "0");

    FormPreferences& again = reopen();
    EXPECT_TRUE(form().m.mnusimpleCol[4]->isChecked());
    EXPECT_EQ(form().TextIncrement->text(), "25");
    EXPECT_TRUE(again.OptionMontageMethod[4]->isChecked());
    EXPECT_TRUE(again.CheckLoadImages->isChecked());
    EXPECT_EQ(again.TextSmooth[2]->text(), "0.5");
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
    const std::string before = file();
    FormPreferences& p = open();
    p.CommandSmoothReset->click();
    EXPECT_TRUE(p.CheckAutoSmooth->isChecked());
    EXPECT_EQ(fields(p), "90 10 1 60 ");
    EXPECT_EQ(state.diffFactor, 100);  // in memory at once
    // Closing saves nothing.
    p.close();
    settle();
    EXPECT_EQ(PreferencesCommands::of(form()).dialog(), nullptr);
    EXPECT_EQ(file(), before);
}

TEST_F(FormPreferencesTest, OpeningAndOkSkipWhatFailsAndGoOn) {
    putSettings(
        "Montage method=9\nIncrement=40000\nOriginating image=1\nTarget color=65280\n"
        "focusFactor=20\ndiffFactor=300\n");
    start();
    FormPreferences& p = open();
    for (QRadioButton* option : p.OptionMontageMethod) {
        EXPECT_FALSE(option->isChecked());
    }
    EXPECT_TRUE(form().m.mnusimpleCol[0]->isChecked());  // nor in the menu: the default stays
    EXPECT_EQ(p.Text1->text(), "40000");
    EXPECT_EQ(p.VScroll1->value(), 0);
    EXPECT_TRUE(p.CheckUsed->isChecked());
    EXPECT_EQ(p.pictureColor(), 65280u);
    // With no option chosen, OK leaves the method's key alone; a field that is no
    // number keeps its setting, but the edge field reads it as 0.
    p.TextSmooth[0]->setText("abc");
    p.TextSmooth[1]->setText("abc");
    p.TextSmooth[2]->setText("");
    p.TextSmooth[3]->setText("1,5");
    p.CommandOK->click();
    EXPECT_EQ(std::tuple(key("Montage method"), key("Increment"), key("edgeFactor"),
                         key("focusFactor"), key("diffFactor"), key("edgefactor2")),
              std::tuple("9", "40000", "100", "20", "300", "0"));
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

TEST_F(FormPreferencesTest, ColorIsStoredAtOnceGivenToTheMarksAndReadAgainByALoad) {
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

    // Load Image Files reads the key again.
    settings->writeKey("Target color", "16711680");
    form().mnuLoad_Click();
    EXPECT_EQ(form().targetColor(), 0xFF0000u);
}

TEST_F(FormPreferencesTest, OkCallsTheDesktopTiesAtItsStepsAndWritesTheKeysAllTheSame) {
    enum Ties { none, recording, failing };
    // The shortcut is made after its key is written; the verb changes before the switch
    // takes the box.
    const std::vector<std::string> shortcutAndAdd = {
        "shortcut shortcutKey=1 rightMouse=0 rightmouseKey=0",
        "add verb shortcutKey=1 rightMouse=0 rightmouseKey=0"};
    // The boxes, the switch in memory before OK, the ties, and the calls OK makes.
    const struct {
        bool shortcutBox, rightBox;
        int rightMouseBefore;
        Ties ties;
        std::vector<std::string> calls;
    } rows[] = {
        {true, true, 0, recording, shortcutAndAdd},
        {false, false, 1, recording, {"remove verb shortcutKey=0 rightMouse=1 rightmouseKey=1"}},
        {false, true, 1, recording, {}},  // already on: nothing to do
        {false, false, 0, recording, {}},
        {true, false, 1, none, {}},                // without ties, only the keys
        {true, true, 0, failing, shortcutAndAdd},  // failing ties do not stop OK
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::Message()
                     << row.shortcutBox << row.rightBox << row.rightMouseBefore << row.ties);
        putSettings("shortcut=0\nrightmouse=" + std::to_string(row.rightMouseBefore) + "\n");
        settle();
        start();
        RecordingTies ties(state, *settings, row.ties == failing);
        if (row.ties != none) {
            PreferencesCommands::of(form()).setShellTies(&ties);
        }
        FormPreferences& p = open();
        p.CheckShortcut->setChecked(row.shortcutBox);
        p.CheckRight->setChecked(row.rightBox);
        p.CommandOK->click();
        EXPECT_EQ(ties.calls, row.calls);
        EXPECT_EQ(state.shortcutEnabled, row.shortcutBox ? 1 : 0);
        EXPECT_EQ(state.rightMouseEnabled, row.rightBox ? 1 : 0);
        EXPECT_EQ(key("shortcut"), row.shortcutBox ? "1" : "0");
        EXPECT_EQ(key("rightmouse"), row.rightBox ? "1" : "0");
        EXPECT_EQ(key("edgefactor2"), "0");  // the last key: OK went to its end
        EXPECT_TRUE(ui.messages.empty());
    }
}

TEST_F(FormPreferencesTest, AnUnwritableSettingsFileLosesNothingAndSaysNothing) {
    putSettings("Increment=20\n");
    start();
    FormPreferences& p = open();
    p.Text1->setText("30");
    ::chmod(dir.path("Lumiquilt.ini").c_str(), 0444);
    p.CommandOK->click();
    ::chmod(dir.path("Lumiquilt.ini").c_str(), 0644);
    EXPECT_EQ(file(), "[preferences]\nIncrement=20\n");
    EXPECT_TRUE(ui.messages.empty());
}

}  // namespace
}  // namespace lumiquilt
