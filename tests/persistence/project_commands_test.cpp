#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "cli/cli_app.h"

#include "persistence/project_commands.h"
#include "persistence/project_file.h"
#include "series/picture_io.h"
#include "support/full_disk.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;
using testing::readBytes;
using testing::UiTest;
using testing::writeBytes;
using Names = std::vector<std::string>;

constexpr const char* kTitle = "Do you always have bad luck like this?";

class ProjectCommandsTest : public UiTest {
  protected:
    void SetUp() override {
        UiTest::SetUp();
        start();
        form().activateFirstTime();
    }
    ProjectCommands& projects() { return ProjectCommands::of(form()); }

    // A montage of s1..s5 by method 2 at increment 10, images 2 and 3 left out.
    void makeMontage() {
        makeSeries("s", 5);
        setFileName(dir.path("s1.png"));
        setIncrement("10");
        form().m.mnusimpleCol[2]->trigger();
        form().m.mnuignoreImage[1]->setChecked(true);
        form().m.mnuignoreImage[2]->setChecked(true);
        form().CommandGo_Click();
        ASSERT_TRUE(form().montageWindow()->isVisible());
        ASSERT_TRUE(ui.messages.empty()) << lastMessage().text;
    }
    void saveAs(const std::string& name) {
        ui.fileAnswers.push_back(name);
        projects().mnuSave_Click();
    }
    void openByDialog(const std::string& name) {
        ui.fileAnswers.push_back(name);
        projects().mnuOpenProject_Click();
    }
    QImage montage() {
        return form().montageWindow()->PictureFile->picture().convertToFormat(
            QImage::Format_RGB888);
    }
    static QImage bmp(const std::string& name) {
        return QImage(QString::fromStdString(name), "BMP").convertToFormat(QImage::Format_RGB888);
    }
    // Sets the choices to something else, so that an Open must bring them back.
    void scramble() {
        form().m.mnusimpleCol[5]->trigger();
        setIncrement("33");
        for (QAction* entry : form().m.mnuignoreImage) {
            entry->setChecked(false);
        }
        form().m.mnuAddOffsets->setChecked(true);
    }
    // A bracket taken by hand: image k moved by shifts[k - 1], so that its mark belongs
    // on the feature that image 1's mark covers at the design place (13, 13).
    void makeBracket() {
        const double gains[] = {0.6, 1.0, 1.7};
        const QPoint shifts[] = {{0, 0}, {5, -3}, {-4, 6}};
        for (int k = 1; k <= 3; ++k) {
            testing::savePictureFile(
                testing::shiftedScene(64, 48, shifts[k - 1].x(), shifts[k - 1].y(), gains[k - 1]),
                dir.path("h" + std::to_string(k) + ".png"));
        }
    }
    PictureBox* box(int k) { return form().pictureWindow(k)->PictureFile; }
    QPoint centre(int k, int member = 0) {
        const QRect& circle = box(k)->Shape1(member);
        return {circle.left() + circle.width() / 2, circle.top() + circle.height() / 2};
    }
    // What an Open restores: the first file's name, the increment, the method checks,
    // the ignore checks and, when on, the offsets.
    std::string choices() {
        std::string s = form().textFileName->text().toStdString() + " " +
                        form().TextIncrement->text().toStdString() + " ";
        for (QAction* entry : form().m.mnusimpleCol) {
            s += entry->isChecked() ? '1' : '0';
        }
        s += ' ';
        for (QAction* entry : form().m.mnuignoreImage) {
            s += entry->isChecked() ? '1' : '0';
        }
        return s + (form().m.mnuAddOffsets->isChecked() ? " offsets" : "");
    }
    // The one message there is.
    void expectMessage(const std::string& text, const std::string& title = kTitle,
                       MessageIcon icon = MessageIcon::critical) {
        ASSERT_EQ(ui.messages.size(), 1u);
        EXPECT_EQ(lastMessage().text, text);
        EXPECT_EQ(lastMessage().title, title);
        EXPECT_EQ(lastMessage().icon, icon);
    }
    // The files but the pictures and the settings, sorted.
    Names otherFiles() {
        Names names;
        for (const auto& entry : fs::directory_iterator(dir.root())) {
            const fs::path& name = entry.path().filename();
            if (name.extension() != ".png" && name != "Lumiquilt.ini") {
                names.push_back(name.string());
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }
};

TEST_F(ProjectCommandsTest, SaveWantsAMontageOnView) {
    projects().mnuSave_Click();
    expectMessage("You have to have a Montage image visible in order to save a project.",
                  "Sorry...", MessageIcon::exclamation);
    EXPECT_TRUE(ui.fileRequests.empty());
}

TEST_F(ProjectCommandsTest, CancelInEitherDialogChangesNothingButTheFolderInFront) {
    makeSeries("s", 3);
    setFileName("s1.png");
    setIncrement("10");
    form().CommandGo_Click();
    form().m.mnuignoreImage[0]->setChecked(true);
    const std::string report = state.propertiesString;
    const std::string recent = form().recentFiles().at(0);

    projects().mnuSave_Click();  // no answer queued: Cancel
    EXPECT_TRUE(ui.messages.empty());
    // Save puts the program's folder in front of a bare name before the dialog.
    EXPECT_EQ(form().textFileName->text().toStdString(), dir.path("s1.png"));
    EXPECT_EQ(ui.fileRequests.back().fileName, dir.path("s1.mon"));

    form().m.mnuignoreImage[0]->setChecked(true);
    projects().mnuOpenProject_Click();
    EXPECT_TRUE(ui.messages.empty());
    EXPECT_EQ(ui.fileRequests.back().fileName, "");
    EXPECT_EQ(ui.fileRequests.back().initialFolder, dir.path("s1.png"));
    EXPECT_EQ(choices(), dir.path("s1.png") + " 10 1000000 1000000000");
    EXPECT_EQ(state.propertiesString, report);
    EXPECT_EQ(form().recentFiles().at(0), recent);
    EXPECT_EQ(otherFiles(), Names{});
}

// The project has no offsets: Open switches them off, with the strip and the marks.
TEST_F(ProjectCommandsTest, SaveReplacesTheOldPairAndOpenRestoresTheChoicesMontageAndReport) {
    makeMontage();
    saveAs(dir.path("job.mon"));
    EXPECT_TRUE(ui.messages.empty());                     // no message confirms a save
    EXPECT_EQ(ui.fileRequests.back().initialFolder, "");  // left as it was
    const std::string saved = readBytes(dir.path("job.mon"));
    EXPECT_EQ(saved, "[project]\r\n" + state.propertiesString + "\r\n");
    const QImage stored = montage();
    EXPECT_EQ(bmp(dir.path("job.qvz")), stored);
    EXPECT_EQ(state.outputFileName, dir.path("job.qvz"));
    EXPECT_EQ(form().recentFiles().at(0), "project " + dir.path("job"));

    makeSeries("t", 2);
    setFileName(dir.path("t1.png"));
    form().mnuLoad_Click();
    makeSeries("s", 5);  // image 1 of the series changes: the montage must not be made again
    testing::savePictureFile(testing::flatPicture(40, 30, Qt::white), dir.path("s1.png"));
    setFileName(dir.path("s1.png"));
    form().mnuLoad_Click();
    scramble();
    form().statusWindow()->show();
    for (int k = 1; k <= 5; ++k) {
        form().pictureWindow(k)->PictureFile->setMarksVisible(true);
    }

    openByDialog(dir.path("job.mon"));
    EXPECT_TRUE(ui.messages.empty()) << lastMessage().text;
    EXPECT_EQ(choices(), dir.path("s1.png") + " 10 0010000 0110000000");
    EXPECT_FALSE(form().statusWindow()->isVisible());
    for (int k = 1; k <= 5; ++k) {
        EXPECT_FALSE(form().pictureWindow(k)->PictureFile->marksVisible()) << k;
    }
    EXPECT_EQ(state.montageFromProject, kFalse);
    EXPECT_EQ(state.imageCount, 5);
    EXPECT_EQ(visiblePictureWindows(), 5);
    EXPECT_TRUE(form().montageWindow()->isVisible());
    EXPECT_EQ(montage(), stored);
    EXPECT_EQ(state.propertiesString, saved.substr(11));
    EXPECT_EQ(form().recentFiles().at(0), dir.path("s1.png"));
    EXPECT_EQ(form().recentFiles().at(1), "project " + dir.path("job"));
    // Behind the heading: the report's empty grid line and the line end the file adds.
    EXPECT_EQ(form().usedWindow()->LabelUsed->text(), "\r\n\r\n");

    // Its recent entry opens it again without a dialog.
    scramble();
    const size_t requests = ui.fileRequests.size();
    form().m.mnuRecentFile[1]->trigger();
    EXPECT_EQ(ui.fileRequests.size(), requests);
    EXPECT_EQ(choices(), dir.path("s1.png") + " 10 0010000 0110000000");
    EXPECT_TRUE(ui.messages.empty()) << lastMessage().text;
}

TEST_F(ProjectCommandsTest, MontageWindowSavesItsOwnReportBesideTheMainPicture) {
    makeMontage();
    // The main window's popup stores the run's report, with the folder as InitDir.
    setFileName("s1.png");
    ui.fileAnswers.push_back(dir.path("main.mon"));
    form().montageWindow()->mnuSaveProject->trigger();
    EXPECT_EQ(ui.fileRequests.back().fileName, "s1.mon");
    EXPECT_EQ(ui.fileRequests.back().initialFolder, state.appPath);
    EXPECT_EQ(form().textFileName->text(), "s1.png");  // no folder put in front
    EXPECT_EQ(readBytes(dir.path("main.mon")), "[project]\r\n" + state.propertiesString + "\r\n");

    // A method window with the same caption as one of the eight gives that report.
    FormMontagePicture* method = form().methodWindow(3);
    method->setWindowTitle("Average Color Difference");
    state.methodProperties[3] = "\r\n  the method's report\r\n";
    ui.fileAnswers.push_back(dir.path("method.mon"));
    method->mnuSaveProject->trigger();
    EXPECT_EQ(readBytes(dir.path("method.mon")), "[project]\r\n\r\n  the method's report\r\n\r\n");
    EXPECT_EQ(bmp(dir.path("method.qvz")), montage());
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(ProjectCommandsTest, MissingProjectSaysSoAndEmptiesTheField) {
    openByDialog(dir.path("nothing.mon"));
    expectMessage(std::string(kProjectMissingMessage));
    EXPECT_EQ(form().textFileName->text(), "");
    EXPECT_TRUE(form().recentFiles().at(0).empty());
}

// A missing companion is the read message, and what was restored stays.
TEST_F(ProjectCommandsTest, MissingCompanionIsTheReadMessageAfterTheReport) {
    makeMontage();
    saveAs(dir.path("job.mon"));
    fs::remove(dir.path("job.qvz"));
    scramble();
    openByDialog(dir.path("job.mon"));
    expectMessage(
        "There is a problem in reading that file.   The error message is 'File not found'.   "
        "Try another project file.");
    EXPECT_EQ(choices(), dir.path("s1.png") + " 10 0010000 0110000000");
    EXPECT_EQ(state.propertiesString, readBytes(dir.path("job.mon")).substr(11));
}

// A disk that fills up at the project file, then at the picture: the message of that
// stage, and the old pair unchanged.
TEST_F(ProjectCommandsTest, FullDiskIsTheMessageOfItsStageAndLeavesTheOldPairByteForByte) {
    makeMontage();
    const std::string oldReport = "[project]\r\nold report\r\n\r\n";
    writeBytes(dir.path("job.mon"), oldReport);
    writeBytes(dir.path("job.qvz"), "old picture");
    const std::pair<long, std::string> rows[] = {
        {200, projectWriteMessage("Disk full")},
        {2000, "error 61 (Disk full) at line 33000 of mnuSave"}};
    for (const auto& [limit, text] : rows) {
        const int seen = testing::withFullDisk(limit, [&] {
            saveAs(dir.path("job.mon"));  // in a child process: this test's ui stays as it is
            return ui.messages.size() == 1 && lastMessage().text == text ? 1 : 0;
        });
        EXPECT_EQ(seen, 1) << text;
        EXPECT_EQ(readBytes(dir.path("job.mon")), oldReport);
        EXPECT_EQ(readBytes(dir.path("job.qvz")), "old picture");
        EXPECT_EQ(otherFiles(), (Names{"job.mon", "job.qvz"}));
    }
}

// Image 2 left out, image 3's mark moved onto the feature.
TEST_F(ProjectCommandsTest, OpenPutsBackTheMarksTheAreaAndTheStatusStrip) {
    makeBracket();
    setFileName(dir.path("h1.png"));
    setIncrement("6");
    form().CommandGo_Click();
    box(3)->moveShape(0, -4, 6);
    box(3)->moveShape(1, 4, 14);
    form().m.mnuAddOffsets->trigger();
    form().m.mnuActivateOffsetsMax->trigger();
    form().m.mnuignoreImage[1]->setChecked(true);
    form().CommandGo_Click();
    ASSERT_TRUE(ui.messages.empty()) << lastMessage().text;
    saveAs(dir.path("h.mon"));
    const QImage stored = montage();

    form().m.mnuAddOffsets->trigger();  // off: marks hidden, strip gone
    form().m.mnuActivateOffsetsMin->trigger();
    for (int k = 1; k <= 3; ++k) {
        box(k)->moveShape(0, 30, 20);
        box(k)->moveShape(1, 38, 28);
    }
    openByDialog(dir.path("h.mon"));
    EXPECT_TRUE(ui.messages.empty()) << lastMessage().text;
    EXPECT_EQ(choices(), dir.path("h1.png") + " 6 1000000 0100000000 offsets");
    EXPECT_TRUE(form().m.mnuActivateOffsetsMax->isChecked());
    EXPECT_FALSE(form().m.mnuActivateOffsetsMin->isChecked());
    EXPECT_EQ(centre(1), QPoint(13, 13));
    EXPECT_EQ(centre(3), QPoint(9, 19));
    EXPECT_EQ(centre(3, 1), QPoint(9, 19));  // the inner circle stays concentric
    // Image 2 was left out, so the project holds no centre for it: "0" puts it at 0, 0.
    EXPECT_EQ(centre(2), QPoint(0, 0));
    for (int k = 1; k <= 3; ++k) {
        EXPECT_TRUE(box(k)->marksVisible()) << k;
    }
    EXPECT_TRUE(form().statusWindow()->isVisible());
    EXPECT_EQ(form().statusWindow()->LabelStatus->text().toStdString(),
              "     Image 1 = 13 , 13    Image 2 = 0 , 0    Image 3 = 9 , 19");
    EXPECT_EQ(montage(), stored);
    EXPECT_EQ(state.propertiesString, readBytes(dir.path("h.mon")).substr(11));
}

// The batch front writes a project that the window program opens to the same picture
// and report that the batch front makes again from it. What the Open restores is the
// test above's.
TEST_F(ProjectCommandsTest, CliRoundTripMatchesTheWindowProgram) {
    makeBracket();
    std::ostringstream out;
    std::ostringstream err;
    ASSERT_EQ(runCli({"montage", dir.path("h1.png"), "-i", "6", "-m", "4", "--ignore", "3",
                      "--offsets", "max", "--mark", "2:18,10", "--mark", "3:9,19", "--save-project",
                      dir.path("p.mon")},
                     "/", out, err),
              0)
        << err.str();
    std::ostringstream again;
    ASSERT_EQ(runCli({"montage", "--project", dir.path("p.mon"), "-o", dir.path("out.bmp"),
                      "--report", "-"},
                     "/", again, err),
              0)
        << err.str();

    makeSeries("s", 2);
    setFileName(dir.path("s1.png"));
    form().mnuLoad_Click();  // a series of two: marks and ignore ticks of images 1 and 2
    openByDialog(dir.path("p.mon"));
    EXPECT_TRUE(ui.messages.empty()) << lastMessage().text;
    EXPECT_EQ(bmp(dir.path("out.bmp")), montage());
    EXPECT_EQ(state.propertiesString, again.str());
}

}  // namespace
}  // namespace lumiquilt
