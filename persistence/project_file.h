#pragma once

#include <string>
#include <string_view>

namespace lumiquilt {

/// The project file's section, and the filter of its file dialogs.
inline constexpr std::string_view kProjectSection = "project";
inline constexpr std::string_view kProjectFilter =
    "Project files  (*.mon)|*.mon|All files  (*.*)|*.*|";

/// The messages of the project commands; all of them carry kProjectMessageTitle
/// and a critical icon.
inline constexpr std::string_view kProjectMessageTitle = "Do you always have bad luck like this?";
inline constexpr std::string_view kProjectMissingMessage =
    "There is a problem in reading that file.   It appears not to exist.   Try another project "
    "file.";
/// Opening failed after the project was found; description is the error's.
std::string projectReadMessage(std::string_view description);
/// Saving failed; description is the error's.
std::string projectWriteMessage(std::string_view description);

/// The project name proposed for a series: the text up to and with its first
/// "." and "mon" behind it, or the text and ".mon" when it has no dot. The first
/// dot counts, also in a folder's name.
std::string proposeProjectName(std::string_view fileNameText);

/// The companion picture of a project: its name less the last three characters,
/// and "qvz". Raises error 5 for a name shorter than three characters.
std::string companionPictureName(std::string_view projectName);

/// The recent-list item of a project: "project " and its name less the last four
/// characters. Raises error 5 for a name shorter than four characters.
std::string recentProjectItem(std::string_view projectName);

/// True when a text names a project of the recent list ("project " at its start).
bool isRecentProjectItem(std::string_view text);

/// The project a recent-list item names: the text from its ninth character and ".mon".
std::string projectNameFromRecentItem(std::string_view item);

/// The bytes of a project file: "[project]", CR LF, the report, and one more CR LF.
std::string projectFileText(std::string_view propertiesText);

/// A value of the project file as Open reads it: the profile value of section
/// "project" (default "0", at most 254 characters, cut at a NUL), blanks trimmed.
std::string readProjectValue(const std::string& projectName, std::string_view key);

/// The three areas of the offset display, as a project names them.
enum class OffsetDisplay { minimum, maximum, same };

/// Where an opened project's values go, called in the order Open restores them.
class ProjectRestore {
  public:
    virtual ~ProjectRestore() = default;
    /// The text of the first file's field.
    virtual void setFirstFileName(const std::string& text) = 0;
    /// Unchecks every Exposure Method, then checks the stored one (0 to 6).
    virtual void uncheckMethods() = 0;
    virtual void checkMethod(int index) = 0;
    virtual void setIncrementText(const std::string& text) = 0;
    /// The count of images loaded before the project: the marks of images 1 to
    /// this count are placed.
    virtual int imageCount() const = 0;
    /// Offsets on and the status strip shown, before any mark is placed.
    virtual void offsetsOn() = 0;
    /// Shows image n's marks centred on the stored point, in picture pixels.
    virtual void placeMark(int n, double centreX, double centreY) = 0;
    /// After the last mark: the status text and the strip's place.
    virtual void marksPlaced() = 0;
    /// Checks one display area and unchecks the other two.
    virtual void setOffsetDisplay(OffsetDisplay display) = 0;
    /// Offsets off, the strip hidden, the marks of images 1 to imageCount hidden.
    virtual void offsetsOff() = 0;
    /// The ignore check of image index + 1, index 0 to 9.
    virtual void setIgnored(int index, bool ignored) = 0;
};

/// Reads a project's values and hands them to target, in this order: the first
/// file name, the method, the increment, the offsets (decided by "Image 1 offset
/// X" alone: "0" means none) with the marks and the display area, and last the
/// ignored images. A failure stops at its step, and what was restored stays:
/// a method number outside 0 to 6 raises error 9, beyond 16 bits error 6.
void restoreProject(const std::string& projectName, ProjectRestore& target);

/// True when the number stands in an ignore list ("1, 3, 10") as a whole item.
bool listHoldsNumber(std::string_view list, int number);

/// The text of a project file below its first line, as Open reads it back.
struct ProjectText {
    /// Every line after the first, each with CR LF behind it.
    std::string propertiesString;
    /// The lines behind the "dominant image numbers" heading, each with CR LF.
    std::string usedCaption;
};

/// Reads the report of a project file line by line. A line ends at CR LF, a
/// lone CR or a lone LF. Raises error 53 when the file can't be opened.
ProjectText readProjectText(const std::string& projectName);

/// Writes a project file and its companion picture so that the targets change
/// only when both are whole. Each is written to a temporary name beside its
/// target; commit() renames them over the targets, the companion first, so that
/// a project file never stands without the picture it names. Whatever hasn't
/// been committed is removed when the object goes, and the old files stay as
/// they were.
class ProjectSave {
  public:
    /// Refuses (error 70) when either target exists read-only, before anything
    /// is written.
    explicit ProjectSave(std::string projectName);
    ~ProjectSave();
    ProjectSave(const ProjectSave&) = delete;
    ProjectSave& operator=(const ProjectSave&) = delete;

    const std::string& projectName() const { return m_projectName; }
    const std::string& companionName() const { return m_companionName; }

    /// Writes the project file's bytes (projectFileText of the report) to its
    /// temporary name. Throws RuntimeError (61 disk full, 70, 75, 76).
    void writeText(std::string_view propertiesText);

    /// Hands the companion's temporary name to write, which writes a BMP there
    /// or throws. The file is synced once write returns; a missing or empty file
    /// counts as a failed write (error 75).
    template <typename Write>
    void writeCompanion(Write&& write) {
        const std::string name = startCompanion();
        write(name);
        finishCompanion();
    }

    /// Renames both temporary files over their targets, the companion first.
    /// Throws RuntimeError when writeText or writeCompanion has not succeeded.
    void commit();

  private:
    std::string startCompanion();
    void finishCompanion();
    void discard();

    std::string m_projectName;
    std::string m_companionName;
    std::string m_textTemporary;
    std::string m_companionTemporary;
    bool m_companionWhole = false;
};

}  // namespace lumiquilt
