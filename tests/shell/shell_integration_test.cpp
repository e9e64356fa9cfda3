#include "shell/shell_integration.h"

#include <gtest/gtest.h>
#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "persistence/form_preferences.h"
#include "shell/desktop_ties.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;

std::string readText(const std::string& name) {
    std::ifstream in(name, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Runs desktop-file-validate on an entry; empty when it is content.
std::string validateEntry(const std::string& file) {
    QProcess run;
    run.setProcessChannelMode(QProcess::MergedChannels);
    run.start(QStandardPaths::findExecutable("desktop-file-validate"),
              {QString::fromStdString(file)});
    run.waitForFinished();
    return run.exitCode() == 0 ? std::string() : run.readAll().toStdString() + "(failed)";
}

// Waits for a file that a started program writes.
bool waitForFile(const std::string& name) {
    QDeadlineTimer deadline(10000);
    while (!deadline.hasExpired()) {
        if (fs::exists(name) && !readText(name).empty()) {
            QThread::msleep(50);
            return true;
        }
        QThread::msleep(20);
    }
    return false;
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

TEST_F(ShellTest, ShortcutOnTheDesktop) {
    ASSERT_TRUE(makeDesktopShortcut(places));
    const std::string file = places.desktopFolder + "/Lumiquilt.desktop";
    ASSERT_TRUE(fs::exists(file));
    const std::string text = readText(file);
    EXPECT_NE(text.find("Comment=This is my Lumiquilt shortcut!\n"), std::string::npos);
    EXPECT_NE(text.find("Exec=\"" + places.appPath + "lumiquilt\"\n"), std::string::npos) << text;
    EXPECT_NE(text.find("Path=" + places.appPath + "\n"), std::string::npos);
    EXPECT_NE(fs::status(file).permissions() & fs::perms::owner_exec, fs::perms::none);

    // An old shortcut of that name is simply replaced.
    testing::writeBytes(file, "old");
    ASSERT_TRUE(makeDesktopShortcut(places));
    EXPECT_EQ(readText(file), text);

    if (QStandardPaths::findExecutable("desktop-file-validate").isEmpty()) {
        GTEST_SKIP() << "desktop-file-validate is not installed";
    }
    EXPECT_EQ(validateEntry(file), "");
}

TEST_F(ShellTest, ShortcutWithNowhereToGoFailsQuietly) {
    testing::writeBytes(dir.path("afile"), "x");
    places.desktopFolder = dir.path("afile") + "/Desktop";
    EXPECT_FALSE(makeDesktopShortcut(places));
    EXPECT_TRUE(ui.messages.empty());
}

// Removing the verb, by what stood before: only a command and its key that both go
// make the message of success.
struct RemoveRow {
    const char* name;
    enum Before { none, whole, keyOnly, keyWithMore } before;
    bool removed;
};

class RemoveVerbTest : public ShellTest, public ::testing::WithParamInterface<RemoveRow> {};

TEST_P(RemoveVerbTest, TellsWhetherItWent) {
    const RemoveRow& row = GetParam();
    const std::string command = desktop_ties::verbCommandFile(places);
    const fs::path key = fs::path(command).parent_path();
    if (row.before != RemoveRow::none) {
        fs::create_directories(key);
    }
    if (row.before == RemoveRow::whole || row.before == RemoveRow::keyWithMore) {
        testing::writeBytes(command, "[Desktop Entry]\n");
    }
    if (row.before == RemoveRow::keyWithMore) {
        testing::writeBytes((key / "other.desktop").string(), "x");
    }
    removeContextVerb(places, ui);

    EXPECT_FALSE(verbPresent());
    // With its command already gone the key is not tried, and stays.
    EXPECT_EQ(verbKeyPresent(),
              row.before == RemoveRow::keyOnly || row.before == RemoveRow::keyWithMore);
    ASSERT_EQ(ui.messages.size(), 1u);
    const MessageRecord& m = ui.messages[0];
    EXPECT_EQ(m.icon, MessageIcon::information);
    if (row.removed) {
        EXPECT_EQ(m.text,
                  "The 'Lumiquilt' item has been removed from the Windows Explorer Right Mouse "
                  "Click context menu");
        EXPECT_EQ(m.title, "To restore it, you need to run setup again");
    } else {
        EXPECT_EQ(m.text,
                  "I have struck problems with removing the 'Lumiquilt' item from the Windows "
                  "Explorer Right Mouse Click context menu");
        EXPECT_EQ(m.title, "Maybe it has already been removed????");
    }
}

INSTANTIATE_TEST_SUITE_P(Verb, RemoveVerbTest,
                         ::testing::Values(RemoveRow{"Whole", RemoveRow::whole, true},
                                           RemoveRow{"AlreadyGone", RemoveRow::none, false},
                                           RemoveRow{"OnlyTheKeyLeft", RemoveRow::keyOnly, false},
                                           RemoveRow{"KeyHoldsMore", RemoveRow::keyWithMore,
                                                     false}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(ShellTest, AddingWritesTheEntryAnewAndSilently) {
    addContextVerb(places);
    ASSERT_TRUE(verbPresent());
    const std::string written = readText(desktop_ties::verbCommandFile(places));
    testing::writeBytes(desktop_ties::verbCommandFile(places), "old");
    addContextVerb(places);
    EXPECT_EQ(readText(desktop_ties::verbCommandFile(places)), written);
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(ShellTest, VerbThatCannotBeMadeIsSilent) {
    testing::writeBytes(dir.path("afile"), "x");
    places.applicationsFolder = dir.path("afile") + "/applications";
    addContextVerb(places);
    EXPECT_FALSE(verbPresent());
    EXPECT_TRUE(ui.messages.empty());
}

// The Preferences dialog with the real desktop ties: each OK in turn.
TEST_F(ShellTest, PreferencesOkAddsAndRemovesOnlyOnAChange) {
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
    const std::string shortcut = places.desktopFolder + "/Lumiquilt.desktop";

    ok(false, true);  // turned on
    EXPECT_TRUE(verbPresent());
    EXPECT_FALSE(fs::exists(shortcut));
    EXPECT_EQ(state.rightMouseEnabled, 1);

    fs::remove(desktop_ties::verbCommandFile(places));  // by hand
    ok(true, true);                                     // left on: not restored
    EXPECT_FALSE(verbPresent());
    EXPECT_TRUE(fs::exists(shortcut));
    EXPECT_TRUE(ui.messages.empty());

    ok(true, false);  // turned off, but it was gone already
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(ui.messages[0].title, "Maybe it has already been removed????");
    EXPECT_EQ(state.rightMouseEnabled, 0);

    ok(false, true);  // on again: back
    EXPECT_TRUE(verbPresent());
    ok(false, false);  // off: removed
    ASSERT_EQ(ui.messages.size(), 2u);
    EXPECT_EQ(ui.messages[1].title, "To restore it, you need to run setup again");
    EXPECT_FALSE(verbKeyPresent());
    ok(false, false);  // left off: nothing
    EXPECT_EQ(ui.messages.size(), 2u);
}

TEST_F(ShellTest, VerbEntryOffersThePicturesTheProgramReads) {
    addContextVerb(places);
    const std::string text = readText(desktop_ties::verbCommandFile(places));
    EXPECT_NE(text.find("Name=Lumiquilt\n"), std::string::npos);
    EXPECT_NE(text.find("MimeType=image/bmp;image/jpeg;image/gif;\n"), std::string::npos);
    EXPECT_NE(text.find("Exec=\"" + places.appPath + "lumiquilt\" %f\n"), std::string::npos)
        << text;
    if (QStandardPaths::findExecutable("desktop-file-validate").isEmpty()) {
        GTEST_SKIP() << "desktop-file-validate is not installed";
    }
    EXPECT_EQ(validateEntry(desktop_ties::verbCommandFile(places)), "");
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
    if (!QStandardPaths::findExecutable("desktop-file-validate").isEmpty()) {
        EXPECT_EQ(validateEntry(desktop_ties::verbCommandFile(places)), "");
    }
    QProcess::execute("gio",
                      {"launch", QString::fromStdString(desktop_ties::verbCommandFile(places)),
                       QString::fromStdString(picture)});
    ASSERT_TRUE(waitForFile(out));
    const std::string recorded = readText(out);
    EXPECT_NE(recorded.find("\n" + picture + "\n"), std::string::npos) << recorded;

    // The shortcut starts the program in its own folder.
    fs::remove(out);
    ASSERT_TRUE(makeDesktopShortcut(places));
    QProcess::execute(
        "gio", {"launch", QString::fromStdString(places.desktopFolder + "/Lumiquilt.desktop")});
    ASSERT_TRUE(waitForFile(out));
    std::string folder = places.appPath;
    folder.pop_back();
    EXPECT_EQ(readText(out), folder + "\n\n");
}

TEST_F(ShellTest, PercentInTheFolderIsDoubled) {
    places.appPath = dir.path("100% sure") + "/";
    addContextVerb(places);
    const std::string text = readText(desktop_ties::verbCommandFile(places));
    EXPECT_NE(text.find("Exec=\"" + dir.path("100%% sure") + "/lumiquilt\" %f\n"),
              std::string::npos)
        << text;
    if (QStandardPaths::findExecutable("desktop-file-validate").isEmpty()) {
        GTEST_SKIP() << "desktop-file-validate is not installed";
    }
    EXPECT_EQ(validateEntry(desktop_ties::verbCommandFile(places)), "");
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
    EXPECT_NE(readText(file).find("[Desktop Entry]"), std::string::npos);

    // Cleared: the next start makes none, and the old one stays as it was.
    testing::writeBytes(file, "kept");
    testing::writeBytes(dir.path("Lumiquilt.ini"), "[preferences]\nshortcut=0\n");
    start();
    EXPECT_EQ(readText(file), "kept");
    EXPECT_TRUE(ui.messages.empty());
}

}  // namespace
}  // namespace lumiquilt
