// Runs the tests of windows.
#include <gtest/gtest.h>

#include <QApplication>

#include "controls/skin.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    melvane::applyStyle(app);
    return RUN_ALL_TESTS();
}
