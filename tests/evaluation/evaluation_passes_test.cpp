// The passes of Compare All Exposure Methods and Evaluate Increments, driven through
// the real Create Image road by scripted front ends: no Qt, no windows.
#include "evaluation/evaluation_passes.h"

#include <gtest/gtest.h>

#include "engine/measures.h"
#include "support/engine_scripted_front.h"

namespace lumiquilt {
namespace {

namespace fs = std::filesystem;
using testing::ScriptedFront;

// The run's own message when the series has gone; the passes add none of their own.
const std::vector<std::string> kNotFound = {
    "So very sorry, but I can't find that file. | roll the dice again | 3"};

class ScriptedPasses : public EvaluationFront {
  public:
    explicit ScriptedPasses(ScriptedFront& road) : r(road) {}

    bool answer = true;
    std::vector<std::string> log;

    CreateImageFront& road() override { return r; }
    int tickedMethod() override { return r.ticked(); }
    void tickOnly(int method) override {
        for (int i = 0; i < kMethodCount; ++i) {
            r.chosen.methodChecked[static_cast<size_t>(i)] = i == method;
        }
    }
    bool confirm(const std::string& text, const std::string& title) override {
        log.push_back("ask " + text + "|" + title);
        return answer;
    }
    void announce(const std::string& text, const std::string& title) override {
        log.push_back("announce " + text + "|" + title);
    }
    void keepMethodResult(int slot, int method) override {
        log.push_back("keep " + std::to_string(slot) + " " + std::to_string(method));
    }
    void showComparisonBest(int slot) override { log.push_back("best " + std::to_string(slot)); }
    void commandClosed() override { log.push_back("closed"); }

    std::vector<std::string> entries(const std::string& head) const {
        std::vector<std::string> out;
        for (const std::string& l : log) {
            if (l.rfind(head, 0) == 0) {
                out.push_back(l.substr(head.size()));
            }
        }
        return out;
    }

  private:
    ScriptedFront& r;
};

class Passes : public testing::ScriptedRoadTest {
  protected:
    void SetUp() override {
        ScriptedRoadTest::SetUp();
        makeSeries(3, 130, 40);
        front.fileName = "s1";
        front.chosen.incrementText = "4";
        front.chosen.methodChecked[2] = true;
        // The score of a montage by the method of its run and the block size it is
        // scored at; 50 unless a test says otherwise.
        score = [this](const ProgramState& s, int16_t blockSize) {
            scoredAt.push_back(blockSize);
            const auto found = scores.find({selectedMethod(s.methodChecked), blockSize});
            return found == scores.end() ? 50.0f : found->second;
        };
    }
    long loads() const { return front.count("load 1"); }
    // The user's method, increment and typed name are back, and the passes are over.
    void expectChoicesBack(const std::string& fileName = "s1", const std::string& increment = "4") {
        EXPECT_EQ(front.ticked(), 2);
        EXPECT_EQ(front.chosen.incrementText, increment);
        EXPECT_EQ(front.fileName, fileName);
        EXPECT_EQ(state.evaluationPass, 0);
        EXPECT_EQ(state.sizeCheckOff, kFalse);
    }

    ScriptedPasses passes{front};
    std::map<std::pair<int, int>, float> scores;
    std::vector<int> scoredAt;
    ScoreFn score;
};

TEST_F(Passes, CompareRunsTheSevenMethodsInTheirOrder) {
    scores[{3, 10}] = 12.5f;
    const EvaluationResult result = compareAllMethods(state, passes, score);
    EXPECT_EQ(result.end, EvaluationEnd::completed);
    // Method 6 first, method 0 last, each with the user's increment; pass 1 loads.
    const std::vector<std::string> runs = {"6/4", "5/4", "4/4", "3/4", "2/4", "1/4", "0/4"};
    EXPECT_EQ(front.runs, runs);
    EXPECT_EQ(loads(), 1);
    const std::vector<std::string> kept = {"0 6", "1 5", "2 4", "3 3", "4 2", "5 1", "6 0"};
    EXPECT_EQ(passes.entries("keep "), kept);
    // Every montage is scored on the grid of 10, not of the increment it was made with.
    EXPECT_EQ(scoredAt, std::vector<int>(7, 10));
    ASSERT_EQ(result.scores.size(), 7u);
    EXPECT_EQ(result.scores[3].method, 3);
    EXPECT_EQ(result.scores[3].score, 12.5f);
    EXPECT_EQ(state.bestMethod, 3);
    EXPECT_EQ(state.bestMeasure, 12.5f);
    EXPECT_EQ(passes.entries("best "), std::vector<std::string>{"3"});
    EXPECT_EQ(passes.entries("announce "),
              std::vector<std::string>{"I think the best Montage Method is 'Linear Color "
                                       "Focus'.|You can also compare the images visually"});
    // Each slot keeps the report of its own method.
    for (int slot = 0; slot < 7; ++slot) {
        EXPECT_NE(state.methodProperties[static_cast<size_t>(slot)].find(
                      "  Montage method used =" + std::to_string(6 - slot) + " ("),
                  std::string::npos)
            << slot;
    }
    expectChoicesBack();
    EXPECT_TRUE(front.messages.empty());
}

TEST_F(Passes, CompareKeepsTheStrictlyLowestScore) {
    struct Row {
        const char* name;
        std::array<float, 7> byMethod;  // score of method 0..6
        int16_t bestBefore;
        int best;
        float measure;
    };
    const std::array<float, 7> all32000 = {32000, 32000, 32000, 32000, 32000, 32000, 32000};
    const Row rows[] = {
        {"one lowest", {9, 8, 7, 3, 7, 8, 9}, 0, 3, 3},
        {"a tie goes to the method tried first", {9, 9, 2, 9, 2, 9, 9}, 0, 4, 2},
        {"all equal: the first tried", {5, 5, 5, 5, 5, 5, 5}, 0, 6, 5},
        {"every score at 32000: the best of before stays", all32000, 5, 5, 32000},
        {"above 32000 too", {40000, 33000, 32001, 32000, 99999, 1e9f, 32000.5f}, 1, 1, 32000},
    };
    for (const Row& r : rows) {
        scores.clear();
        for (int m = 0; m < 7; ++m) {
            scores[{m, 10}] = r.byMethod[static_cast<size_t>(m)];
        }
        state.bestMethod = r.bestBefore;
        passes.log.clear();
        compareAllMethods(state, passes, score);
        EXPECT_EQ(state.bestMethod, r.best) << r.name;
        EXPECT_EQ(state.bestMeasure, r.measure) << r.name;
        EXPECT_EQ(passes.entries("best "), std::vector<std::string>{std::to_string(6 - r.best)})
            << r.name;
        EXPECT_NE(passes.entries("announce ").at(0).find(std::string(kMethodCaptions[r.best])),
                  std::string::npos)
            << r.name;
    }
}

TEST_F(Passes, CompareWithNoMethodTickedTicksTheFirstAfterwards) {
    front.chosen.methodChecked = {};
    compareAllMethods(state, passes, score);
    EXPECT_EQ(front.ticked(), 0);
}

TEST_F(Passes, ComparePassThatStopsEndsTheCommand) {
    // The third pass's run refuses its increment; it has no montage to score.
    front.afterRun = [this](int run) {
        if (run == 2) {
            front.chosen.incrementText = "99999";
        }
    };
    const EvaluationResult result = compareAllMethods(state, passes, score);
    EXPECT_EQ(result.end, EvaluationEnd::stopped);
    EXPECT_EQ(front.runs.size(), 2u);  // the third never passed its check
    EXPECT_EQ(result.scores.size(), 2u);
    EXPECT_EQ(passes.entries("keep ").size(), 2u);
    // Only the run's own message; no best named or shown.
    EXPECT_EQ(front.messages,
              std::vector<std::string>{
                  "error 6 (Overflow) at line 1000 of CommandGo | Nobody's Perfect | 1"});
    EXPECT_TRUE(passes.entries("announce ").empty());
    EXPECT_TRUE(passes.entries("best ").empty());
    expectChoicesBack("s1", "99999");  // as the third run found it
    EXPECT_EQ(passes.log.back(), "closed");
}

TEST_F(Passes, CompareOfAMissingSeriesStopsAtOnce) {
    front.fileName = "gone1";
    const EvaluationResult result = compareAllMethods(state, passes, score);
    EXPECT_EQ(result.end, EvaluationEnd::stopped);
    EXPECT_TRUE(result.scores.empty());
    EXPECT_TRUE(scoredAt.empty());
    EXPECT_TRUE(passes.entries("keep ").empty());
    EXPECT_EQ(front.messages, kNotFound);
    expectChoicesBack("gone1");  // what the user typed, not the completed name
}

TEST(IncrementUpperBound, FromTheWidth) {
    const std::pair<float, int> rows[] = {
        {1200, 200}, {1199, 200}, {1197, 200}, {5000, 200}, {600, 100},  {117, 20},
        {116, 19},   {57, 10},    {56, 9},     {0, 0},      {1201, 200},
    };
    for (const auto& [width, bound] : rows) {
        EXPECT_EQ(incrementUpperBound(width), bound) << width;
    }
}

TEST_F(Passes, EvaluateTriesTheIncrementsAndMakesTheBest) {
    state.imageWidth = 200;  // bound 33: increments 10, 20 and 30
    scores[{2, 10}] = 9.0f;
    scores[{2, 20}] = 4.0f;
    scores[{2, 30}] = 4.0f;  // a tie keeps the smaller increment
    const EvaluationResult result = evaluateIncrements(state, passes, score);
    EXPECT_EQ(result.end, EvaluationEnd::completed);
    // The first increment loads, the others reuse; the best is made once more.
    EXPECT_EQ(front.runs, (std::vector<std::string>{"2/10", "2/20", "2/30", "2/20"}));
    EXPECT_EQ(loads(), 1);
    EXPECT_EQ(scoredAt, (std::vector<int>{10, 20, 30}));
    EXPECT_EQ(state.bestIncrement, 20);
    EXPECT_EQ(state.bestMethod, 2);
    EXPECT_EQ(front.chosen.incrementText, "20");
    EXPECT_EQ(state.evaluationPass, 0);
    EXPECT_EQ(state.sizeCheckOff, kFalse);
    EXPECT_EQ(passes.entries("announce "),
              std::vector<std::string>{"I think the best increment for this 'Average Color "
                                       "Difference' Montage Method is  20.|well done!"});
}

TEST_F(Passes, EvaluateOfNarrowPictures) {
    // Below 117 only 10 is tried, with no closing run and no message; below 57, or
    // before any run, nothing at all.
    for (const auto& [width, runs] :
         {std::pair{116.0f, 1u}, std::pair{56.0f, 0u}, std::pair{0.0f, 0u}}) {
        state.imageWidth = width;
        front.runs.clear();
        passes.log.clear();
        front.chosen.incrementText = "15";
        EXPECT_EQ(evaluateIncrements(state, passes, score).end, EvaluationEnd::completed) << width;
        EXPECT_EQ(front.runs.size(), runs) << width;
        EXPECT_TRUE(passes.entries("announce ").empty()) << width;
        EXPECT_EQ(state.evaluationPass, 0) << width;
        EXPECT_EQ(front.chosen.incrementText, runs == 0 ? "15" : "10") << width;
    }
}

TEST_F(Passes, EvaluateAllAsksFirstAndCancelChangesNothing) {
    state.imageWidth = 130;
    state.bestMeasure = 3.0f;
    state.bestMethod = 4;
    passes.answer = false;
    const EvaluationResult result = evaluateIncrementsAllMethods(state, passes, score);
    EXPECT_EQ(result.end, EvaluationEnd::cancelled);
    EXPECT_EQ(passes.log,
              std::vector<std::string>{
                  "ask I am about to examine all the Montage creation Methods, with a range of "
                  "increments, to determine which I think looks best.   This may take a "
                  "considerable time.   Do you want to continue? |It's all automatic, but the "
                  "time depends on your computer speed."});
    EXPECT_TRUE(front.runs.empty());
    expectChoicesBack();
    EXPECT_EQ(state.bestMeasure, 3.0f);
    EXPECT_EQ(state.bestMethod, 4);
}

TEST_F(Passes, EvaluateAllFindsTheBestPair) {
    state.imageWidth = 130;  // and the pictures are 130 wide: 10 and 20 for every method
    scores[{5, 20}] = 3.0f;
    scores[{1, 10}] = 3.0f;  // the same score later: the method tried first stays
    scores[{0, 20}] = 4.0f;
    const EvaluationResult result = evaluateIncrementsAllMethods(state, passes, score);
    EXPECT_EQ(result.end, EvaluationEnd::completed);
    // Method 6 first, each at 10 then 20; the best pair is made once more.
    EXPECT_EQ(front.runs, (std::vector<std::string>{"6/10", "6/20", "5/10", "5/20", "4/10", "4/20",
                                                    "3/10", "3/20", "2/10", "2/20", "1/10", "1/20",
                                                    "0/10", "0/20", "5/20"}));
    // Every increment of the first method loads, and so does the last run.
    EXPECT_EQ(loads(), 3);
    EXPECT_EQ(state.bestMethod, 5);
    EXPECT_EQ(state.bestIncrement, 20);
    EXPECT_EQ(front.ticked(), 5);
    EXPECT_EQ(front.chosen.incrementText, "20");
    EXPECT_EQ(state.evaluationPass, 0);
    EXPECT_EQ(passes.entries("announce "),
              std::vector<std::string>{"I think the best Montage Method is  'Preference Green "
                                       "Focus'  used with an increment of  20.|well done!"});
    EXPECT_EQ(result.scores.size(), 14u);
}

TEST_F(Passes, EvaluateAllWithNoEarlierRun) {
    state.imageWidth = 0;
    evaluateIncrementsAllMethods(state, passes, score);
    // Nothing is tried; "0" goes to the field, and the run makes it "1".
    EXPECT_EQ(front.runs, std::vector<std::string>{"0/1"});
    EXPECT_EQ(front.chosen.incrementText, "1");
    EXPECT_EQ(passes.entries("announce "),
              std::vector<std::string>{"I think the best Montage Method is  '3D Color Space "
                                       "Focus'  used with an increment of  0.|well done!"});
}

TEST_F(Passes, EvaluateAllStopsWhenAMemberGoesMissingBetweenPasses) {
    state.imageWidth = 130;
    // The first method loads the series for every increment: after the first run,
    // the first file goes.
    front.afterRun = [this](int run) {
        if (run == 1) {
            fs::remove(path("s1.bmp"));
        }
    };
    const EvaluationResult result = evaluateIncrementsAllMethods(state, passes, score);
    EXPECT_EQ(result.end, EvaluationEnd::stopped);
    EXPECT_EQ(result.scores.size(), 1u);
    EXPECT_EQ(front.messages, kNotFound);
    EXPECT_TRUE(passes.entries("announce ").empty());
    expectChoicesBack();
}

}  // namespace
}  // namespace lumiquilt
