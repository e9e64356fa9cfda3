#include <gtest/gtest.h>

#include <filesystem>

#include "output/output_names.h"
#include "output/printing.h"
#include "support/locked_folder.h"
#include "support/series_wait_for_file.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;
using testing::UiTest;

class OutputTest : public UiTest {
  protected:
    void SetUp() override {
        UiTest::SetUp();
        start();
        form().activateFirstTime();
        form().output().outsideProgramWait = 0.2;
    }
    void makeMontage() {
        makeSeries("s", 3);
        setFileName(dir.path("s1.png"));
        setIncrement("10");
        form().CommandGo_Click();
        ASSERT_TRUE(form().montageWindow()->isVisible());
        ui.messages.clear();
    }
    QImage montage() { return form().montageWindow()->PictureFile->picture(); }
};

TEST_F(OutputTest, NothingToSaveCopyEditOrPrint) {
    const std::pair<QAction*, std::string> commands[] = {{form().m.mnuJPG, "save"},
                                                         {form().m.mnucopy, "copy"},
                                                         {form().m.mnuEditor, "edit"},
                                                         {form().m.mnuPrint, "print"}};
    for (const auto& [command, verb] : commands) {
        ui.messages.clear();
        command->trigger();
        ASSERT_EQ(ui.messages.size(), 1u) << verb;
        EXPECT_EQ(lastMessage().text, "You have not got a Montage image to " + verb + ".");
        EXPECT_EQ(lastMessage().title, "Make one, then try again");
        EXPECT_EQ(lastMessage().icon, MessageIcon::critical);
    }
    EXPECT_TRUE(ui.fileRequests.empty());
}

TEST_F(OutputTest, SaveAsProposesANameAndWritesABmpWhateverTheName) {
    makeMontage();
    for (const char* name : {"out.bmp", "out.jpeg", "noextension"}) {
        ui.fileAnswers.push_back(dir.path(name));
        form().m.mnuJPG->trigger();
        const std::string bytes = testing::readBytes(dir.path(name));
        EXPECT_EQ(bytes.substr(0, 2), "BM") << name;
        EXPECT_EQ(QImage(QString::fromStdString(dir.path(name)), "BMP")
                      .convertToFormat(QImage::Format_RGB888),
                  montage().convertToFormat(QImage::Format_RGB888))
            << name;
        EXPECT_EQ(lastMessage().text, "File  " + dir.path(name) + "  created.");
        EXPECT_EQ(lastMessage().title, "Lumiquilt");
        EXPECT_EQ(lastMessage().icon, MessageIcon::information);
    }
    EXPECT_EQ(ui.fileRequests.front().fileName, dir.path("s1") + " montage");
    EXPECT_EQ(ui.fileRequests.front().initialFolder, state.appPath);
    EXPECT_EQ(state.outputFileName, dir.path("noextension"));
    // A picture window proposes its own file, with " copy"; Cancel writes nothing.
    const size_t told = ui.messages.size();
    form().pictureWindow(2)->mnuSaveAs->trigger();
    EXPECT_EQ(ui.fileRequests.back().fileName, dir.path("s2") + " copy");
    EXPECT_EQ(ui.messages.size(), told);
}

TEST_F(OutputTest, JpegRoadRunsTheConverterAndCleansUp) {
    makeMontage();
    // No converter comes: no JPEG and no temporary file are left.
    ui.fileAnswers.push_back(dir.path("out.jpg"));
    form().m.mnuJPG->trigger();
    EXPECT_FALSE(fs::exists(dir.path("out.jpg")));
    ASSERT_EQ(ui.started.size(), 1u);
    const std::string unconverted = ui.started[0].second[0].toStdString();
    EXPECT_FALSE(fs::exists(unconverted.substr(0, unconverted.find(','))));

    fs::create_symlink(LUMIQUILT_BIN_DIR "/CSTjpeg", dir.path("CSTjpeg"));
    ui.reallyStartPrograms = true;
    form().output().outsideProgramWait = 1.5;
    ui.fileAnswers.push_back(dir.path("with blank.JPG"));
    form().m.mnuJPG->trigger();
    EXPECT_TRUE(ui.messages.empty());  // the JPEG road says nothing
    ASSERT_EQ(ui.started.size(), 2u);
    EXPECT_EQ(ui.started[1].first, state.appPath + "CSTjpeg");
    const QStringList args = ui.started[1].second;
    ASSERT_EQ(args.size(), 1);
    const std::string line = args[0].toStdString();
    const std::string temporary = line.substr(0, line.find(','));
    EXPECT_EQ(line.substr(line.find(',') + 1), dir.path("with blank.JPG"));
    EXPECT_NE(temporary.find("/qvztemp"), std::string::npos);
    EXPECT_FALSE(fs::exists(temporary));
    ASSERT_TRUE(testing::waitForFile(dir.path("with blank.JPG")));
    EXPECT_EQ(testing::readBytes(dir.path("with blank.JPG")).substr(0, 2), "\xFF\xD8");
    EXPECT_EQ(QImage(QString::fromStdString(dir.path("with blank.JPG"))).size(), montage().size());
}

// The converter's and the editor's temporary pictures where none can be written: the
// user's JPEG stays as it was, and no temporary file is left.
TEST_F(OutputTest, TemporaryPicturesThatCantBeWrittenLoseNothing) {
    makeMontage();
    fs::create_directories(dir.path("tmp"));
    const std::string oldTmp = std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "";
    ::setenv("TMPDIR", dir.path("tmp").c_str(), 1);
    const std::string folder = privateTemporaryFolder();
    testing::LockedFolder lock(folder);
    if (!lock.locked()) {
        GTEST_SKIP() << "this user may write into any folder";
    }
    testing::writeBytes(dir.path("out.jpg"), "old jpeg");
    ui.fileAnswers.push_back(dir.path("out.jpg"));
    form().m.mnuJPG->trigger();
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(lastMessage().text, "error 53 (File not found) at line 8600 of SaveAsSub");
    EXPECT_EQ(lastMessage().title, "Nobody's Perfect");
    EXPECT_EQ(lastMessage().icon, MessageIcon::critical);
    EXPECT_EQ(testing::readBytes(dir.path("out.jpg")), "old jpeg");

    ui.messages.clear();
    form().m.mnuEditor->trigger();
    EXPECT_TRUE(ui.messages.empty());
    ASSERT_EQ(ui.opened.size(), 1u);
    EXPECT_EQ(ui.opened[0].rfind(folder, 0), 0u);
    lock.unlock();
    EXPECT_TRUE(fs::is_empty(folder));
    if (oldTmp.empty()) {
        ::unsetenv("TMPDIR");
    } else {
        ::setenv("TMPDIR", oldTmp.c_str(), 1);
    }
}

TEST_F(OutputTest, GifRoadAsksThenWritesAndTells) {
    makeMontage();
    ui.fileAnswers.push_back(dir.path("m.gif"));
    form().m.mnuJPG->trigger();
    ASSERT_EQ(ui.messages.size(), 2u);
    EXPECT_EQ(ui.messages[0].title, "A BMP or JPG format is much better");
    EXPECT_EQ(ui.messages[0].icon, MessageIcon::information);
    EXPECT_EQ(ui.messages[0].buttons, MessageButtons::yesNo);
    EXPECT_EQ(ui.messages[1].text,
              "256 color (half color palette)  '" + dir.path("m.gif") + "'  GIF file created.");
    EXPECT_EQ(ui.messages[1].title, "Lumiquilt");
    EXPECT_EQ(QImage(QString::fromStdString(dir.path("m.gif"))).size(), montage().size());

    // No to the palette question: nothing is written.
    ui.messages.clear();
    ui.messageAnswers.push_back(MessageResult::no);
    ui.fileAnswers.push_back(dir.path("n.gif"));
    form().m.mnuJPG->trigger();
    EXPECT_EQ(ui.messages.size(), 1u);
    EXPECT_FALSE(fs::exists(dir.path("n.gif")));
}

TEST_F(OutputTest, GifLargerThanItsWindowOffersBmpAndTheDialogAgain) {
    makeMontage();
    form().montageWindow()->resize(10, 10);
    ui.fileAnswers.push_back(dir.path("big.gif"));
    ui.fileAnswers.push_back(std::nullopt);  // the second dialog is cancelled
    ui.messageAnswers = {MessageResult::yes, MessageResult::yes};
    form().m.mnuJPG->trigger();
    ASSERT_EQ(ui.messages.size(), 2u);
    EXPECT_EQ(ui.messages[1].text,
              "The .GIF format will only allow the saving of screen size images.   Your image is "
              "larger than this  (40x30).    The best format is .BMP which allows you to save the "
              "whole image.   Do you want to change to .BMP?");
    EXPECT_EQ(ui.messages[1].title, "You can always save under both formats");
    EXPECT_EQ(ui.messages[1].icon, MessageIcon::question);
    ASSERT_EQ(ui.fileRequests.size(), 2u);
    EXPECT_EQ(ui.fileRequests[1].fileName, dir.path("big"));
    EXPECT_FALSE(fs::exists(dir.path("big.gif")));
}

TEST_F(OutputTest, ClipboardTakesTheMainMontageFromAMethodWindow) {
    makeMontage();
    form().m.mnucopy->trigger();
    ASSERT_EQ(ui.clipboard.size(), 1u);
    EXPECT_EQ(ui.clipboard[0], montage());
    FormMontagePicture* method = form().methodWindow(0);
    method->PictureFile->setPicture(testing::patternPicture(5, 5, 1));
    method->mnucopy->trigger();
    EXPECT_EQ(ui.clipboard.back(), montage());
    form().pictureWindow(1)->mnucopy->trigger();
    EXPECT_EQ(ui.clipboard.back(), form().pictureWindow(1)->PictureFile->picture());
}

TEST_F(OutputTest, EditorGetsATemporaryBmpThatGoesAfterTheWait) {
    makeMontage();
    FormMontagePicture* method = form().methodWindow(1);
    method->PictureFile->setPicture(testing::patternPicture(7, 6, 2));
    method->mnuEditor->trigger();
    ASSERT_EQ(ui.opened.size(), 1u);
    const std::string name = ui.opened[0];
    EXPECT_EQ(name, state.outputFileName);
    EXPECT_EQ(name.rfind(privateTemporaryFolder() + "qvztemp", 0), 0u);
    EXPECT_EQ(name.substr(name.size() - 4), ".bmp");
    EXPECT_FALSE(fs::exists(name));
    EXPECT_TRUE(ui.messages.empty());
}

TEST(PrintRectangle, ThreeSizes) {
    const QSizeF picture(300, 200);
    const QSizeF page(1000.7, 1400.2);
    EXPECT_EQ(printRectangle(0, picture, page), QRectF(0, 0, 300, 200));
    EXPECT_EQ(printRectangle(1, picture, page), QRectF(0, 0, 950, 1330));
    EXPECT_EQ(printRectangle(2, picture, page), QRectF(0, 0, 500, 700));
}

TEST_F(OutputTest, PrintingToPdfHidesASourcesMarkAndCancelPrintsNothing) {
    makeMontage();
    ui.printerAnswers.push_back(dir.path("fit.pdf"));
    form().m.mnuPrint->trigger();
    const std::string pdf = testing::readBytes(dir.path("fit.pdf"));
    EXPECT_EQ(pdf.substr(0, 4), "%PDF");
    EXPECT_NE(pdf.find("/Width 40"), std::string::npos);
    EXPECT_NE(pdf.find("/Height 30"), std::string::npos);
    ui.printerAnswers.push_back(std::nullopt);
    form().m.mnuPrintHalf->trigger();
    EXPECT_TRUE(ui.messages.empty());

    // A source's mark is hidden while it prints and comes back, after a cancel too.
    FormPicture* picture = form().pictureWindow(1);
    picture->PictureFile->setMarksVisible(true);
    bool visibleWhilePrinting = true;
    ui.duringDialog = [&] { visibleWhilePrinting = picture->PictureFile->marksVisible(); };
    ui.printerAnswers.push_back(dir.path("source.pdf"));
    picture->mnuPrint100->trigger();
    EXPECT_FALSE(visibleWhilePrinting);
    EXPECT_TRUE(picture->PictureFile->marksVisible());
    EXPECT_EQ(testing::readBytes(dir.path("source.pdf")).substr(0, 4), "%PDF");
    ui.printerAnswers.push_back(std::nullopt);
    picture->mnuPrint->trigger();
    EXPECT_TRUE(picture->PictureFile->marksVisible());
}

}  // namespace
}  // namespace lumiquilt
