#include <QApplication>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

/// Runs on a screen of its own, with input of the real window system.
int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    QProcess screen;
    // It goes with its last window's program, however that ends.
    screen.start(QStringLiteral("Xvfb"),
        {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-terminate"),
            QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("1600x900x24"),
            QStringLiteral("-nolisten"), QStringLiteral("tcp")});
    QByteArray number;
    while (!number.endsWith('\n') && screen.waitForReadyRead(20'000))
        number += screen.readAllStandardOutput();
    if (number.isEmpty()) {
        qCritical("no screen: is Xvfb installed?");
        return 1;
    }
    qputenv("DISPLAY", ':' + number.trimmed());
    qputenv("QT_QPA_PLATFORM", "xcb");
    const QTemporaryDir announcements;
    qputenv("XDG_RUNTIME_DIR", announcements.path().toLocal8Bit());
    int result = 1;
    {
        QApplication application(argc, argv);
        result = RUN_ALL_TESTS();
    }
    screen.waitForFinished(5'000);
    return result;
}
