// Create Image in the window program: the click, and the windows and controls that
// the one road asks for.
#include <QApplication>
#include <QFontMetrics>
#include <cmath>
#include <memory>

#include "engine/command_go.h"

#include "core/form_montage.h"
#include "core/text.h"
#include "display/wait_cursor.h"
#include "display/window_geometry.h"
#include "engine/create_image.h"
#include "engine/form_preview.h"
#include "series/picture_io.h"
#include "series/series_decode.h"

namespace lumiquilt {

namespace {

std::string textOf(const QLineEdit* field) {
    return field->text().toStdString();
}

}  // namespace

/// The window program's side of a run: the controls are the master copy of the
/// choices, the picture windows hold the series.
class CreateImageWindows : public CreateImageFront {
  public:
    explicit CreateImageWindows(FormMontage& form) : f(form), s(form.state()) {}
    CreateImageWindows(const CreateImageWindows&) = delete;
    CreateImageWindows& operator=(const CreateImageWindows&) = delete;

    RunChoices choices() override {
        RunChoices c;
        c.incrementText = textOf(f.TextIncrement);
        for (int i = 0; i < kMethodCount; ++i) {
            c.methodChecked[static_cast<size_t>(i)] =
                f.m.mnusimpleCol[static_cast<size_t>(i)]->isChecked();
        }
        for (int i = 0; i < kIgnorableImages; ++i) {
            c.ignored[static_cast<size_t>(i)] =
                f.m.mnuignoreImage[static_cast<size_t>(i)]->isChecked();
        }
        c.addOffsets = f.m.mnuAddOffsets->isChecked();
        c.offsetsMin = f.m.mnuActivateOffsetsMin->isChecked();
        c.offsetsMax = f.m.mnuActivateOffsetsMax->isChecked();
        c.offsetsSame = f.m.mnuActivateOffsetsSame->isChecked();
        return c;
    }
    void setIncrementText(const std::string& text) override {
        f.TextIncrement->setText(QString::fromStdString(text));
    }
    std::string fileNameText() override { return textOf(f.textFileName); }
    void setFileNameText(const std::string& text) override {
        f.textFileName->setText(QString::fromStdString(text));
    }
    void message(const std::string& text, const std::string& title, MessageIcon icon) override {
        f.ui().messageBox(text, title, icon);
    }

    // The window keeps its reader from run to run: a run that loads the same series
    // again gives it back its frames, and it reads again only the files that changed.
    void seriesLetGo(SampleBuffer&& pixels) override {
        if (m_reader) {
            m_reader->takeBackFrames(std::move(pixels));
        }
    }
    // Both cores read the series ahead; each window shows its member's frame in the
    // series buffer, not a picture of its own.
    void seriesFound(const SeriesPattern& pattern) override {
        // A series edited since is read anew, on both cores.
        if (m_reader && m_reader->servesUnchanged(pattern)) {
            return;
        }
        m_reader.reset();
        m_reader = std::make_unique<SeriesReader>(pattern, SeriesReader::ReadInto::framesAndViews,
                                                  2, f.seriesWindowSize());
    }
    void loadMember(int k, const std::string& fileName) override {
        if (!m_reader) {
            f.loadSeriesMember(k, fileName);
            return;
        }
        m_reader->load(k, fileName);
        f.loadSeriesMember(k, fileName, *m_reader);
    }
    PictureView memberPicture(int k) override { return f.pictureWindow(k)->PictureFile->view(); }
    SeriesFrames* seriesFrames() override { return m_reader ? m_reader->frames() : nullptr; }

    void setBusy(bool busy) override { m_cursor.set(busy); }
    void clearMontagePicture() override { f.montageWindow()->PictureFile->clearPicture(); }
    void hideLastRun(const std::string& firstFileName) override {
        f.montageWindow()->setWindowTitle(
            QString::fromStdString("Montage in focus image from " + firstFileName));
        f.hideSeriesWindows();
        f.unloadMethodWindows();
        f.montageWindow()->hide();
        if (f.hasPreviewWindow()) {
            f.previewWindow()->unload();
        }
    }
    void forgetMissingFile(const std::string& name) override {
        f.recentFiles().forget(name, f.settings());
        f.refreshRecentMenu();
    }
    void arrangeWindows() override;
    MarkCentre markCentre(int k) override { return f.offsets().markCentre(k); }
    void montageResized() override;
    void hideMontage() override { f.montageWindow()->hide(); }
    void clearUsedCaption() override { f.usedWindow()->LabelUsed->clear(); }
    void yieldEvents() override { f.yieldEvents(); }
    PictureView montagePicture() override {
        return viewOf(f.montageWindow()->PictureFile->picture());
    }
    void startPreview() override {
        f.previewWindow()->startProgress(s, [this] { f.yieldEvents(); });
    }
    // The only yield of the block loop: once for each preview row drawn.
    void previewRow(int16_t y0) override {
        if (f.previewWindow()->progressRow(s, y0)) {
            f.yieldEvents();
        }
    }
    void showMontage() override {
        FormMontagePicture* montage = f.montageWindow();
        const int width = static_cast<int>(s.imageWidth);
        const int height = static_cast<int>(s.imageHeight);
        // A minimum area can leave an empty montage: the window then shows none.
        if (width > 0 && height > 0) {
            // The window shows slot 100 itself until a command asks for the picture:
            // a photograph's montage is tens of megabytes to copy and then reduce.
            const PixelBuffers& b = s.buffers;
            montage->PictureFile->setFramedPicture(
                {frameAsPicture(b.montageSlot(PixelBuffers::kFirstMontageSlot), b.montageMaxX + 1,
                                b.montageMaxY + 1, width, height),
                 s.buffers.montagePixels.hold()},
                QImage(), bgrPictureOf);
        } else {
            montage->PictureFile->clearPicture();
        }
        FormPreview* preview = f.previewWindow();
        preview->paintPreview(s.buffers);
        montage->show();
        montage->raise();
        preview->raise();
    }
    std::string usedCaption() override { return f.usedWindow()->LabelUsed->text().toStdString(); }
    void runReported(const std::string& completedName) override {
        FormUsed* used = f.usedWindow();
        used->resize(used->width(),
                     std::max(1, s.menuHeight + used->LabelUsed->sizeHint().height()));
        f.settings().writeKey("filename", completedName);
        f.updateWindowMenu();
    }
    void runClosed(const std::string& fileName) override {
        f.montageWindow()->PictureFile->update();
        f.addRecentFile(fileName);
        f.update();
    }

  private:
    FormMontage& f;
    ProgramState& s;
    WaitCursor m_cursor;
    std::unique_ptr<SeriesReader>& m_reader = f.m_seriesReader;
};

namespace {

// The montage as the window shows it: reduced when it is larger than the screen.
struct ShownMontage {
    double scale;
    double width;
    double height;
};

ShownMontage shownMontage(const ProgramState& s) {
    const double scale = screenDisplayScale(s, s.imageWidth, s.imageHeight);
    return {scale, s.imageWidth * scale, s.imageHeight * scale};
}

void fitMontagePicture(FormMontagePicture* montage, const ShownMontage& shown) {
    montage->PictureFile->setDisplayScale(shown.scale);
    montage->PictureFile->setGeometry(0, 0, static_cast<int>(std::lround(shown.width)),
                                      static_cast<int>(std::lround(shown.height)));
}

}  // namespace

void CreateImageWindows::arrangeWindows() {
    FormMontagePicture* montage = f.montageWindow();
    if (montage->isMinimized() || montage->isMaximized()) {
        montage->showNormal();
    }
    const double tpp = s.twipsPerPixel;
    const ShownMontage shown = shownMontage(s);
    const double montageWidth = (2.0 * s.sizingFrameHeight + shown.width) * tpp;
    const double montageHeight = (s.captionHeight + shown.height + 2.0 * s.dialogFrameHeight) * tpp;
    moveWindowTwips(
        montage, s, screenWidthTwips(s) - montageWidth - s.sizingFrameHeight * tpp,
        (f.CommandGo->y() + f.CommandGo->height() + s.captionHeight + s.menuHeight) * tpp,
        montageWidth, montageHeight);
    fitMontagePicture(montage, shown);

    FormUsed* used = f.usedWindow();
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
    moveWindowTwips(used, s, 0, (s.captionHeight + s.menuHeight + f.textFileName->height()) * tpp,
                    ((s.imageWidth / s.increment + 1) * digit.horizontalAdvance("3") +
                     4.0 * s.sizingFrameHeight) *
                        tpp,
                    ((s.imageHeight / s.increment + 1) * digit.height() + s.menuHeight +
                     2.0 * s.dialogFrameHeight) *
                        tpp);
    used->LabelUsed->setGeometry(s.sizingFrameHeight, s.dialogFrameHeight, used->width(),
                                 used->height());
    used->LabelUsed->clear();
    f.placePictureWindows();
    montage->raise();
}

std::unique_ptr<CreateImageFront> createImageWindows(FormMontage& form) {
    return std::make_unique<CreateImageWindows>(form);
}

void CreateImageWindows::montageResized() {
    // Not quite the arrangement's place: the left edge leaves out the frames.
    const double tpp = s.twipsPerPixel;
    const ShownMontage shown = shownMontage(s);
    moveWindowTwips(
        f.montageWindow(), s, (screenWidthTwips(s) / tpp - shown.width - s.sizingFrameHeight) * tpp,
        (f.CommandGo->y() + f.CommandGo->height() + s.captionHeight + s.menuHeight) * tpp,
        (2.0 * s.sizingFrameHeight + shown.width) * tpp,
        (s.captionHeight + shown.height + 2.0 * s.dialogFrameHeight) * tpp);
    fitMontagePicture(f.montageWindow(), shown);
}

void FormMontage::CommandGo_Click() {
    if (m_runInProgress) {
        return;
    }
    const RunGuard guard(*this);
    CreateImageWindows front(*this);
    try {
        createImage(m_state, front);
    } catch (const ProcessEnding&) {
    }
}

}  // namespace lumiquilt
