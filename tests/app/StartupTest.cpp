// SPDX-License-Identifier: GPL-3.0-or-later
// The small windows around the start: the splash picture, the start window and the about box.
#include "Globals.h"
#include "RegistryKey.h"
#include "Settings.h"
#include "TempSettings.h"
#include "Version.h"
#include "frm_Info.h"
#include "frm_Splash.h"
#include "frm_Startup.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QEnterEvent>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>

#include <functional>

#include <gtest/gtest.h>

namespace {

const QString KeySorano = QStringLiteral("Software\\HARVOLD\\Sorano");
const QString KeySettings = QStringLiteral("Software\\HARVOLD\\Sorano\\Settings");

void PressKey(QWidget* target, int key)
{
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(target, &press);
}

// Keyboard focus needs the window to be the active one, which the platform confirms later.
bool WaitUntilActive(QWidget& window)
{
    window.activateWindow();
    QElapsedTimer waited;
    waited.start();
    while (!window.isActiveWindow() && waited.elapsed() < 3000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return window.isActiveWindow();
}

// Runs whileShown as soon as the modal window is up; closes the window after timeoutMs in any
// case, so that a window that doesn't close fails the test instead of hanging it.
class ModalGuard
{
public:
    ModalGuard(QDialog& dialog, std::function<void()> whileShown, int timeoutMs = 5000)
    {
        QTimer::singleShot(0, &dialog, std::move(whileShown));
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, &dialog, [this, &dialog] {
            m_fired = true;
            dialog.reject();
        });
        m_timer.start(timeoutMs);
    }
    bool Fired() const { return m_fired; }

private:
    QTimer m_timer;
    bool m_fired = false;
};

QString MakePicture(const QString& folder, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    const QString file = folder + "/own.png";
    EXPECT_TRUE(image.save(file));
    return file;
}

class StartWindowsTest : public ::testing::Test
{
protected:
    void TearDown() override { g_lLangOffset = 0; }
    TempSettings roots;
};

using SplashTest = StartWindowsTest;

TEST_F(SplashTest, IntervalIsTheSecondsSettingWithinLimitsElseThreeSeconds)
{
    const struct
    {
        double seconds;
        int ms;
    } cases[] = { { 0, 3000 }, { -2, 3000 }, { 20000, 3000 }, { 25000, 3000 }, { 19999, 19999000 }, { 1, 1000 },
        { 2.5, 2500 }, { 0.2, 200 } };
    for (const auto& c : cases)
        EXPECT_EQ(frm_Splash::IntervalMs(c.seconds), c.ms) << c.seconds;
}

TEST_F(SplashTest, EscOrTheEndOfItsTimeClosesTheSplash)
{
    const struct
    {
        const char* seconds;
        bool pressEsc;
    } cases[] = { { "19999", true }, { "0.2", false } };
    for (const auto& c : cases) {
        roots.SetUser(KeySettings, "SplashScreenTime", c.seconds);
        frm_Splash splash;
        ModalGuard guard(
            splash,
            [&] {
                EXPECT_TRUE(splash.isVisible());
                if (c.pressEsc)
                    PressKey(&splash, Qt::Key_Escape);
            },
            2000);
        splash.ShowMe();
        EXPECT_FALSE(guard.Fired()) << c.seconds;
        EXPECT_FALSE(splash.isVisible());
    }
}

TEST_F(SplashTest, InstallationPictureReplacesTheBuiltInOne)
{
    roots.SetMachine(KeySorano, "SplashPicture", MakePicture(roots.Path(), QSize(120, 70)));
    roots.SetUser(KeySettings, "SplashScreenTime", "0.05");
    frm_Splash splash;
    QSize shown;
    ModalGuard guard(splash, [&] { shown = splash.size(); });
    splash.ShowMe();
    EXPECT_EQ(shown, QSize(120, 70));

    // A picture that can't be read leaves the built-in one.
    roots.SetMachine(KeySorano, "SplashPicture", roots.Path() + "/missing.png");
    frm_Splash builtIn;
    ModalGuard guard2(builtIn, [&] { shown = builtIn.size(); });
    builtIn.ShowMe();
    EXPECT_EQ(shown, QSize(480, 300));
}

using StartupTest = StartWindowsTest;

TEST_F(StartupTest, ResultIsTheChosenButtonAndLeaveForEscOrClosing)
{
    const struct
    {
        const char* what;
        std::function<void(frm_Startup&)> act;
        int action;
    } cases[] = {
        { "click 2", [](frm_Startup& w) { w.ActionButton(2)->click(); }, frm_Startup::OpenView },
        { "click 3", [](frm_Startup& w) { w.ActionButton(3)->click(); }, frm_Startup::ManageData },
        { "Esc", [](frm_Startup& w) { PressKey(&w, Qt::Key_Escape); }, frm_Startup::Leave },
        { "close", [](frm_Startup& w) { w.close(); }, frm_Startup::Leave },
        { "Tab past the disabled 1, Enter",
            [](frm_Startup& w) {
                ASSERT_TRUE(WaitUntilActive(w));
                w.ActionButton(0)->setFocus();
                ASSERT_EQ(QApplication::focusWidget(), w.ActionButton(0));
                PressKey(QApplication::focusWidget(), Qt::Key_Tab);
                PressKey(QApplication::focusWidget(), Qt::Key_Return);
            },
            frm_Startup::OpenView },
        { "disabled 1, then Esc",
            [](frm_Startup& w) {
                w.ActionButton(1)->click();
                PressKey(&w, Qt::Key_Escape);
            },
            frm_Startup::Leave },
    };
    for (const auto& c : cases) {
        frm_Startup window("Sorano");
        window.SetActionEnabled(frm_Startup::NewView, false);
        ModalGuard guard(window, [&] { c.act(window); });
        EXPECT_EQ(window.ShowMe(), c.action) << c.what;
        EXPECT_FALSE(guard.Fired()) << c.what;
    }
}

TEST_F(StartupTest, ShowCheckReflectsTheSettingAndIsWrittenOnClosing)
{
    const struct
    {
        const char* stored;
        bool checked;
        bool toggle;
        std::function<void(frm_Startup&)> close;
        const char* written;
    } cases[] = {
        { "1", true, false, [](frm_Startup& w) { PressKey(&w, Qt::Key_Escape); }, "1" },
        { "1", true, true, [](frm_Startup& w) { w.ActionButton(2)->click(); }, "0" },
        { "", false, true, [](frm_Startup& w) { w.close(); }, "1" },
        { "0", false, false, [](frm_Startup& w) { w.ActionButton(4)->click(); }, "0" },
    };
    for (const auto& c : cases) {
        roots.SetUser(KeySettings, "ShowStartupWindow", c.stored);
        frm_Startup window("Sorano");
        EXPECT_EQ(window.ShowCheck()->isChecked(), c.checked) << c.stored;
        if (c.toggle)
            window.ShowCheck()->toggle();
        ModalGuard guard(window, [&] { c.close(window); });
        window.ShowMe();
        EXPECT_EQ(Settings::StoredValue(Settings::Id::ShowStartupWindow), c.written) << c.stored;
    }
}

TEST_F(StartupTest, PointingAtAButtonShowsItsHintInTheWindowsLanguage)
{
    const struct
    {
        int langOffset;
        const char* title;
        int button;
        const char* hint;
    } cases[] = {
        { 0, "Willkommen bei Sorano", 0, "Startbildschirm verlassen ..." },
        { 0, "Willkommen bei Sorano", 2, "Eine bestehende, früher gespeicherte Messungsansicht öffnen..." },
        { 0, "Willkommen bei Sorano", 3, "Messdaten verwalten ..." },
        { 1000, "Welcome to Sorano", 0, "Leave the start screen ..." },
        { 1000, "Welcome to Sorano", 1, "Create a new measurement view..." },
        { 1000, "Welcome to Sorano", 3, "Manage measured data ..." },
    };
    for (const auto& c : cases) {
        g_lLangOffset = c.langOffset;
        frm_Startup window("Sorano");
        EXPECT_EQ(window.windowTitle(), c.title);
        QToolButton* button = window.ActionButton(c.button);
        QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
        QApplication::sendEvent(button, &enter);
        EXPECT_EQ(window.HelpLabel()->text(), QString::fromUtf8(c.hint)) << c.langOffset << "/" << c.button;
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(button, &leave);
        EXPECT_EQ(window.HelpLabel()->text(), "");
    }
}

using InfoTest = StartWindowsTest;

TEST_F(InfoTest, ShowsVersionNoticeAndTheVendorsLogoAndLinkWhenSet)
{
    const QString version
        = QString("Version: %1.%2.%3").arg(SoranoVersionMajor).arg(SoranoVersionMinor).arg(SoranoVersionRevision);
    const QString ownLogo = MakePicture(roots.Path(), QSize(40, 20));
    const struct
    {
        const char* url;
        QString logo;
        QSize logoSize;
    } cases[] = { { "", "", QSize(96, 96) }, { "https://example.org/a?b=1&c=2", ownLogo, QSize(40, 20) } };
    for (const auto& c : cases) {
        roots.SetMachine(KeySorano, "VendorURL", c.url);
        roots.SetMachine(KeySorano, "VendorLogo", c.logo);
        frm_Info info;
        ModalGuard guard(info, [&] {
            EXPECT_EQ(info.findChild<QLabel*>("lbl_Name")->text(), "Sorano");
            EXPECT_EQ(info.findChild<QLabel*>("lbl_Version")->text(), version);
            EXPECT_EQ(info.findChild<QLabel*>("lbl_Notice")->text(), "SoRaNo - Viewer für Messdaten");
            EXPECT_EQ(info.findChild<QLabel*>("img_Logo")->pixmap().size(), c.logoSize);
            const QLabel* link = info.findChild<QLabel*>("lbl_URL");
            EXPECT_EQ(link->isVisible(), *c.url != 0) << c.url;
            if (*c.url) {
                EXPECT_TRUE(link->text().contains("href=\"https://example.org/a?b=1&amp;c=2\""))
                    << link->text().toStdString();
            }
            QPushButton* close = info.findChild<QPushButton*>("cmd_Close");
            EXPECT_EQ(close->text(), "&Schliessen");
            close->click();
        });
        info.ShowMe("Sorano");
        EXPECT_FALSE(guard.Fired()) << c.url;
    }
}

} // namespace
