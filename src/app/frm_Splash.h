// SPDX-License-Identifier: GPL-3.0-or-later
// The frameless splash picture shown while the program starts.
#pragma once

#include <QDialog>
#include <QTimer>

class QLabel;

class frm_Splash : public QDialog
{
    Q_OBJECT
public:
    explicit frm_Splash(QWidget* parent = nullptr);

    // Shows the picture modally until its time has run out or Esc is pressed. The installation's
    // "SplashPicture" replaces the built-in picture, "SplashScreenTime" gives the seconds.
    void ShowMe();

    // The display time in ms for a "SplashScreenTime" of seconds: 3 s unless 0 < seconds < 20000.
    static int IntervalMs(double seconds);

private:
    QLabel* m_picture = nullptr;
    QTimer m_timer;
};
