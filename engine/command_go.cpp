// Create Image: from the click on the button to the montage on screen.
#include <QApplication>
#include <QFontMetrics>

#include "core/files.h"
#include "core/form_montage.h"
#include "core/numbers.h"
#include "core/runtime_error.h"
#include "core/text.h"
#include "display/window_geometry.h"
#include "engine/measures.h"
#include "engine/montage_run.h"
#include "engine/properties_report.h"
#include "series/picture_io.h"
#include "series/series_name.h"

namespace lumiquilt {

namespace {

constexpr const char* kInvalidPictureMessage = "This is not a valid picture file that I can read.";
constexpr const char* kInvalidPictureTitle = "Try a different format";

std::string textOf(const QLineEdit* field) {
    return field->text().toStdString();
}

// The run ends early, without its closing steps (a refused name, no area left).
struct EndRunEarly {};
// The run goes straight to its closing steps, its message already shown.
struct SkipToClose {};

}  // namespace

void FormMontage::CommandGo_Click() {
    if (m_runInProgress) {
        return;
    }
    const RunGuard guard(*this);
    try {
        runCreateImage();
    } catch (const ProcessEnding&) {
    }
}

OffsetStep FormMontage::applyOffsetStep() {
    // The target marks and the three display areas come with the offsets; until
    // then every image samples at the block corner itself.
    return clearImageOffsets(m_state);
}

void FormMontage::startProgressPreview() {
    // The preview window shows itself here once it exists; the buffers it reads are
    // loaded from the windows either way.
    ProgramState& s = m_state;
    std::vector<PictureView> images;
    for (int k = 1; k <= s.imageCount; ++k) {
        images.push_back(viewOf(pictureWindow(k)->PictureFile->picture()));
    }
    loadPixelBuffers(s, viewOf(montageWindow()->PictureFile->picture()),
                     static_cast<int>(s.imageWidth), static_cast<int>(s.imageHeight), images,
                     [this](const std::string& text) {
                         m_ui.messageBox(text, kDimensionTitle, MessageIcon::critical);
                     });
}

void FormMontage::progressPreviewRow(int16_t /*y0*/) {
    // The preview draws row y0 here once it exists; the run yields once a row.
    yieldEvents();
}

void FormMontage::runCreateImage() {
    ProgramState& s = m_state;
    int stage = kStageIncrementCheck;
    bool cursorSet = false;
    auto restoreCursor = [&cursorSet] {
        if (cursorSet) {
            QApplication::restoreOverrideCursor();
            cursorSet = false;
        }
    };

    try {
        const std::string incrementText = checkIncrementText(textOf(TextIncrement));
        if (incrementText != textOf(TextIncrement)) {
            TextIncrement->setText(QString::fromStdString(incrementText));
        }

        stage = kStageIncrement;
        s.increment = incrementFromText(incrementText);
        QApplication::setOverrideCursor(Qt::WaitCursor);
        cursorSet = true;
        montageWindow()->PictureFile->clearPicture();
        for (int i = 0; i < kMethodCount; ++i) {
            s.methodChecked[static_cast<size_t>(i)] =
                m.mnusimpleCol[static_cast<size_t>(i)]->isChecked() ? kTrue : kFalse;
        }
        for (int i = 0; i < kIgnorableImages; ++i) {
            s.ignoredImage[static_cast<size_t>(i)] =
                m.mnuignoreImage[static_cast<size_t>(i)]->isChecked();
        }

        if (s.evaluationPass >= 2) {
            // Later passes of an evaluation work on the series already loaded.
            usedWindow()->LabelUsed->clear();
        } else {
            s.imageCount = 0;
            s.firstFileName = textOf(textFileName);

            stage = kStageHideWindows;  // failures here are passed over
            try {
                montageWindow()->setWindowTitle(
                    QString::fromStdString("Montage in focus image from " + s.firstFileName));
                hideSeriesWindows();
                unloadMethodWindows();
                montageWindow()->hide();
            } catch (const RuntimeError&) {
            }

            stage = kStageCompleteName;
            const std::string name = completeSeriesName(s.firstFileName, s.appPath);
            textFileName->setText(QString::fromStdString(name));
            if (!hasDigitBeforeDot(name)) {
                m_ui.messageBox(noDigitMessageCreateImage(), kNoDigitTitle, MessageIcon::critical);
                throw EndRunEarly{};
            }
            if (!fileExists(name)) {
                m_ui.messageBox(kFileMissingMessage, kFileMissingTitle, MessageIcon::exclamation);
                m_recent.forget(name, m_settings);
                refreshRecentMenu();
                throw EndRunEarly{};
            }

            stage = kStageFirstNumber;
            SeriesPattern pattern;
            try {
                pattern = findDigits(name);
            } catch (const RuntimeError&) {
                m_ui.messageBox(kNumberTooLargeMessage, kNoDigitTitle, MessageIcon::critical);
                throw EndRunEarly{};
            }
            s.seriesBase = pattern.seriesBase;

            stage = kStageLoadMember;
            const SeriesLoopResult loop = loadSeriesLoop(
                pattern, [this](int k, const std::string& f) { loadSeriesMember(k, f); },
                s.imageCount, s.currentFileName);
            if (loop.end == SeriesEnd::invalidPicture) {
                // What was loaded stays in its hidden windows; nothing is arranged.
                m_ui.messageBox(kInvalidPictureMessage, kInvalidPictureTitle,
                                MessageIcon::critical);
                throw SkipToClose{};
            }
            if (loop.end == SeriesEnd::limit) {
                m_ui.messageBox(tooManyPicturesMessage(), kTooManyPicturesTitle,
                                MessageIcon::critical);
            }
            if (s.imageCount == 0) {
                // The first file went between the test and the load.
                m_ui.messageBox(kFileMissingMessage, kFileMissingTitle, MessageIcon::exclamation);
                throw EndRunEarly{};
            }

            stage = kStageArrange;
            const QImage& first = pictureWindow(1)->PictureFile->picture();
            s.imageWidth = static_cast<float>(first.width());
            s.imageHeight = static_cast<float>(first.height());
            FormMontagePicture* montage = montageWindow();
            if (montage->isMinimized() || montage->isMaximized()) {
                montage->showNormal();
            }
            const double tpp = s.twipsPerPixel;
            const double montageWidth = (2.0 * s.sizingFrameHeight + s.imageWidth) * tpp;
            const double montageHeight =
                (s.captionHeight + s.imageHeight + 2.0 * s.dialogFrameHeight) * tpp;
            moveWindowTwips(
                montage, s, screenWidthTwips(s) - montageWidth - s.sizingFrameHeight * tpp,
                (CommandGo->y() + CommandGo->height() + s.captionHeight + s.menuHeight) * tpp,
                montageWidth, montageHeight);
            montage->PictureFile->setGeometry(0, 0, static_cast<int>(s.imageWidth),
                                              static_cast<int>(s.imageHeight));

            FormUsed* used = usedWindow();
            if (s.showUsedWindow != 0) {
                used->show();
                if (used->isMinimized()) {
                    used->showNormal();
                }
                used->raise();
            } else {
                used->hide();
            }
            // Room for one digit per block.
            const QFontMetrics digit(used->font());
            moveWindowTwips(used, s, 0,
                            (s.captionHeight + s.menuHeight + textFileName->height()) * tpp,
                            ((s.imageWidth / s.increment + 1) * digit.horizontalAdvance("3") +
                             4.0 * s.sizingFrameHeight) *
                                tpp,
                            ((s.imageHeight / s.increment + 1) * digit.height() + s.menuHeight +
                             2.0 * s.dialogFrameHeight) *
                                tpp);
            used->LabelUsed->setGeometry(s.sizingFrameHeight, s.dialogFrameHeight, used->width(),
                                         used->height());
            used->LabelUsed->clear();
            placePictureWindows();
            montage->raise();
        }

        stage = kStageOffsets;
        const OffsetStep offsets = applyOffsetStep();

        stage = kStageNoOffsets;
        yieldEvents();

        if (s.montageFromProject != kFalse) {
            // A project placed the montage: keep it, and skip the block loop.
            s.montageFromProject = kFalse;
        } else {
            stage = kStageBuffers;
            startProgressPreview();

            stage = kStageBlockLoop;
            runBlockLoop(
                s, offsets.rowShift, [this](int16_t y0) { progressPreviewRow(y0); },
                [this](const RuntimeError& error, int measureStage) {
                    showGeneralMessage(error.number(), error.description(), measureStage,
                                       "gotFocusMeasure");
                });

            stage = kStageLoopEnd;
            FormMontagePicture* montage = montageWindow();
            montage->PictureFile->setPicture(paintMontage(s.buffers, static_cast<int>(s.imageWidth),
                                                          static_cast<int>(s.imageHeight)));
            montage->show();
            montage->raise();
        }

        stage = kStageReport;
        FormUsed* used = usedWindow();
        used->resize(used->width(),
                     std::max(1, s.menuHeight + used->LabelUsed->sizeHint().height()));
        m_settings.writeKey("filename", trimmed(textOf(textFileName)));
        updateWindowMenu();
        ReportInputs report;
        report.firstFileName = s.firstFileName;
        report.imageCount = s.imageCount;
        report.ignored = s.ignoredImage;
        for (int i = 0; i < kMethodCount; ++i) {
            report.methodChecked[static_cast<size_t>(i)] =
                m.mnusimpleCol[static_cast<size_t>(i)]->isChecked();
        }
        report.incrementText = textOf(TextIncrement);
        report.autoSmooth = s.autoSmooth;
        report.addOffsets = m.mnuAddOffsets->isChecked();
        report.offsetsMin = m.mnuActivateOffsetsMin->isChecked();
        report.offsetsMax = m.mnuActivateOffsetsMax->isChecked();
        report.offsetsSame = m.mnuActivateOffsetsSame->isChecked();
        report.imageOffsets = s.imageOffsets;
        report.usedCaption = used->LabelUsed->text().toStdString();
        s.propertiesString = setPropertiesString(report);
        if (s.autoSmooth == 1) {
            smoothMontage(s.buffers, 999, kFalse);
        }
    } catch (const EndRunEarly&) {
        restoreCursor();
        return;
    } catch (const SkipToClose&) {
    } catch (const RuntimeError& error) {
        showGeneralMessage(error.number(), error.description(), stage, "CommandGo");
    } catch (const std::bad_alloc&) {
        showGeneralMessage(kOutOfMemory, errorDescription(kOutOfMemory), stage, "CommandGo");
    }

    // The closing steps: every way out but the early ones comes through here.
    textFileName->setText(QString::fromStdString(s.firstFileName));
    restoreCursor();
    montageWindow()->PictureFile->update();
    addRecentFile(trimmed(textOf(textFileName)));
    update();
}

}  // namespace lumiquilt
