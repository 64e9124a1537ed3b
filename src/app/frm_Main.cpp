// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_Main.h"

#include "Numeric.h"
#include "Settings.h"

#include <QAction>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QMdiArea>
#include <QProgressBar>
#include <QScreen>
#include <QShortcut>
#include <QStatusBar>

#include <utility>

frm_Main::frm_Main(QWidget* parent)
    : QMainWindow(parent)
{
    setObjectName(QStringLiteral("frm_Main"));
    m_mdiArea = new QMdiArea(this);
    m_mdiArea->setObjectName(QStringLiteral("mdi_Documents"));
    // Views moved past the edge stay reachable.
    m_mdiArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_mdiArea->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(m_mdiArea);
    // Ctrl+Tab and Ctrl+Shift+Tab go through the views in the order the window menu lists them.
    auto* next = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Tab), this);
    connect(next, &QShortcut::activated, m_mdiArea, &QMdiArea::activateNextSubWindow);
    auto* previous = new QShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Backtab), this);
    connect(previous, &QShortcut::activated, m_mdiArea, &QMdiArea::activatePreviousSubWindow);

    // The status band's label and the progress bar go into the tool registry's status band.
    m_lblStatus = new QLabel(this);
    m_lblStatus->setObjectName(QStringLiteral("lblStatus"));
    m_lblStatus->hide();
    m_prgState = new QProgressBar(this);
    m_prgState->setObjectName(QStringLiteral("prg_State"));
    m_prgState->setRange(0, 100);
    m_prgState->setMaximumWidth(220);
    m_prgState->setTextVisible(false);
    m_prgState->setVisible(false);

    LoadPlacement();
}

QAction* frm_Main::Tool(const QString& name) const
{
    return name.isEmpty() ? nullptr : findChild<QAction*>(name);
}

void frm_Main::SetStatusLabel(QLabel* label)
{
    if (!label || label == m_lblStatus)
        return;
    label->setText(m_lblStatus->text());
    delete m_lblStatus.data();
    m_lblStatus = label;
}

void frm_Main::LoadPlacement()
{
    using Settings::Id;
    const QString state = Settings::Value(Id::WindowState);
    if (state.isEmpty()) {
        // First start: three quarters of the screen, centred.
        const QScreen* screen = QGuiApplication::primaryScreen();
        const QSize size = screen ? screen->size() : QSize(1024, 768);
        resize(size.width() / 4 * 3, size.height() / 4 * 3);
        move(size.width() / 8, size.height() / 8);
        return;
    }
    // A window closed minimised comes back in its normal state.
    if (IsNumeric(state)) {
        const int number = ClampToInt(LeadingNumber(state));
        if (number == 2)
            m_initialState = Qt::WindowMaximized;
    }
    const auto left = Settings::StrictNumber(Id::WindowLeft);
    const auto top = Settings::StrictNumber(Id::WindowTop);
    const auto width = Settings::StrictNumber(Id::WindowWidth);
    const auto height = Settings::StrictNumber(Id::WindowHeight);
    QPoint position = pos();
    QSize extent = size();
    if (left)
        position.setX(ClampToInt(*left));
    if (top)
        position.setY(ClampToInt(*top));
    if (width)
        extent.setWidth(ClampToInt(*width));
    if (height)
        extent.setHeight(ClampToInt(*height));
    move(position);
    resize(extent);
}

void frm_Main::SavePlacement()
{
    using Settings::Id;
    int state = 0;
    if (isMinimized())
        state = 1;
    else if (isMaximized())
        state = 2;
    if (state == 0) {
        Settings::Write(Id::WindowLeft, QString::number(x()));
        Settings::Write(Id::WindowTop, QString::number(y()));
        Settings::Write(Id::WindowWidth, QString::number(width()));
        Settings::Write(Id::WindowHeight, QString::number(height()));
    }
    Settings::Write(Id::WindowState, QString::number(state));
}

void frm_Main::ShowMe()
{
    if (m_initialState & Qt::WindowMaximized)
        showMaximized();
    else
        show();
}

void frm_Main::Unload()
{
    m_bUnloading = true;
    if (isVisible())
        close();
    SavePlacement();
    hide();
}

void frm_Main::closeEvent(QCloseEvent* event)
{
    SavePlacement();
    if (m_bUnloading || !m_closeRequest) {
        event->accept();
        return;
    }
    if (m_closeRequest())
        event->accept();
    else
        event->ignore();
}
