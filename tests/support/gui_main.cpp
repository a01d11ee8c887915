#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // An instance that another test installs at the same time is announced to nobody here.
    const QTemporaryDir announcements;
    qputenv("XDG_RUNTIME_DIR", announcements.path().toLocal8Bit());
    testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
