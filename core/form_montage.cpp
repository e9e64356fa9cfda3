#include "core/form_montage.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QMenuBar>
#include <QPainter>
#include <QScreen>
#include <QStyle>
#include <QTimer>
#include <cmath>

#include "core/numbers.h"
#include "core/runtime_error.h"
#include "display/form_about.h"
#include "display/window_geometry.h"
#include "engine/form_preview.h"
#include "engine/measures.h"
#include "engine/montage_run.h"
#include "evaluation/evaluation_commands.h"
#include "persistence/form_preferences.h"
#include "persistence/project_commands.h"
#include "series/series_decode.h"

namespace lumiquilt {

namespace {

// Where an entry of the menu table is kept.
using EntrySlot = QAction*& (*)(MenuEntries&);

struct MenuRow {
    const char* caption;
    EntrySlot slot;  // null for a separator
    const char* key = "";
    bool visible = true;
    bool checkable = false;
};

struct TopMenu {
    const char* caption;
    QMenu* MenuEntries::*menu;
    std::vector<MenuRow> rows;
};

#define ENTRY(name) [](MenuEntries& e) -> QAction*& { return e.name; }

std::vector<TopMenu> menuTable() {
    std::vector<MenuRow> file = {
        {"Browse for Image File", ENTRY(mnuOpen), "Ctrl+O"},
        {"Load Image Files", ENTRY(mnuLoad)},
        {"Load a Project", ENTRY(mnuOpenProject)},
        {"Save a Project", ENTRY(mnuSave)},
        {"Make the Montage", ENTRY(mnuMakeMontage)},
        {"-", nullptr},
        {"Save Montage As", ENTRY(mnuJPG)},
        {"Copy Montage to Clipboard", ENTRY(mnucopy)},
        {"Open Montage in Editor", ENTRY(mnuEditor)},
        {"Print Montage", ENTRY(mnuPrint100)},
        {"Print Montage Fit to Page", ENTRY(mnuPrint), "Ctrl+P"},
        {"Print Montage Fit to Half Page", ENTRY(mnuPrintHalf)},
        {"Select Printer", ENTRY(mnuSelect), "", false},
        {"-", nullptr},
        {"Preferences", ENTRY(mnuPreferences)},
        {"-", nullptr},
    };
    const EntrySlot recent[] = {
        ENTRY(mnuRecentFile[0]), ENTRY(mnuRecentFile[1]),  ENTRY(mnuRecentFile[2]),
        ENTRY(mnuRecentFile[3]), ENTRY(mnuRecentFile[4]),  ENTRY(mnuRecentFile[5]),
        ENTRY(mnuRecentFile[6]), ENTRY(mnuRecentFile[7]),  ENTRY(mnuRecentFile[8]),
        ENTRY(mnuRecentFile[9]), ENTRY(mnuRecentFile[10]), ENTRY(mnuRecentFile[11])};
    for (EntrySlot slot : recent) {
        file.push_back({"", slot, "", false});
    }
    file.push_back({"-", nullptr});
    file.push_back({"Exit", ENTRY(mnuExit)});

    const EntrySlot methods[] = {ENTRY(mnusimpleCol[0]), ENTRY(mnusimpleCol[1]),
                                 ENTRY(mnusimpleCol[2]), ENTRY(mnusimpleCol[3]),
                                 ENTRY(mnusimpleCol[4]), ENTRY(mnusimpleCol[5]),
                                 ENTRY(mnusimpleCol[6])};
    std::vector<MenuRow> montage;
    for (size_t i = 0; i < std::size(methods); ++i) {
        montage.push_back({kMethodCaptions[i].data(), methods[i], "", true, true});
    }
    montage.insert(montage.end(), {
                                      {"-", nullptr},
                                      {"Compare All Exposure Methods", ENTRY(mnuAllMethods)},
                                      {"Evaluate Increments", ENTRY(mnuEvaluate), "", false},
                                      {"Evaluate Increments and all Exposure Methods",
                                       ENTRY(mnuEvaluateAll), "", false},
                                      {"-", nullptr},
                                      {"Smooth Montage Image", ENTRY(mnuSmooth), "", false},
                                  });

    static const char* const kIgnoreCaptions[] = {
        "Ignore Image 1", "Ignore Image 2", "Ignore Image 3", "Ignore Image 4", "Ignore Image 5",
        "Ignore Image 6", "Ignore Image 7", "Ignore Image 8", "Ignore Image 9", "Ignore Image 10"};
    const EntrySlot ignores[] = {ENTRY(mnuignoreImage[0]), ENTRY(mnuignoreImage[1]),
                                 ENTRY(mnuignoreImage[2]), ENTRY(mnuignoreImage[3]),
                                 ENTRY(mnuignoreImage[4]), ENTRY(mnuignoreImage[5]),
                                 ENTRY(mnuignoreImage[6]), ENTRY(mnuignoreImage[7]),
                                 ENTRY(mnuignoreImage[8]), ENTRY(mnuignoreImage[9])};
    std::vector<MenuRow> ignore;
    for (size_t i = 0; i < std::size(ignores); ++i) {
        ignore.push_back({kIgnoreCaptions[i], ignores[i], "", false, true});
    }
    ignore.push_back({"-", nullptr});

    std::vector<MenuRow> offsets = {
        {"Use Image Offsets", ENTRY(mnuAddOffsets), "", true, true},
        {"Activate Image Offsets - display minimum area", ENTRY(mnuActivateOffsetsMin), "", true,
         true},
        {"Activate Image Offsets - display maximum area", ENTRY(mnuActivateOffsetsMax), "", true,
         true},
        {"Activate Image Offsets - display same area", ENTRY(mnuActivateOffsetsSame), "", true,
         true},
    };

    const EntrySlot windows[] = {ENTRY(mnuWindow[1]),  ENTRY(mnuWindow[2]),  ENTRY(mnuWindow[3]),
                                 ENTRY(mnuWindow[4]),  ENTRY(mnuWindow[5]),  ENTRY(mnuWindow[6]),
                                 ENTRY(mnuWindow[7]),  ENTRY(mnuWindow[8]),  ENTRY(mnuWindow[9]),
                                 ENTRY(mnuWindow[10]), ENTRY(mnuWindow[11]), ENTRY(mnuWindow[12])};
    const EntrySlot windows2[] = {ENTRY(mnuWindow2[0]), ENTRY(mnuWindow2[1]), ENTRY(mnuWindow2[2]),
                                  ENTRY(mnuWindow2[3]), ENTRY(mnuWindow2[4]), ENTRY(mnuWindow2[5]),
                                  ENTRY(mnuWindow2[6]), ENTRY(mnuWindow2[7]), ENTRY(mnuWindow2[8]),
                                  ENTRY(mnuWindow2[9])};
    std::vector<MenuRow> window;
    for (EntrySlot slot : windows) {
        window.push_back({"Window", slot, "", false});
    }
    window.push_back({"-", nullptr});
    for (EntrySlot slot : windows2) {
        window.push_back({"Window", slot, "", false});
    }

    std::vector<MenuRow> help = {
        {"Help", ENTRY(mnuHelp), "F1"},
        {"-", nullptr},
        {"Contact Tarnhollow Software", ENTRY(mnuContact)},
        {"About", ENTRY(mnuAbout)},
    };

    return {
        {" File ", &MenuEntries::mnuFile, file},
        {"Exposure Method ", &MenuEntries::mnuMontage, montage},
        {" Ignore Image ", &MenuEntries::mnuignore, ignore},
        {" Set Image Offsets ", &MenuEntries::mnuOffset, offsets},
        {" Window ", &MenuEntries::mnuWindowMenu, window},
        {" Help ", &MenuEntries::mnuHelpMenu, help},
    };
}

#undef ENTRY

// A 120 by 100 tile of soft grey patches with faint stitching.
QImage backgroundTile() {
    QImage tile(120, 100, QImage::Format_RGB888);
    tile.fill(QColor(0xE0, 0xE0, 0xE0));
    QPainter p(&tile);
    const QColor patches[] = {QColor(0xE4, 0xE2, 0xDE), QColor(0xDC, 0xDE, 0xE2),
                              QColor(0xE2, 0xE0, 0xDA), QColor(0xDE, 0xE2, 0xE0)};
    for (int row = 0; row < 2; ++row) {
        for (int col = 0; col < 2; ++col) {
            p.fillRect(col * 60, row * 50, 60, 50, patches[row * 2 + col]);
        }
    }
    QPen stitch(QColor(0xCC, 0xCC, 0xCC), 1, Qt::DashLine);
    p.setPen(stitch);
    p.drawLine(60, 0, 60, 99);
    p.drawLine(0, 50, 119, 50);
    p.drawRect(3, 3, 113, 93);
    return tile;
}

}  // namespace

FormMontage::FormMontage(ProgramState& state, ModalUi& ui, Settings& settings)
    : m_state(state),
      m_ui(ui),
      m_settings(settings),
      m_output(new OutputCommands(*this)),
      m_offsets(new OffsetCommands(*this)) {
    setWindowTitle("Lumiquilt  -  from Tarnhollow Software");
    buildControls();
    buildMenus();
    connectMenus();
    endProcess = [] { QCoreApplication::exit(0); };
}

FormMontage::~FormMontage() = default;

void FormMontage::buildControls() {
    background = new QWidget(this);
    setCentralWidget(background);
    QPalette p = background->palette();
    p.setColor(QPalette::Window, QColor(0xE0, 0xE0, 0xE0));
    background->setPalette(p);
    background->setAutoFillBackground(true);

    textFileName = new QLineEdit(background);
    textFileName->setText(kDesignFileName);
    textFileName->setToolTip(
        "Type in the path and name of the first file here, or use the Browse icon to the right");
    textFileName->setStyleSheet("QLineEdit { background-color: #FFFFC0; }");

    CommandBrowse = new QPushButton(background);
    CommandBrowse->setIcon(style()->standardIcon(QStyle::SP_DirOpenIcon));
    CommandBrowse->setToolTip(
        "Browse to find the name of the first file here, or type in the path and name to the left");
    CommandBrowse->setStyleSheet("QPushButton { background-color: #C0C0C0; }");

    Label1 = new QLabel("Increment", background);

    TextIncrement = new QLineEdit(background);
    TextIncrement->setToolTip(
        "Enter how large a chunk you want the software to examine to determine which picture has "
        "the best focus, usually an increment of about 20 works best");
    TextIncrement->installEventFilter(this);

    CommandGo = new QPushButton("Create Image", background);
    CommandGo->setToolTip(
        "Press here to make a correct exposure image with the method you have chosen");
    CommandGo->setStyleSheet("QPushButton { background-color: #808080; color: white; }");

    m_designPlaces = {
        {textFileName, QRect(120, 0, 7335, 375)}, {CommandBrowse, QRect(7440, 0, 375, 375)},
        {Label1, QRect(8280, 60, 1020, 240)},     {TextIncrement, QRect(9480, 15, 615, 360)},
        {CommandGo, QRect(11400, 0, 1815, 375)},
    };
    scaleWindow(1.0, 1.0);

    connect(textFileName, &QLineEdit::textChanged, this, [this] {
        // A new name is a new series: its images are no longer left out.
        for (QAction* entry : m.mnuignoreImage) {
            entry->setChecked(false);
        }
    });
    connect(CommandGo, &QPushButton::clicked, this, &FormMontage::CommandGo_Click);
    connect(CommandBrowse, &QPushButton::clicked, this, &FormMontage::CommandBrowse_Click);
}

void FormMontage::scaleWindow(double scaleX, double scaleY) {
    const double tpp = std::max<int>(1, m_state.twipsPerPixel);
    QFont font = QApplication::font();
    if (font.pointSizeF() > 0) {
        font.setPointSizeF(std::max(6.0, font.pointSizeF() * std::min(scaleX, 1.5)));
    }
    int rightEdge = 0;
    for (const DesignPlace& place : m_designPlaces) {
        place.control->setFont(font);
        const QRect& t = place.twips;
        const int left = static_cast<int>(std::lround(t.x() * scaleX / tpp));
        const int top = static_cast<int>(std::lround(t.y() * scaleY / tpp));
        int width = static_cast<int>(std::lround(t.width() * scaleX / tpp));
        int height = static_cast<int>(std::lround(t.height() * scaleY / tpp));
        if (place.control == Label1) {
            // The caption keeps its design size, but never cut its own text.
            width = std::max(static_cast<int>(std::lround(t.width() / tpp)),
                             Label1->sizeHint().width());
            height = std::max(static_cast<int>(std::lround(t.height() / tpp)),
                              Label1->sizeHint().height());
        }
        place.control->setGeometry(left, top, width, height);
        rightEdge = std::max(rightEdge, left + width);
    }
    // The design's client area is 12810 by 8070 twips; the button row stands a little
    // wider than that, so the window grows to show it whole.
    const int clientWidth =
        std::max(static_cast<int>(std::lround(12810 * scaleX / tpp)), rightEdge + 8);
    const int clientHeight = static_cast<int>(std::lround(8070 * scaleY / tpp));
    resize(clientWidth, clientHeight + menuBar()->sizeHint().height());
}

void FormMontage::buildMenus() {
    QMenuBar* bar = menuBar();
    m.mnublank = bar->addAction("    ");
    m.mnublank->setEnabled(false);
    for (const TopMenu& top : menuTable()) {
        QMenu* menu = bar->addMenu(top.caption);
        m.*(top.menu) = menu;
        for (const MenuRow& row : top.rows) {
            if (row.slot == nullptr) {
                menu->addSeparator();
                continue;
            }
            QAction* action = menu->addAction(row.caption);
            if (*row.key != '\0') {
                action->setShortcut(QKeySequence(row.key));
            }
            action->setCheckable(row.checkable);
            action->setVisible(row.visible);
            row.slot(m) = action;
        }
    }
    m.mnuActivateOffsetsSame->setChecked(true);
}

void FormMontage::connectMenus() {
    connect(m.mnuOpen, &QAction::triggered, this, &FormMontage::CommandBrowse_Click);
    connect(m.mnuLoad, &QAction::triggered, this, &FormMontage::mnuLoad_Click);
    connect(m.mnuMakeMontage, &QAction::triggered, this, &FormMontage::CommandGo_Click);
    connect(m.mnuExit, &QAction::triggered, this, &FormMontage::mnuExit_Click);
    connect(m.mnuSmooth, &QAction::triggered, this, &FormMontage::mnuSmooth_Click);
    connect(m.mnuAllMethods, &QAction::triggered, this,
            [this] { EvaluationCommands(*this).mnuAllMethods_Click(); });
    connect(m.mnuEvaluate, &QAction::triggered, this,
            [this] { EvaluationCommands(*this).mnuEvaluate_Click(); });
    connect(m.mnuEvaluateAll, &QAction::triggered, this,
            [this] { EvaluationCommands(*this).mnuEvaluateAll_Click(); });
    OutputCommands* out = m_output.get();
    connect(m.mnuJPG, &QAction::triggered, this, [out] { out->mnuJPG_Click(); });
    connect(m.mnucopy, &QAction::triggered, this, [out] { out->mnucopy_Click(); });
    connect(m.mnuEditor, &QAction::triggered, this, [out] { out->mnuEditor_Click(); });
    connect(m.mnuPrint100, &QAction::triggered, this,
            [out] { out->mnuPrint_Click(OutputCommands::PrintSize::natural); });
    connect(m.mnuPrint, &QAction::triggered, this,
            [out] { out->mnuPrint_Click(OutputCommands::PrintSize::fitToPage); });
    connect(m.mnuPrintHalf, &QAction::triggered, this,
            [out] { out->mnuPrint_Click(OutputCommands::PrintSize::halfPage); });
    connect(m.mnuSelect, &QAction::triggered, this, [out] { out->mnuSelect_Click(); });
    connect(m.mnuSave, &QAction::triggered, this,
            [this] { ProjectCommands::of(*this).mnuSave_Click(); });
    connect(m.mnuOpenProject, &QAction::triggered, this,
            [this] { ProjectCommands::of(*this).mnuOpenProject_Click(); });
    connect(m.mnuPreferences, &QAction::triggered, this,
            [this] { PreferencesCommands::of(*this).mnuPreferences_Click(); });
    for (int i = 0; i < static_cast<int>(m.mnuRecentFile.size()); ++i) {
        connect(m.mnuRecentFile[static_cast<size_t>(i)], &QAction::triggered, this,
                [this, i] { mnuRecentFile_Click(i); });
    }
    for (int i = 0; i < kMethodCount; ++i) {
        connect(m.mnusimpleCol[static_cast<size_t>(i)], &QAction::triggered, this,
                [this, i] { mnusimpleCol_Click(i); });
    }
    // The ignore entries and the offset entries are checkable: a click turns their
    // check over, and that check is the choice the next Create Image reads.
    OffsetCommands* offsets = m_offsets.get();
    connect(m.mnuAddOffsets, &QAction::triggered, this,
            [offsets] { offsets->mnuAddOffsets_Click(); });
    for (QAction* entry :
         {m.mnuActivateOffsetsMin, m.mnuActivateOffsetsMax, m.mnuActivateOffsetsSame}) {
        connect(entry, &QAction::triggered, this,
                [offsets, entry] { offsets->mnuActivateOffsets_Click(entry); });
    }
    for (int i = 1; i <= 12; ++i) {
        connect(m.mnuWindow[static_cast<size_t>(i)], &QAction::triggered, this,
                [this, i] { mnuWindow_Click(i); });
    }
    for (int i = 0; i <= 9; ++i) {
        connect(m.mnuWindow2[static_cast<size_t>(i)], &QAction::triggered, this,
                [this, i] { mnuWindow2_Click(i); });
    }
    connect(m.mnuHelp, &QAction::triggered, this, &FormMontage::mnuHelp_Click);
    connect(m.mnuContact, &QAction::triggered, this, &FormMontage::mnuContact_Click);
    connect(m.mnuAbout, &QAction::triggered, this, [this] { showAbout(this, m_ui); });
}

void FormMontage::makeBackground() {
    const QImage tile = backgroundTile();
    const QScreen* screen = QGuiApplication::primaryScreen();
    const QSize size = screen != nullptr ? screen->geometry().size() : QSize(1024, 768);
    QPixmap pixmap(size);
    QPainter p(&pixmap);
    for (int y = 0; y < size.height(); y += tile.height()) {
        for (int x = 0; x < size.width(); x += tile.width()) {
            p.drawImage(x, y, tile);
        }
    }
    p.end();
    QPalette palette = background->palette();
    palette.setBrush(QPalette::Window, QBrush(pixmap));
    background->setPalette(palette);
}

FormPicture* FormMontage::pictureWindow(int k) {
    if (k < 1 || k >= kImageSlots) {
        throw RuntimeError(kSubscriptOutOfRange);
    }
    FormPicture*& window = m_pictureWindows[static_cast<size_t>(k)];
    if (window == nullptr) {
        window = new FormPicture(this);
        m_offsets->connectPictureWindow(window);
        connect(window, &PictureWindow::unloaded, this,
                [this](PictureWindow*, const QString& caption) { removeWindowEntry(caption); });
        m_output->connectPictureCommands(window);
        PreviewCommands::connectPictureCommands(*this, window);
    }
    return window;
}

FormMontagePicture* FormMontage::montageWindow() {
    if (m_montageWindow == nullptr) {
        m_montageWindow = new FormMontagePicture(this);
        connect(m_montageWindow, &PictureWindow::unloaded, this,
                [this](PictureWindow*, const QString& caption) { removeWindow2Entry(caption); });
        m_output->connectMontageCommands(m_montageWindow);
        ProjectCommands::of(*this).connectMontageWindow(m_montageWindow);
        PreviewCommands::connectMontageCommands(*this, m_montageWindow);
    }
    return m_montageWindow;
}

FormUsed* FormMontage::usedWindow() {
    if (m_usedWindow == nullptr) {
        m_usedWindow = new FormUsed(this);
    }
    return m_usedWindow;
}

FormMontagePicture* FormMontage::methodWindow(int i) {
    FormMontagePicture*& window = m_methodWindows.at(static_cast<size_t>(i));
    if (window == nullptr) {
        window = new FormMontagePicture(this);
        connect(window, &PictureWindow::unloaded, this,
                [this](PictureWindow*, const QString& caption) { removeWindow2Entry(caption); });
        m_output->connectMontageCommands(window);
        ProjectCommands::of(*this).connectMontageWindow(window);
        PreviewCommands::connectMontageCommands(*this, window);
    }
    return window;
}

FormUsed* FormMontage::methodUsedWindow(int i) {
    FormUsed*& window = m_methodUsedWindows.at(static_cast<size_t>(i));
    if (window == nullptr) {
        window = new FormUsed(this);
    }
    return window;
}

FormStatus* FormMontage::statusWindow() {
    if (m_statusWindow == nullptr) {
        m_statusWindow = new FormStatus(this);
    }
    return m_statusWindow;
}

FormPreview* FormMontage::previewWindow() {
    if (m_previewWindow == nullptr) {
        m_previewWindow = new FormPreview(this, m_state.twipsPerPixel);
        connect(m_previewWindow, &FormPreview::unloaded, this,
                [this] { removeWindow2Entry("Preview"); });
    }
    return m_previewWindow;
}

void FormMontage::mnusimpleCol_Click(int index) {
    for (QAction* entry : m.mnusimpleCol) {
        entry->setChecked(false);
    }
    m.mnusimpleCol[static_cast<size_t>(index)]->setChecked(true);
}

void FormMontage::updateWindowMenu() {
    int n = 0;
    for (int i = 1; i < kImageSlots; ++i) {
        if (hasPictureWindow(i) && m_pictureWindows[static_cast<size_t>(i)]->isVisible()) {
            ++n;
            if (n > 12) {
                break;
            }
            m.mnuWindow[static_cast<size_t>(n)]->setText(
                m_pictureWindows[static_cast<size_t>(i)]->Caption());
            m.mnuWindow[static_cast<size_t>(n)]->setVisible(true);
        }
    }
    for (int j = std::min(n, 12) + 1; j <= 12; ++j) {
        m.mnuWindow[static_cast<size_t>(j)]->setVisible(false);
    }
    if (m_montageWindow != nullptr && m_montageWindow->isVisible()) {
        m.mnuWindow2[0]->setText(m_montageWindow->Caption());
        m.mnuWindow2[0]->setVisible(true);
    } else {
        m.mnuWindow2[0]->setVisible(false);
    }
    int k = 0;
    for (int i = 0; i < static_cast<int>(m_methodWindows.size()); ++i) {
        const FormMontagePicture* w = m_methodWindows[static_cast<size_t>(i)];
        if (w != nullptr && w->isVisible()) {
            ++k;
            m.mnuWindow2[static_cast<size_t>(k)]->setText(w->Caption());
            m.mnuWindow2[static_cast<size_t>(k)]->setVisible(true);
        }
    }
    if (m_previewWindow != nullptr && m_previewWindow->isVisible()) {
        ++k;
        m.mnuWindow2[static_cast<size_t>(k)]->setText("Preview");
        m.mnuWindow2[static_cast<size_t>(k)]->setVisible(true);
    }
    for (int j = k + 1; j <= 8; ++j) {
        m.mnuWindow2[static_cast<size_t>(j)]->setVisible(false);
    }
}

void FormMontage::mnuWindow_Click(int index) {
    const QString caption = m.mnuWindow[static_cast<size_t>(index)]->text();
    for (int k = 1; k < kImageSlots; ++k) {
        if (hasPictureWindow(k) && m_pictureWindows[static_cast<size_t>(k)]->Caption() == caption) {
            m_pictureWindows[static_cast<size_t>(k)]->show();
            m_pictureWindows[static_cast<size_t>(k)]->raise();
            m_pictureWindows[static_cast<size_t>(k)]->activateWindow();
            return;
        }
    }
}

void FormMontage::mnuWindow2_Click(int index) {
    const QString caption = m.mnuWindow2[static_cast<size_t>(index)]->text();
    auto bringUp = [](QWidget* w) {
        w->show();
        w->raise();
        w->activateWindow();
    };
    if (m_montageWindow != nullptr && m_montageWindow->Caption() == caption) {
        bringUp(m_montageWindow);
        return;
    }
    for (FormMontagePicture* w : m_methodWindows) {
        if (w != nullptr && w->Caption() == caption) {
            bringUp(w);
            return;
        }
    }
    if (caption == "Preview" && m_previewWindow != nullptr) {
        bringUp(m_previewWindow);
    }
}

namespace {

// Takes the entry of a closed window out of entries[first..last]: the first entry
// with its caption takes the next one's caption, and so on up to the last shown.
void removeEntry(QAction* const* entries, int first, int last, const QString& caption) {
    int found = -1;
    for (int i = first; i <= last; ++i) {
        if (entries[i]->text() == caption) {
            found = i;
            break;
        }
    }
    if (found < 0) {
        return;
    }
    for (int j = found; j < last; ++j) {
        if (!entries[j + 1]->isVisible()) {
            entries[j]->setVisible(false);
            return;
        }
        entries[j]->setText(entries[j + 1]->text());
    }
    entries[last]->setVisible(false);
}

}  // namespace

void FormMontage::removeWindowEntry(const QString& caption) {
    removeEntry(m.mnuWindow.data(), 1, 12, caption);
}

void FormMontage::removeWindow2Entry(const QString& caption) {
    removeEntry(m.mnuWindow2.data(), 0, 8, caption);
}

void FormMontage::mnuHelp_Click() {
    m_ui.openWithDesktop(m_state.appPath + "lumiquilt.html");
}

void FormMontage::mnuContact_Click() {
    m_ui.openWithDesktop(kProductWebPage);
}

void FormMontage::mnuExit_Click() {
    close();
}

void FormMontage::mnuSmooth_Click() {
    smoothMontage(m_state.buffers, 999, kTrue);
}

void FormMontage::loadEvent() {
    makeBackground();
    if (m_settings.readNumber("Load images") != 0) {
        mnuLoad_Click();
    }
}

void FormMontage::addRecentFile(const std::string& item) {
    m_recent.add(item, m_settings);
    refreshRecentMenu();
}

void FormMontage::refreshRecentMenu() {
    // An empty entry is not shown.
    for (int i = 0; i < RecentFiles::kCount; ++i) {
        QAction* entry = m.mnuRecentFile[static_cast<size_t>(i)];
        const QString caption = QString::fromStdString(m_recent.at(i));
        entry->setText(caption);
        entry->setVisible(!caption.isEmpty());
    }
}

void FormMontage::activateFirstTime() {
    if (m_state.loadOnActivate == kFalse) {
        return;
    }
    m_state.loadOnActivate = kFalse;
    refreshRecentMenu();
    mnuLoad_Click();
}

void FormMontage::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow() &&
        m_state.loadOnActivate != kFalse) {
        // Not inside the event itself: the load shows windows and message boxes.
        QTimer::singleShot(0, this, &FormMontage::activateFirstTime);
    }
}

void FormMontage::closeEvent(QCloseEvent* event) {
    // Closing the main window ends the program at once; nothing is asked or saved.
    m_closing = true;
    event->accept();
    for (QWidget* w : findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (w->isWindow()) {
            w->hide();
        }
    }
    if (endProcess) {
        endProcess();
    }
}

bool FormMontage::eventFilter(QObject* watched, QEvent* event) {
    if (watched == TextIncrement && event->type() == QEvent::FocusIn) {
        QTimer::singleShot(0, TextIncrement, &QLineEdit::selectAll);
    }
    return QMainWindow::eventFilter(watched, event);
}

void FormMontage::yieldEvents() {
    QCoreApplication::processEvents();
    if (m_closing) {
        throw ProcessEnding{};
    }
}

void FormMontage::setRunInProgress(bool on) {
    m_runInProgress = on;
    // While pictures are loaded and the montage is built, nothing may start a second
    // run or change the series under it.
    for (QWidget* control :
         {static_cast<QWidget*>(CommandGo), static_cast<QWidget*>(CommandBrowse)}) {
        control->setEnabled(!on);
    }
    textFileName->setReadOnly(on);
    TextIncrement->setReadOnly(on);
    for (QAction* entry : {m.mnuOpen, m.mnuLoad, m.mnuOpenProject, m.mnuSave, m.mnuMakeMontage,
                           m.mnuJPG, m.mnucopy, m.mnuEditor, m.mnuPrint100, m.mnuPrint,
                           m.mnuPrintHalf, m.mnuAllMethods, m.mnuEvaluate, m.mnuEvaluateAll}) {
        entry->setEnabled(!on);
    }
    for (QAction* entry : m.mnuRecentFile) {
        entry->setEnabled(!on);
    }
    for (FormPicture* w : m_pictureWindows) {
        if (w != nullptr) {
            w->setCloseAllowed(!on);
        }
    }
    for (FormMontagePicture* w : m_methodWindows) {
        if (w != nullptr) {
            w->setCloseAllowed(!on);
        }
    }
    if (m_montageWindow != nullptr) {
        m_montageWindow->setCloseAllowed(!on);
    }
}

void FormMontage::showGeneralMessage(int number, const std::string& description, int stage,
                                     const char* routine) {
    m_ui.messageBox(generalMessage(number, description, stage, routine),
                    std::string(kGeneralMessageTitle), MessageIcon::critical);
}

}  // namespace lumiquilt
