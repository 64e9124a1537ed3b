// SPDX-License-Identifier: GPL-3.0-or-later
// Test entry: a Qt application on the offscreen platform, settings kept away from the user's.
#include <QApplication>
#include <QStandardPaths>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // Offscreen unless a platform is asked for, as for pictures of real windows under Xvfb.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName("HARVOLD");
    QCoreApplication::setApplicationName("Sorano");
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
