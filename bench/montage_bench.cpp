// Times a montage end to end and phase by phase, each against a baseline measured
// in the same run, so that a busy machine moves both alike. Every figure is the
// median of its repeats.
//   decoding      against decoding the series on one thread, one picture after another
//   buffers       against a plain copy of the series' samples
//   block loop    against a plain copy of the montage's bytes
//   writing       BMP, PNG and JPEG against a plain copy of the montage's bytes,
//                 GIF against writing the same montage as JPEG
//   window        Create Image in the window program (offscreen), from the click to
//                 the painted montage window, against the command-line tool's whole run:
//                 a process's first click, and the clicks after it, each process started
//                 for it alone
//   whole run     lumiquilt-cli montage ... -o out.bmp, its own process, against
//                 decoding alone and against djpeg -bmp of the same files one after
//                 another (when djpeg is installed)
//
//   montage_bench [--quick] [--photo PHOTO] [FIRST...]
// Without FIRST it makes two series from the photo: 5 pictures of 12 MP, 30 of 2 MP.
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QImage>
#include <QPaintEvent>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <vector>

#include "core/program_state.h"
#include "core/startup.h"
#include "display/modal_ui.h"
#include "engine/measures.h"
#include "engine/montage_run.h"
#include "output/gif_encoder.h"
#include "persistence/settings.h"
#include "series/image_offsets.h"
#include "series/picture_io.h"
#include "series/series_decode.h"
#include "series/series_name.h"

using namespace lumiquilt;

namespace {

// Writes and reads a buffer three times the size of this machine's largest caches
// (32 MiB here), so that what comes next reads from memory, as a real run does.
void emptyCaches() {
    static std::vector<uint8_t> scratch(96u << 20);
    static uint8_t round = 0;
    std::memset(scratch.data(), ++round, scratch.size());
    volatile uint8_t sink = 0;
    for (std::size_t i = 0; i < scratch.size(); i += 64) {
        sink = static_cast<uint8_t>(sink + scratch[i]);
    }
}

// The median of `repeats` runs of work, in seconds; with cold set, the caches are
// emptied before each run, outside the time.
double seconds(const std::function<void()>& work, int repeats, bool cold = false) {
    std::vector<double> times;
    for (int r = 0; r < repeats; ++r) {
        if (cold) {
            emptyCaches();
        }
        const auto start = std::chrono::steady_clock::now();
        work();
        const auto end = std::chrono::steady_clock::now();
        times.push_back(std::chrono::duration<double>(end - start).count());
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

void row(const char* name, double t, double base, const char* baseName) {
    std::printf("%-40s %9.4f %9.4f %7.2f x %s\n", name, t, base, t / base, baseName);
}

void heading() {
    std::printf("%-40s %9s %9s %9s\n", "phase", "seconds", "baseline", "ratio");
}

// Writes `count` exposures of the photo, scaled to width by height, as JPEG files.
std::string makeSeries(const QImage& photo, const QString& folder, int count, int width,
                       int height) {
    const QImage scaled =
        photo.scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
            .convertToFormat(QImage::Format_RGB888);
    for (int i = 0; i < count; ++i) {
        const double gain = std::pow(2.0, (i - (count - 1) / 2.0) * 4.0 / std::max(1, count - 1));
        QImage exposed = scaled;
        uchar table[256];
        for (int v = 0; v < 256; ++v) {
            table[v] = static_cast<uchar>(std::min(255.0, v * gain));
        }
        for (int y = 0; y < exposed.height(); ++y) {
            uchar* line = exposed.scanLine(y);
            for (int x = 0; x < exposed.width() * 3; ++x) {
                line[x] = table[line[x]];
            }
        }
        exposed.save(folder + "/bench" + QString::number(i + 1) + ".jpg", "JPEG", 90);
    }
    return (folder + "/bench1.jpg").toStdString();
}

// The members of a series that exist, as the loading loop would find them.
std::vector<std::string> membersOf(const SeriesPattern& pattern) {
    std::vector<std::string> names;
    for (int k = 1; k <= kMaxImages; ++k) {
        const std::string name = memberName(pattern, k);
        if (!QFileInfo::exists(QString::fromStdString(name))) {
            break;
        }
        names.push_back(name);
    }
    return names;
}

// Counts the paints of a widget.
class PaintCounter : public QObject {
  public:
    int paints = 0;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            ++paints;
        }
        return QObject::eventFilter(watched, event);
    }
};

// Create Image in the window program, from the click to the painted montage window:
// the first click of a process, which also makes and shows the windows and takes all
// its memory fresh, and the median of the clicks after it.
struct WindowTimes {
    double firstClick;
    double laterClicks;
};

// The window program started as a user starts it, in a folder of its own, its
// dialogs answered from a script.
struct WindowProgram {
    QTemporaryDir dir;
    ProgramState state;
    ScriptedModalUi ui;
    Settings settings{(dir.path() + "/Lumiquilt.ini").toStdString()};
    StartupResult started;

    WindowProgram() {
        state.appPath = dir.path().toStdString() + "/";
        StartupHooks hooks;
        hooks.showSplash = [] {};
        started = startLumiquilt({}, state, ui, settings, QSize(1280, 1024), hooks);
        started.window->activateFirstTime();
    }
    FormMontage& form() { return *started.window; }
};

// Evaluate Increments and all Exposure Methods in the window program, after one
// Create Image: the seven methods at every increment, as the menu runs them.
double windowEvaluateAll(const std::string& first) {
    WindowProgram program;
    FormMontage& form = program.form();
    ScriptedModalUi& ui = program.ui;
    form.textFileName->setText(QString::fromStdString(first));
    form.TextIncrement->setText("20");
    form.CommandGo_Click();
    ui.messageAnswers.push_back(MessageResult::ok);
    const double took = seconds([&] { form.m.mnuEvaluateAll->trigger(); }, 1);
    // What it found, to compare builds by.
    const QImage montage = form.montageWindow()->PictureFile->picture();
    std::printf("(the window program said: %s; montage checksum %u)\n",
                ui.messages.back().text.c_str(),
                qChecksum(QByteArrayView(montage.constBits(), montage.sizeInBytes())));
    return took;
}

WindowTimes windowRun(const std::string& first, int clicks) {
    WindowProgram program;
    FormMontage& form = program.form();
    ScriptedModalUi& ui = program.ui;
    PaintCounter counter;
    form.montageWindow()->PictureFile->installEventFilter(&counter);
    auto click = [&] {
        form.textFileName->setText(QString::fromStdString(first));
        form.TextIncrement->setText("20");
        counter.paints = 0;
        form.CommandGo_Click();
        QElapsedTimer waited;
        waited.start();
        while (counter.paints == 0 && waited.elapsed() < 10000) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
    };
    WindowTimes times{};
    times.firstClick = seconds(click, 1);
    times.laterClicks = seconds(click, clicks - 1);
    if (!ui.messages.empty()) {
        std::printf("(the window program said: %s)\n", ui.messages.back().text.c_str());
    }
    return times;
}

// The window program in processes of its own, as a user starts it: in this one,
// the memory the earlier phases took and gave back can double a first click.
// The median of each figure over `processes` runs.
WindowTimes windowRunAlone(const std::string& first, int processes) {
    std::vector<double> firsts;
    std::vector<double> laters;
    for (int p = 0; p < processes; ++p) {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(),
                      {"--window-only", QString::fromStdString(first)});
        process.waitForFinished(-1);
        const QByteArray said = process.readAllStandardOutput();
        const char* line = std::strstr(said.constData(), "window program, first click");
        WindowTimes times{};
        if (line != nullptr &&
            std::sscanf(line, "window program, first click: %lf s, later clicks: %lf s",
                        &times.firstClick, &times.laterClicks) == 2) {
            firsts.push_back(times.firstClick);
            laters.push_back(times.laterClicks);
        } else {
            std::printf("(the window run said: %s)\n", said.constData());
        }
    }
    auto median = [](std::vector<double>& v) {
        std::sort(v.begin(), v.end());
        return v.empty() ? std::nan("") : v[v.size() / 2];
    };
    return WindowTimes{median(firsts), median(laters)};
}

// The buffers of a series, as a montage of the command-line tool reads them.
void readSeries(ProgramState& state, const std::string& first) {
    const SeriesPattern pattern = findDigits(first);
    const std::vector<std::string> names = membersOf(pattern);
    SeriesReader reader(pattern, SeriesReader::ReadInto::frames, 2);
    std::vector<PictureView> views;
    for (int k = 1; k <= static_cast<int>(names.size()); ++k) {
        reader.load(k, names[static_cast<size_t>(k - 1)]);
        views.push_back(reader.view(k));
    }
    initialiseProgramState(state);
    state.imageCount = static_cast<int16_t>(names.size());
    state.imageWidth = static_cast<float>(views[0].width);
    state.imageHeight = static_cast<float>(views[0].height);
    state.methodChecked[0] = kTrue;
    loadPixelBuffers(state, PictureView{}, views[0].width, views[0].height, views, nullptr,
                     reader.frames());
}

double blockLoopOnly(const std::string& first, int repeats) {
    ProgramState state;
    readSeries(state, first);
    state.increment = 20;
    return seconds([&] { runBlockLoop(state, 0, nullptr); }, repeats);
}

void benchSeries(const std::string& first, bool quick) {
    const int repeats = quick ? 1 : 5;
    const SeriesPattern pattern = findDigits(first);
    const std::vector<std::string> names = membersOf(pattern);
    const int count = static_cast<int>(names.size());
    const QImage probe(QString::fromStdString(first));
    const int width = probe.width();
    const int height = probe.height();
    std::printf("\n== %d pictures of %d x %d (%.1f MP), %s\n", count, width, height,
                width * height / 1e6, first.c_str());
    heading();

    // Decoding: one picture after another as the loading loop once did, then read
    // ahead on two threads into the frames, the buffers taking them over: alone (a
    // montage of the command-line tool), or with each picture also scaled for a window
    // on a 1920 x 1080 screen, the windows showing the frames (the window program).
    std::vector<QImage> pictures;
    const double decodeOne = seconds(
        [&] {
            pictures.clear();
            for (const std::string& name : names) {
                pictures.push_back(loadPicture(name));
            }
        },
        repeats);
    auto readAhead = [&](bool keep) {
        ProgramState state;
        const auto onScreen = [](QSize picture) {
            const double scale =
                std::min({1.0, 1880.0 / picture.width(), 1000.0 / picture.height()});
            return QSize(static_cast<int>(std::lround(picture.width() * scale)),
                         static_cast<int>(std::lround(picture.height() * scale)));
        };
        SeriesReader reader(
            pattern, keep ? SeriesReader::ReadInto::framesAndViews : SeriesReader::ReadInto::frames,
            2, keep ? SeriesReader::ShownSize(onScreen) : nullptr);
        std::vector<PictureView> views;
        for (int k = 1; k <= count; ++k) {
            reader.load(k, names[static_cast<size_t>(k - 1)]);
            views.push_back(reader.view(k));
        }
        state.imageCount = static_cast<int16_t>(count);
        loadPixelBuffers(state, PictureView{}, width, height, views, nullptr, reader.frames());
    };
    const double aheadForWindows = seconds([&] { readAhead(true); }, repeats);
    const double aheadFrames = seconds([&] { readAhead(false); }, repeats);
    row("decode, 1 thread, one by one", decodeOne, decodeOne, "decode one by one");
    row("read ahead, 2 threads, into buffers", aheadFrames, decodeOne, "decode one by one");
    row("  the same for the windows", aheadForWindows, decodeOne, "decode one by one");

    // The buffers read from pictures, as evaluation passes still do.
    ProgramState state;
    initialiseProgramState(state);
    state.imageCount = static_cast<int16_t>(count);
    state.imageWidth = static_cast<float>(width);
    state.imageHeight = static_cast<float>(height);
    state.methodChecked[0] = kTrue;
    std::vector<PictureView> views;
    for (const QImage& p : pictures) {
        views.push_back(viewOf(p));
    }
    const size_t seriesBytes = static_cast<size_t>(width) * height * 3 * count;
    std::vector<uint8_t> copySource(seriesBytes, 1);
    std::vector<uint8_t> copyTarget(seriesBytes, 2);
    const double copySeries =
        seconds([&] { std::memcpy(copyTarget.data(), copySource.data(), seriesBytes); }, repeats);
    const double buffers = seconds(
        [&] { loadPixelBuffers(state, PictureView{}, width, height, views, nullptr); }, repeats);
    row("buffers from pictures (mode 0)", buffers, copySeries, "plain copy of the series");
    pictures.clear();
    views.clear();

    const size_t montageBytes = state.buffers.montageRowBytes() * (state.buffers.montageMaxY + 1);
    std::vector<uint8_t> montageCopy(montageBytes);
    // Copied from real samples into written memory: untouched zero pages would read
    // faster than any real picture.
    std::memset(montageCopy.data(), 1, montageBytes);
    const double plainCopy = seconds(
        [&] { std::memcpy(montageCopy.data(), state.buffers.seriesImage(1), montageBytes); },
        repeats * 3);
    for (int increment : {1, 20, 200}) {
        if (quick && increment == 1) {
            continue;
        }
        state.increment = static_cast<int16_t>(increment);
        const double loop =
            seconds([&] { runBlockLoop(state, 0, nullptr); }, increment == 1 ? 1 : repeats * 3);
        char name[64];
        std::snprintf(name, sizeof name, "block loop, increment %d", increment);
        row(name, loop, plainCopy, "plain copy of the montage");
    }
    // A real run reads a series that was written long before: both from memory, not
    // from the caches that a copy of the same bytes again and again keeps warm.
    {
        state.increment = 20;
        const double coldCopy = seconds(
            [&] { std::memcpy(montageCopy.data(), state.buffers.seriesImage(1), montageBytes); },
            repeats * 3, true);
        const double coldLoop =
            seconds([&] { runBlockLoop(state, 0, nullptr); }, repeats * 3, true);
        row("plain copy of the montage, caches empty", coldCopy, plainCopy,
            "plain copy of the montage");
        row("block loop, increment 20, caches empty", coldLoop, coldCopy,
            "plain copy, caches empty");
    }
    // The same loop on a bracket aligned by its marks: every other image stands 7 right
    // and 5 down of the first, cut to the minimum area that all of them share.
    {
        const float width = state.imageWidth;
        const float height = state.imageHeight;
        state.increment = 20;
        collectTargetCentres(state, [](int k) {
            return k % 2 == 0 ? MarkCentre{20.0, 18.0} : MarkCentre{13.0, 13.0};
        });
        const OffsetStep step = applyOffsetMode(state, OffsetMode::minimum, width, height);
        state.buffers.sizeMontage(static_cast<int>(state.imageWidth),
                                  static_cast<int>(state.imageHeight));
        const double loop =
            seconds([&] { runBlockLoop(state, step.rowShift, nullptr); }, repeats * 3);
        row("block loop, increment 20, offsets", loop, plainCopy, "plain copy of the montage");
        clearImageOffsets(state);
        state.imageWidth = width;
        state.imageHeight = height;
        state.buffers.sizeMontage(static_cast<int>(width), static_cast<int>(height));
    }
    // Where the block loop's time goes: the measures alone, one per image and block.
    state.increment = 20;
    const double measuresOnly = seconds(
        [&] {
            const MeasureContext measures(state);
            float sum = 0;
            for (int y0 = 0; y0 <= height; y0 += 20) {
                for (int x0 = 0; x0 <= width - 1; x0 += 20) {
                    for (int k = 1; k <= count; ++k) {
                        int16_t sx = 0;
                        int16_t sy = 0;
                        bool written = false;
                        sum += measures.measure(static_cast<int16_t>(x0), static_cast<int16_t>(y0),
                                                static_cast<int16_t>(k), sx, sy, written);
                    }
                }
            }
            if (sum == 1.5f) {
                std::printf(" ");
            }
        },
        repeats * 3);
    row("  of which the measures, increment 20", measuresOnly, plainCopy,
        "plain copy of the montage");
    // The same loop over one picture: every block then joins its neighbours into
    // whole rows. What the series adds beyond it is the reads of short runs from
    // several pictures in turn.
    {
        const int16_t all = state.imageCount;
        state.imageCount = 1;
        const double onePicture = seconds([&] { runBlockLoop(state, 0, nullptr); }, repeats * 3);
        state.imageCount = all;
        row("  the same loop over picture 1 alone", onePicture, plainCopy,
            "plain copy of the montage");
    }

    // Writing the montage, as the command-line tool does and as it did before.
    QTemporaryDir out;
    const int w = width;
    const int h = height;
    auto target = [&out](const char* name) { return (out.path() + "/" + name).toStdString(); };
    QImage painted;
    const double toPicture = seconds([&] { painted = paintMontage(state.buffers, w, h); }, repeats);
    row("montage to picture (window)", toPicture, plainCopy, "plain copy of the montage");
    const double bmp = seconds([&] { saveMontage(state.buffers, w, h, target("m.bmp")); }, repeats);
    const double bmpBefore = seconds(
        [&] {
            paintMontage(state.buffers, w, h).save(QString::fromStdString(target("q.bmp")), "BMP");
        },
        repeats);
    const double jpeg =
        seconds([&] { saveMontage(state.buffers, w, h, target("m.jpg")); }, repeats);
    const double jpegBefore = seconds(
        [&] {
            paintMontage(state.buffers, w, h)
                .save(QString::fromStdString(target("q.jpg")), "JPEG", 90);
        },
        repeats);
    const int slowRepeats = quick ? 1 : 3;
    const double png =
        seconds([&] { saveMontage(state.buffers, w, h, target("m.png")); }, slowRepeats);
    const double pngBefore = seconds(
        [&] { paintMontage(state.buffers, w, h).save(QString::fromStdString(target("q.png"))); },
        slowRepeats);
    row("writing BMP", bmp, plainCopy, "plain copy of the montage");
    row("  BMP as before (picture, Qt's writer)", bmpBefore, plainCopy,
        "plain copy of the montage");
    row("writing JPEG", jpeg, plainCopy, "plain copy of the montage");
    row("  JPEG as before", jpegBefore, plainCopy, "plain copy of the montage");
    row("writing PNG", png, plainCopy, "plain copy of the montage");
    row("  PNG as before", pngBefore, plainCopy, "plain copy of the montage");

    // The GIF encoder, stage by stage, against writing the same montage as JPEG.
    const PictureView montageView =
        frameAsPicture(state.buffers.montageSlot(100), state.buffers.montageMaxX + 1,
                       state.buffers.montageMaxY + 1, w, h);
    IndexedPicture indexed;
    const double mapping = seconds([&] { indexed = mapToHalftone(montageView); }, repeats);
    std::string gifBytes;
    const double lzw = seconds(
        [&] {
            gifBytes.clear();
            GIF gif;
            gif.encode(indexed, [&gifBytes](const uint8_t* d, std::size_t n) {
                gifBytes.append(reinterpret_cast<const char*>(d), n);
                return true;
            });
        },
        repeats);
    const double gifFile =
        seconds([&] { saveMontage(state.buffers, w, h, target("m.gif")); }, repeats);
    row("GIF palette mapping", mapping, jpeg, "writing JPEG");
    row("GIF LZW and packing", lzw, jpeg, "writing JPEG");
    row("writing GIF, whole", gifFile, jpeg, "writing JPEG");
    state.buffers = PixelBuffers{};

    // The real programs, each run in turn with its baseline.
    const QString cli = QCoreApplication::applicationDirPath() + "/lumiquilt-cli";
    const QString bmpOut = out.path() + "/cli.bmp";
    const double whole = seconds(
        [&] {
            QProcess process;
            process.start(cli, {"montage", QString::fromStdString(first), "-o", bmpOut});
            process.waitForFinished(-1);
        },
        repeats);
    const WindowTimes window = windowRunAlone(first, quick ? 1 : 5);
    row("window program, first click", window.firstClick, whole, "whole cli run");
    row("window program, later clicks", window.laterClicks, whole, "whole cli run");
    row("whole cli run with -o out.bmp", whole, decodeOne, "decode one by one");
    const QString djpeg = QStandardPaths::findExecutable("djpeg");
    if (!djpeg.isEmpty()) {
        const double djpegAll = seconds(
            [&] {
                for (const std::string& name : names) {
                    QProcess process;
                    process.setStandardOutputFile(out.path() + "/djpeg.bmp");
                    process.start(djpeg, {"-bmp", QString::fromStdString(name)});
                    process.waitForFinished(-1);
                }
            },
            repeats);
        row("whole cli run with -o out.bmp", whole, djpegAll, "djpeg -bmp, one after another");
    }
    if (quick || names.size() > 5) {
        return;
    }
    // The passes read the series once: seven block loops and scores should cost little
    // beside it, and even 140 runs only a few montages' worth.
    auto commandRun = [&](const QStringList& command, int times) {
        return seconds(
            [&] {
                QProcess process;
                process.start(cli, command + QStringList{QString::fromStdString(first)});
                process.waitForFinished(-1);
            },
            times);
    };
    const double montageRun = commandRun({"montage"}, repeats);
    const double compare = commandRun({"compare"}, repeats);
    const double evaluateAll = commandRun({"evaluate", "--all-methods"}, 1);
    row("cli compare", compare, montageRun, "one cli montage run (target 2 x)");
    row("cli evaluate --all-methods", evaluateAll, montageRun, "one cli montage run (target 6 x)");
}

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    configurePictureReading();
    QString photoName = QString(LUMIQUILT_SOURCE_DIR) + "/samples/source/coffee.png";
    bool quick = false;
    std::vector<std::string> series;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) {
            quick = true;
        } else if (std::strcmp(argv[i], "--window-only") == 0 && i + 1 < argc) {
            // For a profiler: the window program's run alone.
            const std::string first =
                QFileInfo(QString::fromLocal8Bit(argv[++i])).absoluteFilePath().toStdString();
            const WindowTimes times = windowRun(first, 4);
            std::printf("window program, first click: %.4f s, later clicks: %.4f s\n",
                        times.firstClick, times.laterClicks);
            return 0;
        } else if (std::strcmp(argv[i], "--window-evaluate-all") == 0 && i + 1 < argc) {
            // The window program's longest command, alone.
            const std::string first =
                QFileInfo(QString::fromLocal8Bit(argv[++i])).absoluteFilePath().toStdString();
            std::printf("window program, evaluate all: %.4f s\n", windowEvaluateAll(first));
            return 0;
        } else if (std::strcmp(argv[i], "--block-loop-only") == 0 && i + 1 < argc) {
            // For a profiler: the block loop at increment 20, fifty times over.
            const std::string first =
                QFileInfo(QString::fromLocal8Bit(argv[++i])).absoluteFilePath().toStdString();
            std::printf("block loop, increment 20: %.4f s\n", blockLoopOnly(first, 50));
            return 0;
        } else if (std::strcmp(argv[i], "--photo") == 0 && i + 1 < argc) {
            photoName = QString::fromLocal8Bit(argv[++i]);
        } else if (argv[i][0] == '-' || !QFileInfo::exists(QString::fromLocal8Bit(argv[i]))) {
            std::fprintf(stderr,
                         "usage: montage_bench [--quick] [--photo PHOTO] [--window-only FIRST]\n"
                         "                     [--window-evaluate-all FIRST]\n"
                         "                     [--block-loop-only FIRST] [FIRST...]\n");
            return 2;
        } else {
            series.push_back(
                QFileInfo(QString::fromLocal8Bit(argv[i])).absoluteFilePath().toStdString());
        }
    }
    QTemporaryDir made;
    if (series.empty()) {
        const QImage photo(photoName);
        if (photo.isNull()) {
            std::fprintf(stderr, "montage_bench: cannot read %s\n", qPrintable(photoName));
            return 1;
        }
        QDir(made.path()).mkpath("large");
        QDir(made.path()).mkpath("small");
        series.push_back(makeSeries(photo, made.path() + "/large", 5, 4000, 3000));
        series.push_back(makeSeries(photo, made.path() + "/small", 30, 1632, 1224));
    }
    for (const std::string& first : series) {
        benchSeries(first, quick);
    }
    return 0;
}
