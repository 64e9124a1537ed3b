// SPDX-License-Identifier: GPL-3.0-or-later
// The windows around the start: the splash picture and the start window.
#include "Globals.h"
#include "Settings.h"
#include "TempSettings.h"
#include "frm_Splash.h"
#include "frm_Startup.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QEnterEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QTimer>
#include <QToolButton>

#include <functional>

#include <gtest/gtest.h>

namespace {

const QString KeySettings = QStringLiteral("Software\\HARVOLD\\Sorano\\Settings");

void PressKey(QWidget* target, int key)
{
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QApplication::sendEvent(target, &press);
}

// Runs whileShown once the modal window is up, and show(); false when the window had to be
// closed after timeoutMs because nothing else closed it.
bool ClosesInTime(
    QDialog& dialog, const std::function<void()>& whileShown, const std::function<void()>& show, int timeoutMs = 5000)
{
    bool late = false;
    QTimer::singleShot(0, &dialog, whileShown);
    QTimer guard;
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, &dialog, [&] {
        late = true;
        dialog.reject();
    });
    guard.start(timeoutMs);
    show();
    return !late;
}

class StartupTest : public ::testing::Test
{
protected:
    void TearDown() override { g_lLangOffset = 0; }
    TempSettings roots;
};

TEST_F(StartupTest, SplashShowsForTheSecondsSettingWithinLimitsElseThreeAndEscClosesIt)
{
    const std::pair<double, int> cases[]
        = { { 0, 3000 }, { -2, 3000 }, { 20000, 3000 }, { 19999, 19999000 }, { 0.2, 200 } };
    for (const auto& [seconds, ms] : cases)
        EXPECT_EQ(frm_Splash::IntervalMs(seconds), ms) << seconds;
    for (const auto& [seconds, pressEsc] : { std::pair { "19999", true }, { "0.2", false } }) {
        roots.SetUser(KeySettings, "SplashScreenTime", seconds);
        frm_Splash splash;
        const auto esc = [&, pressEsc = pressEsc] {
            if (pressEsc)
                PressKey(&splash, Qt::Key_Escape);
        };
        EXPECT_TRUE(ClosesInTime(
            splash, esc, [&] { splash.ShowMe(); }, 2000))
            << seconds;
    }
}

// The result is the chosen button, Leave for Esc or closing; the show check reflects the setting
// and is written on every way of closing.
TEST_F(StartupTest, ResultIsTheChosenButtonAndTheShowCheckIsWrittenOnEveryWayOfClosing)
{
    const auto esc = [](frm_Startup& w) { PressKey(&w, Qt::Key_Escape); };
    const struct
    {
        const char* what;
        std::function<void(frm_Startup&)> act;
        int action;
        const char* stored;
        bool toggle;
        const char* written;
    } cases[] = {
        { "click 2", [](frm_Startup& w) { w.ActionButton(2)->click(); }, frm_Startup::OpenView, "1", true, "0" },
        { "Esc", esc, frm_Startup::Leave, "1", false, "1" },
        { "close", [](frm_Startup& w) { w.close(); }, frm_Startup::Leave, "", true, "1" },
        { "disabled 1, then Esc",
            [&](frm_Startup& w) {
                w.ActionButton(1)->click();
                esc(w);
            },
            frm_Startup::Leave, "1", false, "1" },
        { "Tab past the disabled 1, Enter",
            [](frm_Startup& w) {
                w.activateWindow(); // keyboard focus needs the active window
                QElapsedTimer waited;
                waited.start();
                while (!w.isActiveWindow() && waited.elapsed() < 3000)
                    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
                w.ActionButton(0)->setFocus();
                ASSERT_EQ(QApplication::focusWidget(), w.ActionButton(0));
                PressKey(QApplication::focusWidget(), Qt::Key_Tab);
                PressKey(QApplication::focusWidget(), Qt::Key_Return);
            },
            frm_Startup::OpenView, "1", false, "1" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        roots.SetUser(KeySettings, "ShowStartupWindow", c.stored);
        frm_Startup window("Sorano");
        window.SetActionEnabled(frm_Startup::NewView, false);
        EXPECT_EQ(window.ShowCheck()->isChecked(), *c.stored == '1');
        if (c.toggle)
            window.ShowCheck()->toggle();
        int action = -1;
        EXPECT_TRUE(ClosesInTime(
            window, [&] { c.act(window); }, [&] { action = window.ShowMe(); }));
        EXPECT_EQ(action, c.action);
        EXPECT_EQ(Settings::StoredValue(Settings::Id::ShowStartupWindow), c.written);
    }
}

TEST_F(StartupTest, PointingAtAButtonShowsItsHintInTheWindowsLanguage)
{
    const struct
    {
        int langOffset;
        int button;
        const char* hint;
    } cases[] = {
        { 0, 2, "Eine bestehende, früher gespeicherte Messungsansicht öffnen..." }, // from the string table
        { 1000, 0, "Leave the start screen ..." },
    };
    for (const auto& c : cases) {
        g_lLangOffset = c.langOffset;
        frm_Startup window("Sorano");
        EXPECT_EQ(window.windowTitle(), c.langOffset ? "Welcome to Sorano" : "Willkommen bei Sorano");
        QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
        QApplication::sendEvent(window.ActionButton(c.button), &enter);
        EXPECT_EQ(window.HelpLabel()->text(), QString::fromUtf8(c.hint)) << c.langOffset << "/" << c.button;
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(window.ActionButton(c.button), &leave);
        EXPECT_EQ(window.HelpLabel()->text(), "");
    }
}

} // namespace
