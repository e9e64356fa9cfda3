#include "shell/shell_integration.h"

#include <gtest/gtest.h>
#include <QProcess>
#include <QStandardPaths>

#include <filesystem>

#include "persistence/form_preferences.h"
#include "shell/desktop_ties.h"
#include "support/series_wait_for_file.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;

using testing::readBytes;

// Checks an entry with desktop-file-validate; skips the test when that is missing, so
// it comes last.
void expectValidEntry(const std::string& file) {
    const QString validator = QStandardPaths::findExecutable("desktop-file-validate");
    if (validator.isEmpty()) {
        GTEST_SKIP() << "desktop-file-validate is not installed";
    }
    QProcess run;
    run.setProcessChannelMode(QProcess::MergedChannels);
    run.start(validator, {QString::fromStdString(file)});
    run.waitForFinished();
    EXPECT_EQ(run.exitCode(), 0) << run.readAll().toStdString();
}

class ShellTest : public testing::UiTest {
  protected:
    void SetUp() override {
        UiTest::SetUp();
        places.appPath = dir.path("program folder") + "/";
        places.desktopFolder = dir.path("Desktop");
        places.applicationsFolder = dir.path("share/applications");
        fs::create_directories(places.appPath);
    }
    bool verbPresent() const { return fs::exists(desktop_ties::verbCommandFile(places)); }
    bool verbKeyPresent() const {
        return fs::exists(fs::path(desktop_ties::verbCommandFile(places)).parent_path());
    }
    /// A stand-in program that writes its working folder and arguments to `out`.
    void makeRecordingProgram(const std::string& out) {
        const std::string program = places.appPath + places.programName;
        testing::writeBytes(program, "#!/bin/sh\npwd > '" + out +
                                         ".tmp'\nprintf '%s\\n' \"$@\" >> '" + out + ".tmp'\nmv '" +
                                         out + ".tmp' '" + out + "'\n");
        fs::permissions(program, fs::perms::owner_all, fs::perm_options::add);
    }

    ShellPlaces places;
};

TEST_F(ShellTest, ShortcutAndVerbEntriesStartTheProgramAndAreWrittenAnewSilently) {
    const std::string shortcut = places.desktopFolder + "/Lumiquilt.desktop";
    const std::string verb = desktop_ties::verbCommandFile(places);
    ASSERT_TRUE(makeDesktopShortcut(places));
    addContextVerb(places);
    const std::string shortcutText = readBytes(shortcut);
    const std::string verbText = readBytes(verb);
    const std::string exec = "Exec=\"" + places.appPath + "lumiquilt\"";
    EXPECT_NE(shortcutText.find(exec + "\n"), std::string::npos) << shortcutText;
    EXPECT_NE(shortcutText.find("\nPath=" + places.appPath + "\n"), std::string::npos);
    EXPECT_NE(fs::status(shortcut).permissions() & fs::perms::owner_exec, fs::perms::none);
    EXPECT_NE(verbText.find(exec + " %f\n"), std::string::npos) << verbText;
    EXPECT_NE(verbText.find("MimeType=image/bmp;image/jpeg;image/gif;\n"), std::string::npos);

    // Old entries of those names are simply replaced.
    testing::writeBytes(shortcut, "old");
    testing::writeBytes(verb, "old");
    ASSERT_TRUE(makeDesktopShortcut(places));
    addContextVerb(places);
    EXPECT_EQ(readBytes(shortcut), shortcutText);
    EXPECT_EQ(readBytes(verb), verbText);
    EXPECT_TRUE(ui.messages.empty());
    expectValidEntry(shortcut);
    expectValidEntry(verb);
}

TEST_F(ShellTest, ShortcutAndVerbWithNowhereToGoFailQuietly) {
    testing::writeBytes(dir.path("afile"), "x");
    places.desktopFolder = dir.path("afile") + "/Desktop";
    places.applicationsFolder = dir.path("afile") + "/applications";
    EXPECT_FALSE(makeDesktopShortcut(places));
    addContextVerb(places);
    EXPECT_FALSE(verbPresent());
    EXPECT_TRUE(ui.messages.empty());
}

// Removing the verb, by what stood before: only a command and its key that both go
// make the message of success.
TEST_F(ShellTest, RemovingTheVerbTellsWhetherItWent) {
    enum Before { none, whole, keyOnly, keyWithMore };
    const std::string command = desktop_ties::verbCommandFile(places);
    const fs::path key = fs::path(command).parent_path();
    for (const Before before : {whole, none, keyOnly, keyWithMore}) {
        fs::remove_all(key);
        if (before != none) {
            fs::create_directories(key);
        }
        if (before == whole || before == keyWithMore) {
            testing::writeBytes(command, "[Desktop Entry]\n");
        }
        if (before == keyWithMore) {
            testing::writeBytes((key / "other.desktop").string(), "x");
        }
        ui.messages.clear();
        removeContextVerb(places, ui);

        EXPECT_FALSE(verbPresent()) << before;
        // With its command already gone the key is not tried, and stays.
        EXPECT_EQ(verbKeyPresent(), before == keyOnly || before == keyWithMore) << before;
        ASSERT_EQ(ui.messages.size(), 1u) << before;
        const MessageRecord& m = ui.messages[0];
        EXPECT_EQ(m.icon, MessageIcon::information) << before;
        if (before == whole) {
            EXPECT_EQ(m.text,
                      "The 'Lumiquilt' item has been removed from the Windows Explorer Right Mouse "
                      "Click context menu");
            EXPECT_EQ(m.title, "To restore it, you need to run setup again");
        } else {
            EXPECT_EQ(m.text,
                      "I have struck problems with removing the 'Lumiquilt' item from the Windows "
                      "Explorer Right Mouse Click context menu")
                << before;
            EXPECT_EQ(m.title, "Maybe it has already been removed????") << before;
        }
    }
}

// The Preferences dialog with the real desktop ties.
TEST_F(ShellTest, PreferencesOkAddsAndRemovesThroughTheDesktopTies) {
    start();
    DesktopShellTies ties(places, ui);
    PreferencesCommands::of(form()).setShellTies(&ties);
    const auto ok = [this](bool shortcut, bool right) {
        form().m.mnuPreferences->trigger();
        FormPreferences* p = PreferencesCommands::of(form()).dialog();
        ASSERT_NE(p, nullptr);
        p->CheckShortcut->setChecked(shortcut);
        p->CheckRight->setChecked(right);
        p->CommandOK->click();
    };
    ok(true, true);
    EXPECT_TRUE(verbPresent());
    EXPECT_TRUE(fs::exists(places.desktopFolder + "/Lumiquilt.desktop"));
    EXPECT_TRUE(ui.messages.empty());
    ok(true, false);
    EXPECT_FALSE(verbKeyPresent());
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].title, "To restore it, you need to run setup again");
}

TEST_F(ShellTest, FolderWithBlanksAndShellCharactersStillStartsTheProgram) {
    if (QStandardPaths::findExecutable("gio").isEmpty()) {
        GTEST_SKIP() << "gio (libglib2.0-bin) is not installed";
    }
    // A "%" would be right too ("%%" in the entry), but GLib's launcher looks for the
    // program before it undoes that, so it is left out here.
    places.appPath = dir.path("my programs/it's \"$HOME\" `x` \\ sure") + "/";
    fs::create_directories(places.appPath);
    const std::string out = dir.path("arguments.txt");
    makeRecordingProgram(out);
    const std::string picture = dir.path("holiday pictures/scene 1.jpg");
    fs::create_directories(fs::path(picture).parent_path());
    testing::writeBytes(picture, "x");

    addContextVerb(places);
    QProcess::execute("gio",
                      {"launch", QString::fromStdString(desktop_ties::verbCommandFile(places)),
                       QString::fromStdString(picture)});
    ASSERT_TRUE(testing::waitForFile(out));
    const std::string recorded = readBytes(out);
    EXPECT_NE(recorded.find("\n" + picture + "\n"), std::string::npos) << recorded;

    // The shortcut starts the program in its own folder.
    fs::remove(out);
    ASSERT_TRUE(makeDesktopShortcut(places));
    QProcess::execute(
        "gio", {"launch", QString::fromStdString(places.desktopFolder + "/Lumiquilt.desktop")});
    ASSERT_TRUE(testing::waitForFile(out));
    std::string folder = places.appPath;
    folder.pop_back();
    EXPECT_EQ(readBytes(out), folder + "\n\n");
    expectValidEntry(desktop_ties::verbCommandFile(places));
}

TEST_F(ShellTest, PercentInTheFolderIsDoubled) {
    places.appPath = dir.path("100% sure") + "/";
    addContextVerb(places);
    const std::string text = readBytes(desktop_ties::verbCommandFile(places));
    EXPECT_NE(text.find("Exec=\"" + dir.path("100%% sure") + "/lumiquilt\" %f\n"),
              std::string::npos)
        << text;
    expectValidEntry(desktop_ties::verbCommandFile(places));
}

TEST_F(ShellTest, PlacesFollowTheUsersFolders) {
    const std::string config = dir.path("config");
    fs::create_directories(config);
    testing::writeBytes(config + "/user-dirs.dirs",
                        "XDG_DESKTOP_DIR=\"" + dir.path("Schreibtisch") + "\"\n");
    const QByteArray oldConfig = qgetenv("XDG_CONFIG_HOME");
    const QByteArray oldData = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(config));
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString(dir.path("data")));
    const ShellPlaces found = shellPlaces("/opt/lq/");
    qputenv("XDG_CONFIG_HOME", oldConfig);
    qputenv("XDG_DATA_HOME", oldData);
    EXPECT_EQ(found.appPath, "/opt/lq/");
    EXPECT_EQ(found.desktopFolder, dir.path("Schreibtisch"));
    EXPECT_EQ(found.applicationsFolder, dir.path("data") + "/applications");
}

TEST_F(ShellTest, StartRefreshesTheShortcutOnlyWhileTheKeyIsOne) {
    hooks = programStartupHooks(ui, places);
    const std::string file = places.desktopFolder + "/Lumiquilt.desktop";
    start();
    EXPECT_FALSE(fs::exists(file));

    testing::writeBytes(dir.path("Lumiquilt.ini"), "[preferences]\nshortcut=1\n");
    start();
    ASSERT_TRUE(fs::exists(file));
    EXPECT_NE(readBytes(file).find("[Desktop Entry]"), std::string::npos);

    // Cleared: the next start makes none, and the old one stays as it was.
    testing::writeBytes(file, "kept");
    testing::writeBytes(dir.path("Lumiquilt.ini"), "[preferences]\nshortcut=0\n");
    start();
    EXPECT_EQ(readBytes(file), "kept");
    EXPECT_TRUE(ui.messages.empty());
}

}  // namespace
}  // namespace lumiquilt
