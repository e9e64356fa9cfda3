// Compare All Exposure Methods and Evaluate Increments in the window program, end to
// end on small series, and against what lumiquilt-cli prints for the same series.
#include <gtest/gtest.h>
#include <QGuiApplication>

#include <cstdio>
#include <regex>
#include <sstream>

#include "cli/cli_app.h"
#include "engine/evaluate_image.h"
#include "engine/measures.h"
#include "evaluation/evaluation_commands.h"
#include "series/picture_io.h"
#include "support/ui_fixture.h"

namespace lumiquilt {
namespace {

using testing::UiTest;

// The seam score of a picture as a window shows it.
float scoreOf(const QImage& picture, int16_t blockSize) {
    ProgramState s;
    s.imageWidth = static_cast<float>(picture.width());
    s.imageHeight = static_cast<float>(picture.height());
    s.buffers.sizeMontage(picture.width(), picture.height());
    readPictureIntoFrame(viewOf(picture), s.buffers.montageSlot(100), s.buffers.montageMaxX + 1,
                         s.buffers.montageMaxY + 1);
    return evaluateImage(s.buffers, s.imageWidth, s.imageHeight, blockSize);
}

std::string sixDigits(float score) {
    char text[64];
    std::snprintf(text, sizeof text, "%.6f", static_cast<double>(score));
    return text;
}

std::string caption(int method) {
    return std::string(kMethodCaptions[static_cast<size_t>(method)]) + " used.";
}

class EvaluationCommandsTest : public UiTest {
  protected:
    void SetUp() override {
        UiTest::SetUp();
        start();
        form().activateFirstTime();
    }
    std::string cli(const std::vector<std::string>& args) {
        std::ostringstream out;
        std::ostringstream err;
        EXPECT_EQ(runCli(args, dir.root(), out, err), 0) << err.str();
        return out.str();
    }
    int ticked() {
        int found = -1;
        for (int i = 0; i < kMethodCount; ++i) {
            if (form().m.mnusimpleCol[static_cast<size_t>(i)]->isChecked()) {
                EXPECT_EQ(found, -1) << "two methods ticked";
                found = i;
            }
        }
        return found;
    }
    QImage picture(PictureWindow* w) {
        return w->PictureFile->picture().convertToFormat(QImage::Format_RGB888);
    }
    QImage written(const std::string& name) {
        return QImage(QString::fromStdString(dir.path(name)))
            .convertToFormat(QImage::Format_RGB888);
    }
    // A series s1.png .. of count pictures named in the field, the increment typed (if
    // any) and one method ticked.
    void prepare(int count, int width, int height, const char* increment, int method) {
        makeSeries("s", count, width, height);
        setFileName(dir.path("s1.png"));
        if (increment != nullptr) {
            setIncrement(increment);
        }
        form().m.mnusimpleCol[static_cast<size_t>(method)]->trigger();
    }
};

TEST_F(EvaluationCommandsTest, CompareLeavesSevenWindowsAndNamesTheBest) {
    makeSeries("s", 3, 60, 44);
    state.showUsedWindow = 1;
    setFileName("s1.png");
    setIncrement("7");
    form().m.mnusimpleCol[2]->trigger();
    form().m.mnuAllMethods->trigger();

    // One message: the best method, as the scores of the windows say.
    ASSERT_EQ(ui.messages.size(), 1u) << lastMessage().text;
    float best = 32000.0f;
    int bestMethod = -1;
    for (int slot = 0; slot < 7; ++slot) {
        const float score = scoreOf(picture(form().methodWindow(slot)), 10);
        if (score < best) {
            best = score;
            bestMethod = 6 - slot;
        }
    }
    EXPECT_EQ(state.bestMethod, bestMethod);
    EXPECT_EQ(state.bestMeasure, best);
    EXPECT_EQ(lastMessage().text,
              "I think the best Montage Method is '" +
                  std::string(kMethodCaptions[static_cast<size_t>(bestMethod)]) + "'.");
    EXPECT_EQ(lastMessage().title, "You can also compare the images visually");
    EXPECT_EQ(lastMessage().icon, MessageIcon::exclamation);

    // The staircase: each pair 80 pixels right of and one title bar lower than the last,
    // each result window under its dominant-image window.
    const int step = state.captionHeight + 2 * state.dialogFrameHeight;
    for (int slot = 0; slot < 7; ++slot) {
        FormUsed* used = form().methodUsedWindow(slot);
        FormMontagePicture* result = form().methodWindow(slot);
        EXPECT_TRUE(result->isVisible()) << slot;
        EXPECT_TRUE(used->isVisible()) << slot;
        EXPECT_EQ(result->Caption().toStdString(), caption(6 - slot));
        EXPECT_EQ(used->Caption().toStdString(), caption(6 - slot));
        EXPECT_EQ(result->pos(), used->pos() + QPoint(0, step)) << slot;
        EXPECT_EQ(result->size(), form().montageWindow()->size()) << slot;
        const QPoint before = slot == 0 ? form().usedWindow()->pos() - QPoint(0, step)
                                        : form().methodUsedWindow(slot - 1)->pos();
        EXPECT_EQ(used->pos(), before + QPoint(80, step)) << slot;
        EXPECT_EQ(used->LabelUsed->pos(), QPoint(state.sizingFrameHeight, state.dialogFrameHeight));
    }
    // The main montage window shows the best picture.
    EXPECT_EQ(picture(form().montageWindow()), picture(form().methodWindow(6 - bestMethod)));
    // The Window menu: the montage, the seven results, the preview last.
    EXPECT_EQ(form().m.mnuWindow2[1]->text().toStdString(), caption(6));
    EXPECT_EQ(form().m.mnuWindow2[7]->text().toStdString(), caption(0));
    EXPECT_TRUE(form().m.mnuWindow2[8]->isVisible());
    EXPECT_EQ(form().m.mnuWindow2[8]->text(), "Preview");
    // The user's method, the typed name and the commands are back.
    EXPECT_EQ(ticked(), 2);
    EXPECT_EQ(form().textFileName->text(), "s1.png");
    EXPECT_EQ(form().TextIncrement->text(), "7");
    EXPECT_FALSE(form().runInProgress());
    EXPECT_TRUE(form().m.mnuAllMethods->isEnabled());
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);

    // lumiquilt-cli names the same method with the same scores.
    std::string expected;
    for (int slot = 0; slot < 7; ++slot) {
        expected += "method " + std::to_string(6 - slot) + " " +
                    sixDigits(scoreOf(picture(form().methodWindow(slot)), 10)) + "\n";
    }
    expected += "best " + std::to_string(bestMethod) + " " +
                std::string(kMethodCaptions[static_cast<size_t>(bestMethod)]) + "\n";
    // The report and the score are those of the best method's montage.
    expected += state.methodProperties[static_cast<size_t>(6 - bestMethod)] + "score " +
                sixDigits(best) + "\n";
    EXPECT_EQ(cli({"compare", "s1.png", "-i", "7", "-m", "2", "-o", "best.png", "--report", "-",
                   "--score"}),
              expected);
    EXPECT_EQ(written("best.png"), picture(form().montageWindow()));
}

TEST_F(EvaluationCommandsTest, CompareWithTheUsedWindowOffStillStandsInTheStaircase) {
    state.showUsedWindow = 0;
    prepare(2, 30, 20, nullptr, 5);
    form().m.mnuAllMethods->trigger();
    ASSERT_EQ(ui.messages.size(), 1u);
    const int step = state.captionHeight + 2 * state.dialogFrameHeight;
    for (int slot = 0; slot < 7; ++slot) {
        EXPECT_FALSE(form().methodUsedWindow(slot)->isVisible()) << slot;
        EXPECT_TRUE(form().methodWindow(slot)->isVisible()) << slot;
        EXPECT_EQ(form().methodWindow(slot)->pos(),
                  form().methodUsedWindow(slot)->pos() + QPoint(0, step));
    }
    EXPECT_EQ(form().methodWindow(3)->pos(), form().methodWindow(0)->pos() + QPoint(240, 3 * step));
    // A second Create Image throws the results away.
    form().CommandGo_Click();
    for (int slot = 0; slot < 7; ++slot) {
        EXPECT_FALSE(form().methodWindow(slot)->isVisible()) << slot;
    }
    EXPECT_FALSE(form().m.mnuWindow2[2]->isVisible());
}

TEST_F(EvaluationCommandsTest, EvaluateFindsTheIncrementTheCliFinds) {
    prepare(3, 130, 40, "20", 1);
    form().CommandGo_Click();  // the run before the command sets the range
    ASSERT_TRUE(ui.messages.empty());
    form().m.mnuEvaluate->trigger();
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(form().TextIncrement->text().toStdString(), std::to_string(state.bestIncrement));
    EXPECT_EQ(ticked(), 1);
    // The montage on view is made with the best increment, and scores as the best did.
    EXPECT_EQ(scoreOf(picture(form().montageWindow()), state.bestIncrement), state.bestMeasure);

    // lumiquilt-cli tries 10 and 20 (130 / 6 rounds to 22), each scored to six digits,
    // and names the lower, as the window program did.
    const std::string out = cli({"evaluate", "s1.png", "-m", "1", "-o", "best.png"});
    std::smatch m;
    ASSERT_TRUE(std::regex_match(out, m,
                                 std::regex("increment 10 (\\d+\\.\\d{6})\n"
                                            "increment 20 (\\d+\\.\\d{6})\nbest 1 (\\d+)\n")))
        << out;
    const int lower = std::stod(m[2]) < std::stod(m[1]) ? 2 : 1;
    EXPECT_EQ(m[3], std::to_string(10 * lower));
    EXPECT_EQ(m[3], std::to_string(state.bestIncrement));
    EXPECT_EQ(m[lower], sixDigits(state.bestMeasure));
    EXPECT_EQ(written("best.png"), picture(form().montageWindow()));
}

TEST_F(EvaluationCommandsTest, EvaluateAllAsksFirstAndLeavesTheBestPairSelected) {
    prepare(3, 130, 40, "15", 4);
    form().CommandGo_Click();
    const QImage before = picture(form().montageWindow());
    ui.messageAnswers.push_back(MessageResult::cancel);
    form().m.mnuEvaluateAll->trigger();
    ASSERT_EQ(ui.messages.size(), 1u);
    EXPECT_EQ(lastMessage().icon, MessageIcon::question);
    EXPECT_EQ(lastMessage().buttons, MessageButtons::okCancel);
    EXPECT_EQ(ticked(), 4);
    EXPECT_EQ(form().TextIncrement->text(), "15");
    EXPECT_EQ(picture(form().montageWindow()), before);

    form().m.mnuEvaluateAll->trigger();
    ASSERT_EQ(ui.messages.size(), 3u);  // the question again, then the closing message
    EXPECT_EQ(ticked(), state.bestMethod);
    EXPECT_EQ(form().TextIncrement->text().toStdString(), std::to_string(state.bestIncrement));
    // lumiquilt-cli names each method, from 6 down, before its scores to six digits.
    std::string lines;
    for (int method = 6; method >= 0; --method) {
        lines += "method " + std::to_string(method) +
                 "\nincrement 10 \\d+\\.\\d{6}\nincrement 20 \\d+\\.\\d{6}\n";
    }
    lines += "best " + std::to_string(state.bestMethod) + " " +
             std::to_string(state.bestIncrement) + "\n";
    const std::string out = cli({"evaluate", "s1.png", "--all-methods", "-o", "best.png"});
    EXPECT_TRUE(std::regex_match(out, std::regex(lines))) << out;
    EXPECT_EQ(written("best.png"), picture(form().montageWindow()));
}

}  // namespace
}  // namespace lumiquilt
