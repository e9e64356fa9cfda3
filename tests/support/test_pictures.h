#pragma once

#include <QColor>
#include <QImage>
#include <QString>
#include <string>

namespace lumiquilt::testing {

/// A folder of its own for one test, removed when the object goes.
class TestFolder {
  public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    /// Full name of a file in the folder.
    std::string path(const std::string& name) const;
    const std::string& root() const { return m_root; }

  private:
    std::string m_root;
};

/// A picture of width by height whose pixel (x, y) depends on x, y and seed,
/// so that pictures of one size still differ.
QImage patternPicture(int width, int height, int seed);

/// A picture of one fixed scene, moved right by dx and down by dy and brightened by
/// gain (1.0 keeps it): a series of these is a bracket taken by hand.
QImage shiftedScene(int width, int height, int dx, int dy, double gain);

/// A picture in one colour.
QImage flatPicture(int width, int height, QColor color);

/// Saves a picture; the format comes from the name. Fails the test on error.
void savePictureFile(const QImage& picture, const std::string& fileName);

/// Writes bytes to a file as they are.
void writeBytes(const std::string& fileName, const std::string& bytes);
std::string readBytes(const std::string& fileName);

}  // namespace lumiquilt::testing
