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
#include "engine/create_image.h"
#include "engine/evaluate_image.h"
#include "engine/measures.h"
#include "engine/properties_report.h"
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
    "       lumiquilt-cli compare FIRST [options]\n"
    "       lumiquilt-cli evaluate FIRST [options] [--all-methods]\n"
    "       lumiquilt-cli --help | --version\n"
    "options:\n"
    "  -i, --increment TEXT   block size, read as the Increment field is (default 20)\n"
    "  -m, --method N         Exposure Method 0 to 6, in menu order (default 0)\n"
    "  --ignore LIST          image numbers 1 to 10, comma-separated\n"
    "  --offsets MODE         min, max or same\n"
    "  --mark K:X,Y           centre of image K's target mark, Y downward\n"
    "  -o, --output FILE      write the montage (.bmp, .jpg, .jpeg, .gif, .png)\n"
    "  --report FILE          write the run's report; - for standard output\n"
    "  --score                print the seam score at block size 10\n"
    "  --save-project FILE    montage only: also write the project file and its\n"
    "                         companion picture, as Save a Project does\n";

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
    std::string saveProject;
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
        } else if (a == "--save-project") {
            o.saveProject = value(a);
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

// The command-line side of a run: the options are the controls, the decoded series
// stands in for the picture windows, and messages go to standard error.
class CliFront : public CreateImageFront {
  public:
    CliFront(const Options& options, const ProgramState& state, std::ostream& err, bool progress)
        : m_options(options),
          m_state(state),
          m_incrementText(options.incrementText),
          m_fileName(options.first),
          m_err(err),
          m_progress(progress) {}

    RunChoices choices() override {
        RunChoices c;
        c.incrementText = m_incrementText;
        c.methodChecked[static_cast<size_t>(m_options.method)] = true;
        c.ignored = m_options.ignored;
        return c;
    }
    void setIncrementText(const std::string& text) override { m_incrementText = text; }
    std::string fileNameText() override { return m_fileName; }
    void setFileNameText(const std::string& text) override { m_fileName = text; }
    void message(const std::string& text, const std::string& /*title*/,
                 MessageIcon /*icon*/) override {
        m_err << text << "\n";
    }

    void seriesFound(const SeriesPattern& pattern) override {
        progress("decoding the series");
        m_pictures.clear();
        m_members = decodeSeries(pattern, 2);
        m_loader = loaderFor(m_members, m_pictures);
    }
    void loadMember(int k, const std::string& fileName) override { m_loader(k, fileName); }
    PictureView memberPicture(int k) override {
        const size_t i = static_cast<size_t>(k - 1);
        return i < m_pictures.size() ? viewOf(m_pictures[i]) : PictureView{};
    }
    void startPreview() override {
        progress("building the montage");
        m_row = 0;
    }
    void seriesRead() override {
        // A single montage never reads its pictures again: the memory is the output's.
        m_members.clear();
        m_members.shrink_to_fit();
        if (m_options.command == "montage") {
            m_pictures.clear();
            m_pictures.shrink_to_fit();
        }
    }
    void previewRow(int16_t /*y0*/) override {
        ++m_row;
        const int rows = static_cast<int>(m_state.imageHeight) / m_state.increment + 1;
        if (m_progress && (m_row % 16 == 0 || m_row == rows)) {
            m_err << "\rrow " << m_row << " of " << rows << std::flush;
        }
    }
    void showMontage() override {
        if (m_progress) {
            m_err << "\n";
        }
    }

  private:
    void progress(const char* what) {
        if (m_progress) {
            m_err << what << "...\n";
        }
    }

    const Options& m_options;
    const ProgramState& m_state;
    std::string m_incrementText;
    std::string m_fileName;
    std::ostream& m_err;
    bool m_progress;
    std::vector<DecodedMember> m_members;
    std::vector<QImage> m_pictures;
    MemberLoader m_loader;
    int m_row = 0;
};

std::string absoluteIn(const std::string& folder, const std::string& name) {
    return isAbsoluteName(name) ? name : folder + "/" + name;
}

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

}  // namespace

int runCli(const std::vector<std::string>& arguments, const std::string& currentFolder,
           std::ostream& out, std::ostream& err, bool showProgress) {
    if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h")) {
        out << kUsage;
        return 0;
    }
    if (arguments.size() == 1 && arguments[0] == "--version") {
        out << "lumiquilt-cli " << LUMIQUILT_VERSION << "\n";
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
        ProgramState state;
        initialiseProgramState(state);
        // Relative names are taken from the current folder.
        state.appPath = currentFolder;
        if (state.appPath.empty() || state.appPath.back() != '/') {
            state.appPath += '/';
        }
        CliFront front(options, state, err, showProgress);
        if (createImage(state, front) != RunEnd::completed) {
            return 1;
        }
        // Painted only for a file that takes it.
        QImage montage;
        if (!options.output.empty() || !options.saveProject.empty()) {
            try {
                montage = paintMontage(state.buffers, static_cast<int>(state.imageWidth),
                                       static_cast<int>(state.imageHeight));
            } catch (const RuntimeError& error) {
                throw RunStopped{"cannot paint the montage: " + error.description()};
            }
        }
        if (!options.output.empty()) {
            try {
                const std::string target = absoluteIn(currentFolder, options.output);
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
                out << state.propertiesString;
            } else {
                try {
                    writeFileAtomically(absoluteIn(currentFolder, options.report),
                                        state.propertiesString);
                } catch (const RuntimeError& error) {
                    throw RunStopped{"cannot write " + options.report + ": " + error.description()};
                }
            }
        }
        if (!options.saveProject.empty()) {
            saveProject(absoluteIn(currentFolder, options.saveProject), state.propertiesString,
                        montage);
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
