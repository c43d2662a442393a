#include "qt/wrapper.h"

#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    if (!Vantrel::QtWrapper::install()) {
        return 1;
    }
    return RUN_ALL_TESTS();
}
