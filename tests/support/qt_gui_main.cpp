#include <gtest/gtest.h>
#include <QGuiApplication>

#include "series/picture_io.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    QGuiApplication app(argc, argv);
    lumiquilt::configurePictureReading();
    return RUN_ALL_TESTS();
}
