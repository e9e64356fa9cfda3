// Load Image Files, the file dialog that leads to it, and the recent-file list.
#include <QApplication>

#include "core/files.h"
#include "core/form_montage.h"
#include "core/numbers.h"
#include "core/runtime_error.h"
#include "core/text.h"
#include "display/window_geometry.h"
#include "persistence/preferences.h"
#include "persistence/project_commands.h"
#include "persistence/project_file.h"
#include "series/picture_io.h"
#include "series/series_decode.h"
#include "series/series_name.h"

namespace lumiquilt {

namespace {

std::string textOf(const QLineEdit* field) {
    return field->text().toStdString();
}

}  // namespace

void FormMontage::loadSeriesMember(int k, const std::string& fileName) {
    QImage picture = loadPicture(fileName);
    PictureBox* box = pictureWindow(k)->PictureFile;
    box->setDisplayScale(screenDisplayScale(m_state, picture.width(), picture.height()));
    box->setPicture(std::move(picture));
    seriesMemberLoaded(k, fileName);
}

void FormMontage::loadSeriesMember(int k, const std::string& fileName, SeriesReader& reader) {
    PictureBox* box = pictureWindow(k)->PictureFile;
    FramedPicture framed = reader.framed(k);
    if (framed.view.bits != nullptr) {
        box->setDisplayScale(screenDisplayScale(m_state, framed.view.width, framed.view.height));
        box->setFramedPicture(std::move(framed), reader.shown(k));
    } else {
        QImage picture = reader.picture(k);
        box->setDisplayScale(screenDisplayScale(m_state, picture.width(), picture.height()));
        box->setPicture(std::move(picture), reader.shown(k));
    }
    seriesMemberLoaded(k, fileName);
}

void FormMontage::seriesMemberLoaded(int k, const std::string& fileName) {
    FormPicture* window = pictureWindow(k);
    window->setWindowTitle(QString::fromStdString(
        "Image" + numberToText(static_cast<long long>(k)) + " -- " + fileName));
    if (window->isMinimized() || window->isMaximized()) {
        window->showNormal();
    }
    yieldEvents();
}

std::function<QSize(QSize)> FormMontage::seriesWindowSize() const {
    const PictureRoom room = screenPictureRoom(m_state);
    return [room](QSize picture) {
        return PictureBox::shownSizeAt(picture,
                                       displayScale(picture.width(), picture.height(), room));
    };
}

void FormMontage::placePictureWindows() {
    const ProgramState& s = m_state;
    // Image 1's size, as the series shows it.
    const double scale = screenDisplayScale(s, s.imageWidth, s.imageHeight);
    const double width = s.imageWidth * scale;
    const double height = s.imageHeight * scale;
    for (int k = 1; k <= s.imageCount; ++k) {
        FormPicture* window = pictureWindow(k);
        const double top =
            textFileName->y() + textFileName->height() + s.captionHeight + s.menuHeight + 20.0 * k;
        moveWindowTwips(window, s, (k - 1) * 20.0 * s.twipsPerPixel, top * s.twipsPerPixel,
                        (2.0 * s.sizingFrameHeight + width) * s.twipsPerPixel,
                        (s.captionHeight + height + 2.0 * s.dialogFrameHeight) * s.twipsPerPixel);
        window->PictureFile->raise();
        window->show();
        if (k <= kIgnorableImages) {
            m.mnuignoreImage[static_cast<size_t>(k - 1)]->setVisible(true);
        }
    }
}

void FormMontage::hideSeriesWindows() {
    for (int k = 1; k < kImageSlots; ++k) {
        if (hasPictureWindow(k)) {
            pictureWindow(k)->hide();
        }
        if (k <= kIgnorableImages) {
            m.mnuignoreImage[static_cast<size_t>(k - 1)]->setVisible(false);
        }
    }
}

void FormMontage::unloadMethodWindows() {
    for (int i = 0; i < 8; ++i) {
        if (m_methodUsedWindows[static_cast<size_t>(i)] != nullptr) {
            m_methodUsedWindows[static_cast<size_t>(i)]->unload();
        }
        if (m_methodWindows[static_cast<size_t>(i)] != nullptr) {
            m_methodWindows[static_cast<size_t>(i)]->unload();
        }
    }
}

void FormMontage::mnuLoad_Click() {
    if (m_runInProgress) {
        return;
    }
    ProgramState& s = m_state;
    const RunGuard guard(*this);
    QApplication::setOverrideCursor(Qt::WaitCursor);
    int stage = 0;
    try {
        s.imageCount = 0;
        montageWindow()->hide();

        stage = 200;  // failures here are passed over
        try {
            usedWindow()->hide();
            hideSeriesWindows();
            unloadMethodWindows();
        } catch (const RuntimeError&) {
        }

        stage = 400;
        if (hasPreviewWindow()) {
            previewWindow()->unload();
        }
        const std::string name = completeSeriesName(textOf(textFileName), s.appPath);
        textFileName->setText(QString::fromStdString(name));

        bool go = true;
        if (!hasDigitBeforeDot(name)) {
            m_ui.messageBox(noDigitMessageLoad(), kNoDigitTitle, MessageIcon::critical);
            go = false;
        } else if (!fileExists(name)) {
            // The automatic load at start-up says nothing about a missing file.
            if (s.firstLoadAfterStart == kFalse) {
                m_ui.messageBox(kFileMissingMessage, kFileMissingTitle, MessageIcon::exclamation);
                m_recent.forget(name, m_settings);
                refreshRecentMenu();
            }
            go = false;
        }

        stage = 500;
        SeriesPattern pattern;
        if (go) {
            try {
                pattern = findDigits(name);
                s.seriesBase = pattern.seriesBase;
            } catch (const RuntimeError&) {
                m_ui.messageBox(kNumberTooLargeMessage, kNoDigitTitle, MessageIcon::critical);
                go = false;
            }
        }

        if (go) {
            stage = 510;
            // The windows take other pictures: Create Image's reader would keep the old.
            m_seriesReader.reset();
            // Both cores decode ahead while the windows take the pictures in turn.
            SeriesReader reader(pattern, SeriesReader::ReadInto::pictures, 2, seriesWindowSize());
            const SeriesLoopResult loop = loadSeriesLoop(
                pattern,
                [this, &reader](int k, const std::string& f) {
                    reader.load(k, f);
                    loadSeriesMember(k, f, reader);
                },
                s.imageCount, s.currentFileName);
            if (loop.end == SeriesEnd::limit) {
                // The windows of this load stay hidden and unplaced.
                m_ui.messageBox(tooManyPicturesMessage(), kTooManyPicturesTitle,
                                MessageIcon::critical);
                go = false;
            }
        }

        if (go) {
            stage = 800;
            if (s.imageCount >= 1) {
                const QSize first = pictureWindow(1)->PictureFile->pictureSize();
                s.imageWidth = static_cast<float>(first.width());
                s.imageHeight = static_cast<float>(first.height());
            }
            placePictureWindows();
            if (m.mnuAddOffsets->isChecked()) {
                m.mnuAddOffsets->trigger();
            }
            setTargetColor(readTargetColor(m_settings));
            stage = 900;
            updateWindowMenu();
        }
    } catch (const RuntimeError& error) {
        showGeneralMessage(error.number(), error.description(), stage, "mnuLoad");
    } catch (const ProcessEnding&) {
    }
    QApplication::restoreOverrideCursor();
    s.firstLoadAfterStart = kFalse;
}

void FormMontage::CommandBrowse_Click() {
    if (m_runInProgress) {
        return;
    }
    FileDialogRequest request;
    request.filter = "Picture files  (*.bmp;*.jpg;*.gif)|*.bmp;*.jpg;*.gif|All files  (*.*)|*.*|";
    request.fileName = textOf(textFileName);
    request.initialFolder = textOf(textFileName);
    const std::optional<std::string> chosen = m_ui.openFileName(request);
    if (!chosen) {
        return;  // Cancel changes nothing
    }
    textFileName->setText(QString::fromStdString(*chosen));
    mnuLoad_Click();
}

void FormMontage::mnuRecentFile_Click(int index) {
    if (m_runInProgress) {
        return;
    }
    const std::string item = m_recent.at(index);
    textFileName->setText(QString::fromStdString(item));
    if (isRecentProjectItem(item)) {
        ProjectCommands::of(*this).mnuOpenProject_Click();
        return;
    }
    if (!isAbsoluteName(item)) {
        textFileName->setText(QString::fromStdString(m_state.appPath + item));
    }
    mnuLoad_Click();
    // A file that has vanished was just taken off the list; it is not put back.
    if (fileExists(textOf(textFileName))) {
        addRecentFile(textOf(textFileName));
    }
}

}  // namespace lumiquilt
