#include "engine/create_image.h"

#include <new>
#include <vector>

#include "core/files.h"
#include "core/runtime_error.h"
#include "core/text.h"
#include "engine/montage_run.h"
#include "engine/properties_report.h"
#include "series/series_name.h"

namespace lumiquilt {

namespace {

constexpr const char* kInvalidPictureMessage = "This is not a valid picture file that I can read.";
constexpr const char* kInvalidPictureTitle = "Try a different format";

// The run ends early, without its closing steps (a refused name, no area left).
struct EndRunEarly {};
// The run goes straight to its closing steps, its message already shown.
struct SkipToClose {};

class Run {
  public:
    Run(ProgramState& state, CreateImageFront& front) : s(state), m_front(front) {}

    RunEnd go() {
        try {
            stages();
        } catch (const EndRunEarly&) {
            m_front.setBusy(false);
            return RunEnd::endedEarly;
        } catch (const SkipToClose&) {
            m_end = RunEnd::stopped;
        } catch (const RuntimeError& error) {
            generalMessage(error.number(), error.description(), "CommandGo");
            m_end = RunEnd::stopped;
        } catch (const std::bad_alloc&) {
            generalMessage(kOutOfMemory, errorDescription(kOutOfMemory), "CommandGo");
            m_end = RunEnd::stopped;
        }
        close();
        return m_end;
    }

  private:
    void generalMessage(int number, const std::string& description, const char* routine) {
        m_front.message(lumiquilt::generalMessage(number, description, m_stage, routine),
                        std::string(kGeneralMessageTitle), MessageIcon::critical);
    }

    void stages() {
        m_stage = kStageIncrementCheck;
        RunChoices choices = m_front.choices();
        const std::string incrementText = checkIncrementText(choices.incrementText);
        if (incrementText != choices.incrementText) {
            m_front.setIncrementText(incrementText);
        }

        m_stage = kStageIncrement;
        s.increment = incrementFromText(incrementText);
        m_front.setBusy(true);
        m_front.clearMontagePicture();
        for (int i = 0; i < kMethodCount; ++i) {
            s.methodChecked[static_cast<size_t>(i)] =
                choices.methodChecked[static_cast<size_t>(i)] ? kTrue : kFalse;
        }
        s.ignoredImage = choices.ignored;

        if (s.evaluationPass >= 2) {
            // Later passes of an evaluation work on the series already loaded.
            m_front.clearUsedCaption();
        } else {
            loadSeries();
            m_loadedSeries = true;
            m_stage = kStageArrange;
            const PictureView first = m_front.memberPicture(1);
            s.imageWidth = static_cast<float>(first.width);
            s.imageHeight = static_cast<float>(first.height);
            m_front.arrangeWindows();
        }

        m_stage = kStageOffsets;
        const OffsetStep offsets = offsetStep();

        m_stage = kStageNoOffsets;
        m_front.yieldEvents();

        if (s.montageFromProject != kFalse) {
            // A project placed the montage: keep it, and skip the block loop.
            s.montageFromProject = kFalse;
        } else {
            m_stage = kStageBuffers;
            m_front.startPreview();
            readBuffers();
            m_front.seriesRead();
            // Memory given back while the series was read and not taken again.
            SampleBuffer::releaseSpares();

            m_stage = kStageBlockLoop;
            runBlockLoop(
                s, offsets.rowShift, [this](int16_t y0) { m_front.previewRow(y0); },
                [this](const RuntimeError& error, int measureStage) {
                    m_front.message(
                        lumiquilt::generalMessage(error, measureStage, "gotFocusMeasure"),
                        std::string(kGeneralMessageTitle), MessageIcon::critical);
                });

            m_stage = kStageLoopEnd;
            m_front.showMontage();
        }

        m_stage = kStageReport;
        m_front.runReported(trimmed(m_front.fileNameText()));
        report();
        if (s.autoSmooth == 1) {
            smoothMontage(s.buffers, 999, kFalse);
        }
    }

    // Stages 2000 to 5100: the name, its checks and the loading loop.
    void loadSeries() {
        s.imageCount = 0;
        s.firstFileName = m_front.fileNameText();

        m_stage = kStageHideWindows;
        try {
            m_front.hideLastRun(s.firstFileName);
        } catch (const RuntimeError&) {
            // Nothing of the last run is worth stopping this one for.
        }

        m_stage = kStageCompleteName;
        const std::string name = completeSeriesName(s.firstFileName, s.appPath);
        m_front.setFileNameText(name);
        if (!hasDigitBeforeDot(name)) {
            m_front.message(noDigitMessageCreateImage(), kNoDigitTitle, MessageIcon::critical);
            throw EndRunEarly{};
        }
        if (!fileExists(name)) {
            m_front.message(kFileMissingMessage, kFileMissingTitle, MessageIcon::exclamation);
            m_front.forgetMissingFile(name);
            throw EndRunEarly{};
        }

        m_stage = kStageFirstNumber;
        SeriesPattern pattern;
        try {
            pattern = findDigits(name);
        } catch (const RuntimeError&) {
            m_front.message(kNumberTooLargeMessage, kNoDigitTitle, MessageIcon::critical);
            throw EndRunEarly{};
        }
        s.seriesBase = pattern.seriesBase;

        m_stage = kStageLoadMember;
        // The last series is stale from here on; its memory can take the next one.
        m_front.seriesLetGo(s.buffers.takeSeries());
        m_front.seriesFound(pattern);
        const SeriesLoopResult loop = loadSeriesLoop(
            pattern, [this](int k, const std::string& f) { m_front.loadMember(k, f); },
            s.imageCount, s.currentFileName);
        if (loop.end == SeriesEnd::invalidPicture) {
            // What was loaded stays in its hidden windows; nothing is arranged.
            m_front.message(kInvalidPictureMessage, kInvalidPictureTitle, MessageIcon::critical);
            throw SkipToClose{};
        }
        if (loop.end == SeriesEnd::limit) {
            m_front.message(tooManyPicturesMessage(), kTooManyPicturesTitle, MessageIcon::critical);
        }
        if (s.imageCount == 0 && loop.errorNumber != kFileNotFound) {
            // Image 1 was there but could not be had, for want of memory above all.
            throw RuntimeError(loop.errorNumber);
        }
        if (s.imageCount == 0) {
            // The first file went between the test and the load.
            m_front.message(kFileMissingMessage, kFileMissingTitle, MessageIcon::exclamation);
            throw EndRunEarly{};
        }
    }

    // Stage 8100: the marks align the images, and minimum and maximum size the
    // montage anew. The menus are read again: the queue ran while pictures loaded.
    OffsetStep offsetStep() {
        const RunChoices now = m_front.choices();
        const OffsetMode mode =
            offsetModeFrom(now.addOffsets, now.offsetsMin, now.offsetsMax, now.offsetsSame);
        if (mode == OffsetMode::off) {
            return clearImageOffsets(s);
        }
        m_stage = kStageTargetCentres;
        collectTargetCentres(s, [this](int k) { return m_front.markCentre(k); });
        m_stage = kStageOffsets;
        const PictureView first = m_front.memberPicture(1);
        const OffsetStep step = applyOffsetMode(s, mode, static_cast<float>(first.width),
                                                static_cast<float>(first.height));
        switch (step.outcome) {
            case OffsetOutcome::noMinimumArea:
                // The pictures stay loaded and offsets stay on, for another try.
                m_front.message(kNoMinimumAreaMessage, kNoMinimumAreaTitle, MessageIcon::critical);
                m_front.hideMontage();
                throw EndRunEarly{};
            case OffsetOutcome::noMaximumSize:
                throw EndRunEarly{};
            case OffsetOutcome::aligned:
                break;
        }
        if (step.resizeMontage) {
            m_front.montageResized();
        }
        return step;
    }

    void readBuffers() {
        std::vector<PictureView> images;
        images.reserve(static_cast<size_t>(s.imageCount));
        for (int k = 1; k <= s.imageCount; ++k) {
            images.push_back(m_front.memberPicture(k));
        }
        // Only a run that loaded the series has it read ahead.
        SeriesFrames* readAhead = m_loadedSeries ? m_front.seriesFrames() : nullptr;
        loadPixelBuffers(
            s, m_front.montagePicture(), static_cast<int>(s.imageWidth),
            static_cast<int>(s.imageHeight), images,
            [this](const std::string& text) {
                m_front.message(text, kDimensionTitle, MessageIcon::critical);
            },
            readAhead);
    }

    void report() {
        // The report reads the controls as they stand at the end of the run.
        const RunChoices now = m_front.choices();
        ReportInputs in;
        in.firstFileName = s.firstFileName;
        in.imageCount = s.imageCount;
        in.ignored = s.ignoredImage;
        in.methodChecked = now.methodChecked;
        in.incrementText = now.incrementText;
        in.autoSmooth = s.autoSmooth;
        in.addOffsets = now.addOffsets;
        in.offsetsMin = now.offsetsMin;
        in.offsetsMax = now.offsetsMax;
        in.offsetsSame = now.offsetsSame;
        in.imageOffsets = s.imageOffsets;
        in.usedCaption = m_front.usedCaption();
        s.propertiesString = setPropertiesString(in);
    }

    // Stage 15000: every way out but the early ones comes through here.
    void close() {
        m_front.setFileNameText(s.firstFileName);
        m_front.setBusy(false);
        m_front.runClosed(trimmed(s.firstFileName));
    }

    ProgramState& s;
    CreateImageFront& m_front;
    int m_stage = kStageIncrementCheck;
    RunEnd m_end = RunEnd::completed;
    bool m_loadedSeries = false;
};

}  // namespace

RunEnd createImage(ProgramState& state, CreateImageFront& front) {
    const BufferReuse reuse;
    return Run(state, front).go();
}

}  // namespace lumiquilt
