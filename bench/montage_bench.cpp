// Times a montage end to end and phase by phase, each against a baseline measured
// in the same run:
//   decode       against nothing (it is the floor): decoding the series' JPEG files
//   buffers      against a plain copy of the series' decoded bytes
//   block loop   against a plain copy of the montage's bytes, also with the images
//                aligned by their marks
//   writing      against decoding one file of the same size
//   whole run    (lumiquilt-cli montage ... -o out.jpg, its own process) against
//                decoding alone
//   compare and evaluate --all-methods (5 pictures only), each against one montage
//                run in its own process
//
//   montage_bench [PHOTO] [--quick]
#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <sstream>
#include <vector>

#include "core/program_state.h"
#include "engine/montage_run.h"
#include "output/gif_encoder.h"
#include "series/image_offsets.h"
#include "series/picture_io.h"
#include "series/series_decode.h"
#include "series/series_name.h"

using namespace lumiquilt;

namespace {

double seconds(const std::function<void()>& work, int repeats) {
    double best = 1e30;
    for (int r = 0; r < repeats; ++r) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const auto end = std::chrono::steady_clock::now();
        best = std::min(best, std::chrono::duration<double>(end - start).count());
    }
    return best;
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
            uchar* row = exposed.scanLine(y);
            for (int x = 0; x < exposed.width() * 3; ++x) {
                row[x] = table[row[x]];
            }
        }
        exposed.save(folder + "/bench" + QString::number(i + 1) + ".jpg", "JPEG", 90);
    }
    return (folder + "/bench1.jpg").toStdString();
}

void benchSeries(const QImage& photo, int count, int width, int height, bool quick,
                 bool evaluations) {
    QTemporaryDir dir;
    const std::string first = makeSeries(photo, dir.path(), count, width, height);
    const int repeats = quick ? 1 : 3;
    std::printf("\n== %d pictures of %d x %d (%.1f MP)\n", count, width, height,
                width * height / 1e6);

    const SeriesPattern pattern = findDigits(first);
    std::vector<DecodedMember> members;
    const double decodeOne = seconds([&] { members = decodeSeries(pattern, 1); }, repeats);
    const double decodeTwo = seconds([&] { members = decodeSeries(pattern, 2); }, repeats);

    ProgramState state;
    initialiseProgramState(state);
    state.imageCount = static_cast<int16_t>(count);
    state.imageWidth = static_cast<float>(width);
    state.imageHeight = static_cast<float>(height);
    state.methodChecked[0] = kTrue;
    std::vector<PictureView> views;
    for (const auto& m : members) {
        views.push_back(viewOf(m.picture));
    }
    const size_t seriesBytes = static_cast<size_t>(width) * height * 3 * count;
    std::vector<uint8_t> copySource(seriesBytes, 1);
    std::vector<uint8_t> copyTarget(seriesBytes);
    const double copySeries =
        seconds([&] { std::memcpy(copyTarget.data(), copySource.data(), seriesBytes); }, repeats);
    const double buffers = seconds(
        [&] { loadPixelBuffers(state, PictureView{}, width, height, views, nullptr); }, repeats);

    const size_t montageBytes = state.buffers.montageRowBytes() * (state.buffers.montageMaxY + 1);
    std::vector<uint8_t> montageCopy(montageBytes);
    // Copied from real samples into written memory: untouched zero pages would read
    // faster than any real picture.
    std::memset(montageCopy.data(), 1, montageBytes);
    const double plainCopy = seconds(
        [&] { std::memcpy(montageCopy.data(), state.buffers.seriesImage(1), montageBytes); },
        repeats * 3);

    std::printf("%-34s %9s %9s %s\n", "phase", "seconds", "baseline", "ratio");
    auto row = [](const char* name, double t, double base, const char* baseName) {
        std::printf("%-34s %9.4f %9.4f %6.2f x %s\n", name, t, base, t / base, baseName);
    };
    row("decode, 1 thread", decodeOne, decodeOne, "decode on 1 thread");
    row("decode, 2 threads", decodeTwo, decodeOne, "decode on 1 thread");
    row("buffers (mode 0)", buffers, copySeries, "plain copy of the series");
    for (int increment : {1, 20, 200}) {
        if (quick && increment == 1) {
            continue;
        }
        state.increment = static_cast<int16_t>(increment);
        const double loop =
            seconds([&] { runBlockLoop(state, 0, nullptr); }, increment == 1 ? 1 : repeats);
        char name[64];
        std::snprintf(name, sizeof name, "block loop, increment %d", increment);
        row(name, loop, plainCopy, "plain copy of the montage");
    }
    // The same loop on a bracket aligned by its marks: every other image stands 7 right
    // and 5 down of the first, cut to the minimum area that all of them share.
    {
        ProgramState shifted;
        initialiseProgramState(shifted);
        shifted.imageCount = state.imageCount;
        shifted.imageWidth = state.imageWidth;
        shifted.imageHeight = state.imageHeight;
        shifted.methodChecked = state.methodChecked;
        shifted.increment = 20;
        collectTargetCentres(shifted, [](int k) {
            return k % 2 == 0 ? MarkCentre{20.0, 18.0} : MarkCentre{13.0, 13.0};
        });
        const OffsetStep step = applyOffsetMode(
            shifted, OffsetMode::minimum, static_cast<float>(width), static_cast<float>(height));
        loadPixelBuffers(shifted, PictureView{}, static_cast<int>(shifted.imageWidth),
                         static_cast<int>(shifted.imageHeight), views, nullptr);
        const double loop =
            seconds([&] { runBlockLoop(shifted, step.rowShift, nullptr); }, repeats);
        row("block loop, increment 20, offsets", loop, plainCopy, "plain copy of the montage");
    }
    QImage montage;
    const double toPicture = seconds(
        [&] {
            montage =
                pictureFromFrame(state.buffers.montageSlot(100), state.buffers.montageMaxX + 1,
                                 state.buffers.montageMaxY + 1, width, height);
        },
        repeats);
    row("montage to picture", toPicture, plainCopy, "plain copy of the montage");
    const std::string out = (dir.path() + "/out.jpg").toStdString();
    const double writing = seconds([&] { savePicture(montage, out); }, repeats);
    row("writing JPEG", writing, decodeOne / count, "decoding one file");

    // The GIF encoder, stage by stage, against writing the same picture as JPEG.
    IndexedPicture indexed;
    const double mapping = seconds([&] { indexed = mapToHalftone(viewOf(montage)); }, repeats);
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
    const double gifFile = seconds(
        [&] {
            GIF gif;
            gif.SaveGIF(mapToHalftone(viewOf(montage)), (dir.path() + "/out.gif").toStdString());
        },
        repeats);
    row("GIF palette mapping", mapping, writing, "writing JPEG");
    row("GIF LZW and packing", lzw, writing, "writing JPEG");
    row("GIF file, whole", gifFile, writing, "writing JPEG");

    // The whole run is the real program in a process of its own, start-up included,
    // once writing the montage as JPEG and once making it only.
    const QString cli = QCoreApplication::applicationDirPath() + "/lumiquilt-cli";
    auto wholeRun = [&](const QStringList& extra) {
        return seconds(
            [&] {
                QProcess process;
                process.start(
                    cli, QStringList{"montage", QString::fromStdString(first), "-i", "20"} + extra);
                process.waitForFinished(-1);
            },
            repeats);
    };
    const double whole = wholeRun({"-o", QString::fromStdString(out)});
    const double bare = wholeRun({});
    row("whole cli run with -o out.jpg", whole, decodeOne, "decode alone, 1 thread");
    row("whole cli run with -o out.jpg", whole, decodeTwo, "decode alone, 2 threads");
    row("whole cli run, no output", bare, decodeOne, "decode alone, 1 thread");
    row("whole cli run, no output", bare, decodeTwo, "decode alone, 2 threads");

    if (!evaluations) {
        return;
    }
    // The passes decode the series once: seven block loops and scores should cost
    // little beside it, and even 140 runs only a few montages' worth.
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
    QGuiApplication app(argc, argv);
    configurePictureReading();
    QString photoName = QString(LUMIQUILT_SOURCE_DIR) + "/samples/source/coffee.png";
    bool quick = false;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) {
            quick = true;
        } else {
            photoName = QString::fromLocal8Bit(argv[i]);
        }
    }
    const QImage photo(photoName);
    if (photo.isNull()) {
        std::fprintf(stderr, "montage_bench: cannot read %s\n", qPrintable(photoName));
        return 1;
    }
    benchSeries(photo, 5, 4000, 3000, quick, true);
    benchSeries(photo, 30, 1632, 1224, quick, false);
    return 0;
}
