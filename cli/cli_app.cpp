#include "cli/cli_app.h"

#include <QImage>
#include <array>
#include <cstdio>
#include <fstream>
#include <optional>
#include <ostream>

#include "core/files.h"
#include "core/numbers.h"
#include "core/runtime_error.h"
#include "core/text.h"
#include "engine/evaluate_image.h"
#include "engine/measures.h"
#include "engine/montage_run.h"
#include "engine/properties_report.h"
#include "output/gif_encoder.h"
#include "persistence/profile_file.h"
#include "series/picture_io.h"
#include "series/series_decode.h"
#include "series/series_name.h"

namespace lumiquilt {

namespace {

constexpr const char* kUsage =
    "usage: lumiquilt-cli montage FIRST [options]\n"
    "       lumiquilt-cli compare FIRST [options]\n"
    "       lumiquilt-cli evaluate FIRST [options] [--all-methods]\n"
    "options:\n"
    "  -i, --increment TEXT   block size, read as the Increment field is (default 20)\n"
    "  -m, --method N         Exposure Method 0 to 6, in menu order (default 0)\n"
    "  --ignore LIST          image numbers 1 to 10, comma-separated\n"
    "  --offsets MODE         min, max or same\n"
    "  --mark K:X,Y           centre of image K's target mark, Y downward\n"
    "  -o, --output FILE      write the montage (.bmp, .jpg, .jpeg, .gif, .png)\n"
    "  --report FILE          write the run's report; - for standard output\n"
    "  --score                print the seam score at block size 10\n";

struct Options {
    std::string command;
    std::string first;
    std::string incrementText = "20";
    int method = 0;
    std::array<bool, kIgnorableImages> ignored{};
    std::string offsets;
    std::vector<std::string> marks;
    std::string output;
    std::string report;
    bool score = false;
    bool allMethods = false;
};

struct UsageError {
    std::string text;
};

// The run stops with the window program's message.
struct RunStopped {
    std::string text;
};

bool isWholeNumber(const std::string& text) {
    if (text.empty() || text.size() > 6) {
        return false;
    }
    for (char c : text) {
        if (c < '0' || c > '9') {
            return false;
        }
    }
    return true;
}

Options parseOptions(const std::vector<std::string>& args) {
    if (args.empty()) {
        throw UsageError{"no command"};
    }
    Options o;
    o.command = args[0];
    if (o.command != "montage" && o.command != "compare" && o.command != "evaluate") {
        throw UsageError{"unknown command '" + o.command + "'"};
    }
    size_t i = 1;
    auto value = [&](const std::string& option) -> std::string {
        if (i + 1 >= args.size()) {
            throw UsageError{option + " needs a value"};
        }
        return args[++i];
    };
    bool haveFirst = false;
    for (; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "-i" || a == "--increment") {
            o.incrementText = value(a);
        } else if (a == "-m" || a == "--method") {
            const std::string v = value(a);
            if (!isWholeNumber(v) || std::stoi(v) > 6) {
                throw UsageError{"--method takes a number from 0 to 6"};
            }
            o.method = std::stoi(v);
        } else if (a == "--ignore") {
            std::string list = value(a);
            size_t start = 0;
            while (start <= list.size()) {
                const size_t comma = list.find(',', start);
                const std::string item = trimmed(list.substr(
                    start, comma == std::string::npos ? std::string::npos : comma - start));
                if (!isWholeNumber(item) || std::stoi(item) < 1 ||
                    std::stoi(item) > kIgnorableImages) {
                    throw UsageError{"--ignore takes image numbers from 1 to 10"};
                }
                o.ignored[static_cast<size_t>(std::stoi(item) - 1)] = true;
                if (comma == std::string::npos) {
                    break;
                }
                start = comma + 1;
            }
        } else if (a == "--offsets") {
            o.offsets = value(a);
            if (o.offsets != "min" && o.offsets != "max" && o.offsets != "same") {
                throw UsageError{"--offsets takes min, max or same"};
            }
        } else if (a == "--mark") {
            o.marks.push_back(value(a));
        } else if (a == "-o" || a == "--output") {
            o.output = value(a);
        } else if (a == "--report") {
            o.report = value(a);
        } else if (a == "--score") {
            o.score = true;
        } else if (a == "--all-methods" && o.command == "evaluate") {
            o.allMethods = true;
        } else if (!a.empty() && a[0] == '-' && a != "-") {
            throw UsageError{"unknown option '" + a + "'"};
        } else if (!haveFirst) {
            o.first = a;
            haveFirst = true;
        } else {
            throw UsageError{"more than one first file: '" + a + "'"};
        }
    }
    if (!haveFirst) {
        throw UsageError{"no first file named"};
    }
    if (!o.output.empty()) {
        const std::string lower = toLowerUtf8(o.output);
        const auto endsWith = [&lower](const char* e) {
            const std::string ending = e;
            return lower.size() >= ending.size() &&
                   lower.compare(lower.size() - ending.size(), ending.size(), ending) == 0;
        };
        if (!endsWith(".bmp") && !endsWith(".jpg") && !endsWith(".jpeg") && !endsWith(".png") &&
            !endsWith(".gif")) {
            throw UsageError{"the output name must end in .bmp, .jpg, .jpeg, .gif or .png"};
        }
    }
    if (!o.offsets.empty() || !o.marks.empty()) {
        throw UsageError{"image offsets are not available in this version"};
    }
    if (o.command != "montage") {
        throw UsageError{"the " + o.command + " command is not available in this version"};
    }
    return o;
}

class MontageRun {
  public:
    MontageRun(const Options& options, const std::string& currentFolder, std::ostream& err,
               bool progress)
        : m_options(options), m_folder(currentFolder), m_err(err), m_progress(progress) {}

    void run() {
        ProgramState& s = m_state;
        initialiseProgramState(s);
        const std::string incrementText = checkIncrementText(m_options.incrementText);
        int stage = kStageIncrement;
        try {
            s.increment = incrementFromText(incrementText);
            s.methodChecked[static_cast<size_t>(m_options.method)] = kTrue;
            s.ignoredImage = m_options.ignored;
            s.firstFileName = m_options.first;

            stage = kStageCompleteName;
            std::string folder = m_folder;
            if (folder.empty() || folder.back() != '/') {
                folder += '/';
            }
            const std::string name = completeSeriesName(m_options.first, folder);
            if (!hasDigitBeforeDot(name)) {
                throw RunStopped{noDigitMessageCreateImage()};
            }
            if (!fileExists(name)) {
                throw RunStopped{kFileMissingMessage};
            }
            stage = kStageFirstNumber;
            SeriesPattern pattern;
            try {
                pattern = findDigits(name);
            } catch (const RuntimeError&) {
                throw RunStopped{kNumberTooLargeMessage};
            }
            s.seriesBase = pattern.seriesBase;

            stage = kStageLoadMember;
            progress("decoding the series");
            const std::vector<DecodedMember> members = decodeSeries(pattern, 2);
            const SeriesLoopResult loop = loadSeriesLoop(pattern, loaderFor(members, m_pictures),
                                                         s.imageCount, s.currentFileName);
            if (loop.end == SeriesEnd::invalidPicture) {
                throw RunStopped{"This is not a valid picture file that I can read."};
            }
            if (loop.end == SeriesEnd::limit) {
                m_err << tooManyPicturesMessage() << "\n";
            }
            if (s.imageCount == 0) {
                throw RunStopped{kFileMissingMessage};
            }

            stage = kStageArrange;
            s.imageWidth = static_cast<float>(m_pictures[0].width());
            s.imageHeight = static_cast<float>(m_pictures[0].height());

            stage = kStageOffsets;
            const OffsetStep offsets = clearImageOffsets(s);

            stage = kStageBuffers;
            std::vector<PictureView> views;
            for (const QImage& picture : m_pictures) {
                views.push_back(viewOf(picture));
            }
            loadPixelBuffers(s, PictureView{}, static_cast<int>(s.imageWidth),
                             static_cast<int>(s.imageHeight), views,
                             [this](const std::string& text) { m_err << text << "\n"; });
            // The decoded series is no longer needed once the buffers hold it.
            views.clear();
            m_pictures.clear();
            m_pictures.shrink_to_fit();

            stage = kStageBlockLoop;
            progress("building the montage");
            const int rows = static_cast<int>(s.imageHeight) / s.increment + 1;
            int row = 0;
            runBlockLoop(s, offsets.rowShift, [&](int16_t) {
                ++row;
                if (m_progress && (row % 16 == 0 || row == rows)) {
                    m_err << "\rrow " << row << " of " << rows << std::flush;
                }
            });
            if (m_progress) {
                m_err << "\n";
            }

            stage = kStageReport;
            ReportInputs report;
            report.firstFileName = m_options.first;
            report.imageCount = s.imageCount;
            report.ignored = s.ignoredImage;
            report.methodChecked[static_cast<size_t>(m_options.method)] = true;
            report.incrementText = incrementText;
            report.imageOffsets = s.imageOffsets;
            s.propertiesString = setPropertiesString(report);
        } catch (const RuntimeError& error) {
            throw RunStopped{generalMessage(error, stage, "CommandGo")};
        } catch (const std::bad_alloc&) {
            throw RunStopped{
                generalMessage(kOutOfMemory, errorDescription(kOutOfMemory), stage, "CommandGo")};
        }
    }

    QImage montagePicture() const {
        return paintMontage(m_state.buffers, static_cast<int>(m_state.imageWidth),
                            static_cast<int>(m_state.imageHeight));
    }

    float score() const {
        return evaluateImage(m_state.buffers, m_state.imageWidth, m_state.imageHeight, 10);
    }

    const std::string& report() const { return m_state.propertiesString; }

  private:
    void progress(const char* what) {
        if (m_progress) {
            m_err << what << "...\n";
        }
    }

    const Options& m_options;
    std::string m_folder;
    std::ostream& m_err;
    bool m_progress;
    ProgramState m_state;
    std::vector<QImage> m_pictures;
};

std::string absoluteIn(const std::string& folder, const std::string& name) {
    return isAbsoluteName(name) ? name : folder + "/" + name;
}

}  // namespace

int runCli(const std::vector<std::string>& arguments, const std::string& currentFolder,
           std::ostream& out, std::ostream& err, bool showProgress) {
    Options options;
    try {
        options = parseOptions(arguments);
    } catch (const UsageError& error) {
        err << "lumiquilt-cli: " << error.text << "\n" << kUsage;
        return 2;
    }
    try {
        MontageRun run(options, currentFolder, err, showProgress);
        run.run();
        if (!options.output.empty()) {
            try {
                const std::string target = absoluteIn(currentFolder, options.output);
                const QImage montage = run.montagePicture();
                if (toLowerUtf8(target).ends_with(".gif")) {
                    GIF gif;
                    gif.SaveGIF(mapToHalftone(viewOf(montage)), target);
                } else {
                    savePicture(montage, target);
                }
            } catch (const RuntimeError& error) {
                throw RunStopped{"cannot write " + options.output + ": " + error.description()};
            }
        }
        if (!options.report.empty()) {
            if (options.report == "-") {
                out << run.report();
            } else {
                try {
                    writeFileAtomically(absoluteIn(currentFolder, options.report), run.report());
                } catch (const RuntimeError& error) {
                    throw RunStopped{"cannot write " + options.report + ": " + error.description()};
                }
            }
        }
        if (options.score) {
            char line[64];
            std::snprintf(line, sizeof line, "score %.6f\n", static_cast<double>(run.score()));
            out << line;
        }
    } catch (const RunStopped& stop) {
        err << stop.text << "\n";
        return 1;
    }
    return 0;
}

}  // namespace lumiquilt
