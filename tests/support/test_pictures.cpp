#include "test_pictures.h"

#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace lumiquilt::testing {

namespace fs = std::filesystem;

TestFolder::TestFolder() {
    static std::atomic<int> counter{0};
    m_root = (fs::temp_directory_path() /
              ("lumiquilt_test_" + std::to_string(::getpid()) + "_" + std::to_string(counter++)))
                 .string();
    fs::remove_all(m_root);
    fs::create_directories(m_root);
}

TestFolder::~TestFolder() {
    std::error_code ec;
    fs::permissions(m_root, fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(m_root, ec);
}

std::string TestFolder::path(const std::string& name) const {
    return m_root + "/" + name;
}

QImage patternPicture(int width, int height, int seed) {
    QImage image(width, height, QImage::Format_RGB888);
    for (int y = 0; y < height; ++y) {
        uchar* row = image.scanLine(y);
        for (int x = 0; x < width; ++x) {
            row[3 * x] = static_cast<uchar>((x * 7 + seed * 31) & 0xFF);
            row[3 * x + 1] = static_cast<uchar>((y * 5 + seed * 17) & 0xFF);
            row[3 * x + 2] = static_cast<uchar>(((x + y) * 3 + seed * 53) & 0xFF);
        }
    }
    return image;
}

QImage shiftedScene(int width, int height, int dx, int dy, double gain) {
    QImage image(width, height, QImage::Format_RGB888);
    for (int y = 0; y < height; ++y) {
        uchar* row = image.scanLine(y);
        for (int x = 0; x < width; ++x) {
            const unsigned sx = static_cast<unsigned>(x - dx);
            const unsigned sy = static_cast<unsigned>(y - dy);
            // Smooth gradients with some texture, so that the measures differ by place.
            const unsigned texture = ((sx * 2654435761u) ^ (sy * 40503u)) >> 28;
            const double base[3] = {static_cast<double>((sx * 3 + texture) & 0xFF),
                                    static_cast<double>((sy * 4 + texture) & 0xFF),
                                    static_cast<double>(((sx + sy) * 2) & 0xFF)};
            for (int c = 0; c < 3; ++c) {
                row[3 * x + c] = static_cast<uchar>(std::min(255.0, base[c] * gain));
            }
        }
    }
    return image;
}

QImage flatPicture(int width, int height, QColor color) {
    QImage image(width, height, QImage::Format_RGB888);
    image.fill(color);
    return image;
}

void savePictureFile(const QImage& picture, const std::string& fileName) {
    ASSERT_TRUE(picture.save(QString::fromStdString(fileName))) << fileName;
}

void writeBytes(const std::string& fileName, const std::string& bytes) {
    std::ofstream(fileName, std::ios::binary) << bytes;
}

std::string readBytes(const std::string& fileName) {
    std::ifstream in(fileName, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

}  // namespace lumiquilt::testing
