#include <gtest/gtest.h>
#include <QApplication>

#include "series/picture_io.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    QApplication app(argc, argv);
    lumiquilt::configurePictureReading();
    return RUN_ALL_TESTS();
}
