// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_Splash.h"

#include "Settings.h"

#include <QGuiApplication>
#include <QIcon>
#include <QLabel>
#include <QPixmap>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace {

constexpr int DefaultIntervalMs = 3000;
constexpr double LongestSeconds = 20000;
const QSize PictureSize(480, 300);

} // namespace

frm_Splash::frm_Splash(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
{
    setObjectName(QStringLiteral("frm_Splash"));
    m_picture = new QLabel(this);
    m_picture->setObjectName(QStringLiteral("img_Splash"));
    m_picture->setPixmap(QIcon(QStringLiteral(":/pictures/splash.svg")).pixmap(PictureSize));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_picture);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    m_timer.setSingleShot(false);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_timer.stop();
        accept();
    });
    connect(this, &QDialog::finished, &m_timer, &QTimer::stop);
}

int frm_Splash::IntervalMs(double seconds)
{
    if (!(seconds > 0 && seconds < LongestSeconds))
        return DefaultIntervalMs;
    return std::max(1, int(std::lround(seconds * 1000)));
}

void frm_Splash::ShowMe()
{
    using Settings::Id;
    const QString file = Settings::Value(Id::SplashPicture);
    if (!file.isEmpty()) {
        QPixmap own;
        if (own.load(file))
            m_picture->setPixmap(own);
    }
    m_timer.setInterval(IntervalMs(Settings::Number(Id::SplashScreenTime)));

    adjustSize();
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
    m_timer.start();
    exec();
}
