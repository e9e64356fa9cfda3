#include "cli/cli_app.h"

#include <QImage>
#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <ostream>

#include "core/files.h"
#include "core/numbers.h"
#include "core/runtime_error.h"
#include "core/text.h"
#include "core/version.h"
#include "engine/create_image.h"
#include "engine/evaluate_image.h"
#include "engine/measures.h"
#include "engine/properties_report.h"
#include "evaluation/evaluation_passes.h"
#include "output/gif_encoder.h"
#include "persistence/profile_file.h"
#include "persistence/project_file.h"
#include "series/picture_io.h"
#include "series/series_decode.h"
#include "series/series_name.h"

namespace lumiquilt {

namespace {

constexpr const char* kUsage =
    "usage: lumiquilt-cli montage FIRST [options]\n"
    "       lumiquilt-cli montage --project FILE [-o FILE] [--report FILE] [--score]\n"
    "                     [--save-project FILE]\n"
    "       lumiquilt-cli compare FIRST [options]\n"
    "       lumiquilt-cli evaluate FIRST [options] [--all-methods]\n"
    "       lumiquilt-cli --help | --version\n"
    "options:\n"
    "  -i, --increment TEXT   block size, read as the Increment field is (default 20)\n"
    "  -m, --method N         Exposure Method 0 to 6, in menu order (default 0)\n"
    "  --ignore LIST          image numbers 1 to 10, comma-separated\n"
    "  --offsets MODE         min, max or same: align the images on their marks\n"
    "  --mark K:X,Y           centre of image K's target mark in picture pixels, Y\n"
    "                         downward; repeatable (default: the mark's design place)\n"
    "  -o, --output FILE      write the montage (.bmp, .jpg, .jpeg, .gif, .png)\n"
    "  --report FILE          write the run's report; - for standard output\n"
    "  --score                print the seam score at block size 10\n"
    "  --all-methods          evaluate: the increments of all seven methods\n"
    "  --save-project FILE    montage: also write the project file and its companion\n"
    "                         picture, as Save a Project does\n"
    "  --project FILE         montage: the series and choices of a project, read as Load\n"
    "                         a Project reads them, in place of FIRST, -i, -m, --ignore,\n"
    "                         --offsets and --mark; the report is the project's\n";

struct Options {
    std::string command;
    std::string first;
    std::string incrementText = "20";
    int method = 0;
    std::array<bool, kIgnorableImages> ignored{};
    std::string offsets;
    std::map<int, MarkCentre> marks;
    std::string output;
    std::string report;
    bool score = false;
    bool allMethods = false;
    std::string saveProject;
    std::string project;
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

// A whole number with an optional minus sign, small enough for an int.
bool isSignedWholeNumber(const std::string& text) {
    return !text.empty() && isWholeNumber(text[0] == '-' ? text.substr(1) : text);
}

// "K:X,Y": image K's mark centre, in picture pixels, Y downward. Values beyond 16
// bits are left for the run, which refuses them as the window program would.
std::pair<int, MarkCentre> parseMark(const std::string& text) {
    const UsageError bad{"--mark takes K:X,Y with an image number K from 1 to 30"};
    const size_t colon = text.find(':');
    const size_t comma = text.find(',', colon == std::string::npos ? 0 : colon);
    if (colon == std::string::npos || comma == std::string::npos) {
        throw bad;
    }
    const std::string k = text.substr(0, colon);
    const std::string x = text.substr(colon + 1, comma - colon - 1);
    const std::string y = text.substr(comma + 1);
    if (!isWholeNumber(k) || std::stoi(k) < 1 || std::stoi(k) >= kImageSlots ||
        !isSignedWholeNumber(x) || !isSignedWholeNumber(y)) {
        throw bad;
    }
    return {std::stoi(k),
            MarkCentre{static_cast<double>(std::stoi(x)), static_cast<double>(std::stoi(y))}};
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
    bool haveChoice = false;  // a choice that a project makes
    for (; i < args.size(); ++i) {
        const std::string& a = args[i];
        haveChoice = haveChoice || a == "-i" || a == "--increment" || a == "-m" ||
                     a == "--method" || a == "--ignore" || a == "--offsets" || a == "--mark";
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
            const auto [k, centre] = parseMark(value(a));
            o.marks.insert_or_assign(k, centre);
        } else if (a == "-o" || a == "--output") {
            o.output = value(a);
        } else if (a == "--report") {
            o.report = value(a);
        } else if (a == "--save-project") {
            o.saveProject = value(a);
        } else if (a == "--project") {
            o.project = value(a);
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
    if ((!o.project.empty() || !o.saveProject.empty()) && o.command != "montage") {
        throw UsageError{"--project and --save-project go with montage only"};
    }
    if (!o.project.empty() && (haveFirst || haveChoice)) {
        throw UsageError{
            "--project takes the place of FIRST, -i, -m, --ignore, --offsets and --mark"};
    }
    if (!haveFirst && o.project.empty()) {
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
    return o;
}

// The command-line side of a run: the options are the controls, the decoded series
// stands in for the picture windows, and messages go to standard error.
class CliFront : public CreateImageFront {
  public:
    CliFront(const Options& options, const ProgramState& state, std::ostream& err, bool progress)
        : m_options(options),
          m_state(state),
          m_method(options.method),
          m_incrementText(options.incrementText),
          m_fileName(options.first),
          m_err(err),
          m_progress(progress) {}

    /// The ticked method, -1 for none: the one choice the passes change.
    int method() const { return m_method; }
    void setMethod(int method) { m_method = method; }
    /// Runs that are passes of a comparison name their method and increment in the
    /// progress line.
    void setPassesRunning(bool on) { m_passes = on; }

    RunChoices choices() override {
        RunChoices c;
        c.incrementText = m_incrementText;
        if (m_method >= 0 && m_method < kMethodCount) {
            c.methodChecked[static_cast<size_t>(m_method)] = true;
        }
        c.ignored = m_options.ignored;
        // Without --offsets the marks are there but not used.
        c.addOffsets = !m_options.offsets.empty();
        c.offsetsMin = m_options.offsets == "min";
        c.offsetsMax = m_options.offsets == "max";
        c.offsetsSame = m_options.offsets == "same";
        return c;
    }
    void setIncrementText(const std::string& text) override { m_incrementText = text; }
    std::string fileNameText() override { return m_fileName; }
    void setFileNameText(const std::string& text) override { m_fileName = text; }
    void message(const std::string& text, const std::string& /*title*/,
                 MessageIcon /*icon*/) override {
        m_err << text << "\n";
    }

    MarkCentre markCentre(int k) override {
        const auto found = m_options.marks.find(k);
        return found == m_options.marks.end() ? kDesignMarkCentre : found->second;
    }

    void seriesLetGo(SampleBuffer&& pixels) override {
        // An evaluation loads the same series again and again: its frames come back to
        // the reader, which hands them over again for each file that stayed as it was.
        if (m_reader) {
            m_reader->takeBackFrames(std::move(pixels));
        }
    }
    void seriesFound(const SeriesPattern& pattern) override {
        // The passes of compare and evaluate name the same series again and again: the
        // reader stays while its files do, and serves what it read again.
        if (m_reader && m_reader->servesUnchanged(pattern)) {
            return;
        }
        progress("decoding the series");
        m_reader.reset();
        // No picture need outlive its frame: a later load takes the frames back.
        m_reader = std::make_unique<SeriesReader>(pattern, SeriesReader::ReadInto::frames, 2);
    }
    void loadMember(int k, const std::string& fileName) override {
        if (!m_reader) {
            throw RuntimeError(kFileNotFound);
        }
        m_reader->load(k, fileName);
    }
    PictureView memberPicture(int k) override {
        return m_reader ? m_reader->view(k) : PictureView{};
    }
    SeriesFrames* seriesFrames() override { return m_reader ? m_reader->frames() : nullptr; }
    void startPreview() override {
        if (!m_passes) {
            progress("building the montage");
        }
        m_row = 0;
    }
    void seriesRead() override {
        // A single montage never reads its pictures again: the memory is the output's.
        if (m_options.command == "montage") {
            m_reader.reset();
        }
    }
    void previewRow(int16_t /*y0*/) override {
        ++m_row;
        const int rows = static_cast<int>(m_state.imageHeight) / m_state.increment + 1;
        if (m_progress && (m_row % 16 == 0 || m_row == rows)) {
            m_err << "\r";
            if (m_passes) {
                m_err << "method " << m_method << ", increment " << m_state.increment << ": ";
            }
            m_err << "row " << m_row << " of " << rows << "    " << std::flush;
        }
    }
    void showMontage() override {
        if (m_progress && !m_passes) {
            m_err << "\n";
        }
    }
    void endPassesProgress() {
        if (m_progress && m_passes) {
            m_err << "\n";
        }
    }

  private:
    void progress(const char* what) {
        if (m_progress) {
            if (m_passes) {
                m_err << "\n";
            }
            m_err << what << "...\n";
        }
    }

    const Options& m_options;
    const ProgramState& m_state;
    int m_method;
    bool m_passes = false;
    std::string m_incrementText;
    std::string m_fileName;
    std::ostream& m_err;
    bool m_progress;
    std::unique_ptr<SeriesReader> m_reader;
    int m_row = 0;
};

std::string absoluteIn(const std::string& folder, const std::string& name) {
    return isAbsoluteName(name) ? name : folder + "/" + name;
}

// The command-line side of compare and evaluate: the method is the one tick, the
// question is answered by the command itself, and the comparison keeps a copy of its
// best montage, where the window program keeps seven windows.
class CliPasses : public EvaluationFront {
  public:
    CliPasses(CliFront& road, ProgramState& state) : m_road(road), s(state) {
        m_road.setPassesRunning(true);
    }
    ~CliPasses() override {
        m_road.endPassesProgress();
        m_road.setPassesRunning(false);
    }
    CliPasses(const CliPasses&) = delete;
    CliPasses& operator=(const CliPasses&) = delete;

    CreateImageFront& road() override { return m_road; }
    int tickedMethod() override { return m_road.method(); }
    void tickOnly(int method) override { m_road.setMethod(method); }
    bool confirm(const std::string& /*text*/, const std::string& /*title*/) override {
        return true;  // asking for --all-methods is the answer
    }
    void passScored(const PassScore& /*score*/, bool newBest) override {
        if (newBest && m_keepBest) {
            const PixelBuffers& b = s.buffers;
            const uint8_t* slot = b.montageSlot(PixelBuffers::kFirstMontageSlot);
            m_best.assign(slot,
                          slot + b.montageRowBytes() * static_cast<size_t>(b.montageMaxY + 1));
        }
    }
    void showComparisonBest(int /*slot*/) override {
        PixelBuffers& b = s.buffers;
        if (m_best.size() == b.montageRowBytes() * static_cast<size_t>(b.montageMaxY + 1)) {
            std::memcpy(b.montageSlot(PixelBuffers::kFirstMontageSlot), m_best.data(),
                        m_best.size());
        }
    }
    /// Only a comparison needs the copy: the evaluations make their best once more.
    void keepBestMontage() { m_keepBest = true; }

  private:
    CliFront& m_road;
    ProgramState& s;
    bool m_keepBest = false;
    std::vector<uint8_t> m_best;
};

// Where a project's choices go: into the options, as if they had been given. No
// series is loaded before the run, so the marks and ignore entries of every image a
// project can name are read.
class OptionsRestore : public ProjectRestore {
  public:
    explicit OptionsRestore(Options& options) : o(options) {}

    void setFirstFileName(const std::string& text) override { o.first = text; }
    void uncheckMethods() override { o.method = -1; }
    void checkMethod(int index) override { o.method = index; }
    void setIncrementText(const std::string& text) override { o.incrementText = text; }
    int imageCount() const override { return kImageSlots - 1; }
    void offsetsOn() override {
        // A project without a display area keeps the one the program starts with.
        if (o.offsets.empty()) {
            o.offsets = "same";
        }
    }
    void placeMark(int n, double centreX, double centreY) override {
        o.marks.insert_or_assign(n, MarkCentre{centreX, centreY});
    }
    void marksPlaced() override {}
    void setOffsetDisplay(OffsetDisplay display) override {
        o.offsets = display == OffsetDisplay::minimum   ? "min"
                    : display == OffsetDisplay::maximum ? "max"
                                                        : "same";
    }
    void offsetsOff() override { o.offsets.clear(); }
    void setIgnored(int index, bool ignored) override {
        o.ignored.at(static_cast<size_t>(index)) = ignored;
    }

  private:
    Options& o;
};

// The project file and its companion, by the window program's writer; a failure
// stops with the message that "Save a Project" shows for it.
void saveProject(const std::string& name, const std::string& report, const QImage& montage) {
    bool picture = false;
    try {
        ProjectSave save(name);
        save.writeText(report);
        picture = true;
        save.writeCompanion(
            [&montage](const std::string& temporary) { savePicture(montage, temporary, "BMP"); });
        picture = false;
        save.commit();
    } catch (const RuntimeError& error) {
        throw RunStopped{picture ? generalMessage(error, 33000, "mnuSave")
                                 : projectWriteMessage(error.description())};
    }
}

std::string scoreText(float score) {
    char text[64];
    std::snprintf(text, sizeof text, "%.6f", static_cast<double>(score));
    return text;
}

}  // namespace

int runCli(const std::vector<std::string>& arguments, const std::string& currentFolder,
           std::ostream& out, std::ostream& err, bool showProgress) {
    if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h")) {
        out << kUsage;
        return 0;
    }
    if (arguments.size() == 1 && arguments[0] == "--version") {
        out << "lumiquilt-cli " << kVersionText << "\n";
        return 0;
    }
    Options options;
    try {
        options = parseOptions(arguments);
    } catch (const UsageError& error) {
        err << "lumiquilt-cli: " << error.text << "\n" << kUsage;
        return 2;
    }
    try {
        std::string project;
        if (!options.project.empty()) {
            project = absoluteIn(currentFolder, options.project);
            if (!fileExists(project)) {
                throw RunStopped{std::string(kProjectMissingMessage)};
            }
            try {
                OptionsRestore restore(options);
                restoreProject(project, restore);
            } catch (const RuntimeError& error) {
                throw RunStopped{projectReadMessage(error.description())};
            }
        }
        ProgramState state;
        initialiseProgramState(state);
        // Relative names are taken from the current folder.
        state.appPath = currentFolder;
        if (state.appPath.empty() || state.appPath.back() != '/') {
            state.appPath += '/';
        }
        CliFront front(options, state, err, showProgress);
        // The evaluations take their range of increments from the width that a run
        // with the same options leaves.
        if (options.command != "compare" && createImage(state, front) != RunEnd::completed) {
            return 1;
        }
        std::string report = state.propertiesString;
        if (options.command == "compare") {
            CliPasses passes(front, state);
            passes.keepBestMontage();
            const EvaluationResult result = compareAllMethods(state, passes);
            if (result.end != EvaluationEnd::completed) {
                return 1;
            }
            for (const PassScore& pass : result.scores) {
                out << "method " << pass.method << " " << scoreText(pass.score) << "\n";
            }
            out << "best " << state.bestMethod << " "
                << kMethodCaptions[static_cast<size_t>(state.bestMethod)] << "\n";
            report =
                state.methodProperties[static_cast<size_t>(kMethodCount - 1 - state.bestMethod)];
        } else if (options.command == "evaluate") {
            // Nothing tried leaves the method the command was asked about.
            state.bestMethod = static_cast<int16_t>(options.method);
            EvaluationResult result;
            {
                CliPasses passes(front, state);
                result = options.allMethods ? evaluateIncrementsAllMethods(state, passes)
                                            : evaluateIncrements(state, passes);
            }
            if (result.end != EvaluationEnd::completed) {
                return 1;
            }
            int lastMethod = -1;
            for (const PassScore& pass : result.scores) {
                if (options.allMethods && pass.method != lastMethod) {
                    out << "method " << pass.method << "\n";
                    lastMethod = pass.method;
                }
                out << "increment " << pass.increment << " " << scoreText(pass.score) << "\n";
            }
            out << "best " << state.bestMethod << " " << state.bestIncrement << "\n";
            report = state.propertiesString;
        }
        if (!project.empty()) {
            // The report a project leaves is its own text, as Load a Project reads it.
            try {
                report = readProjectText(project).propertiesString;
            } catch (const RuntimeError& error) {
                throw RunStopped{projectReadMessage(error.description())};
            }
        }
        // The project's companion is written from a picture; -o writes from the buffer.
        QImage montage;
        if (!options.saveProject.empty()) {
            try {
                montage = paintMontage(state.buffers, static_cast<int>(state.imageWidth),
                                       static_cast<int>(state.imageHeight));
            } catch (const RuntimeError& error) {
                throw RunStopped{"cannot paint the montage: " + error.description()};
            }
        }
        if (!options.output.empty()) {
            try {
                saveMontage(state.buffers, static_cast<int>(state.imageWidth),
                            static_cast<int>(state.imageHeight),
                            absoluteIn(currentFolder, options.output));
            } catch (const RuntimeError& error) {
                throw RunStopped{"cannot write " + options.output + ": " + error.description()};
            }
        }
        if (!options.report.empty()) {
            if (options.report == "-") {
                out << report;
            } else {
                try {
                    writeFileAtomically(absoluteIn(currentFolder, options.report), report);
                } catch (const RuntimeError& error) {
                    throw RunStopped{"cannot write " + options.report + ": " + error.description()};
                }
            }
        }
        if (!options.saveProject.empty()) {
            saveProject(absoluteIn(currentFolder, options.saveProject), report, montage);
        }
        if (options.score) {
            char line[64];
            std::snprintf(line, sizeof line, "score %.6f\n",
                          static_cast<double>(evaluateImage(state.buffers, state.imageWidth,
                                                            state.imageHeight, 10)));
            out << line;
        }
    } catch (const RunStopped& stop) {
        err << stop.text << "\n";
        return 1;
    }
    return 0;
}

}  // namespace lumiquilt
