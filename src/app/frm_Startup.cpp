// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_Startup.h"

#include "Globals.h"
#include "Help.h"
#include "ResStrings.h"
#include "Settings.h"

#include <QCheckBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QPixmap>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

constexpr qint32 HelpContext = 1002;
const QSize PictureSize(480, 140);
const QSize IconSize(48, 48);

struct ButtonText
{
    const char* icon;
    const char* german; ///< caption with its mnemonic
    const char* english;
    int hintId; ///< string table id of the hint; 0: the two texts that follow
    const char* hintGerman;
    const char* hintEnglish;
};

// In the order of the actions.
const ButtonText Buttons[frm_Startup::ActionCount] = {
    { "leave.svg", "&Verlassen", "&Leave", 0, "Startbildschirm verlassen ...", "Leave the start screen ..." },
    { "newview.svg", "&Neue Ansicht", "&New view", 344, nullptr, nullptr },
    { "openview.svg", "Ansicht ö&ffnen", "&Open view", 345, nullptr, nullptr },
    { "managedata.svg", "&Messdaten", "&Measured data", 0, "Messdaten verwalten ...", "Manage measured data ..." },
    { "online.svg", "On&line", "On&line", 347, nullptr, nullptr },
};

bool English()
{
    return g_lLangOffset >= 1000;
}

} // namespace

frm_Startup::frm_Startup(const QString& applicationName, QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_Startup"));
    const QString name = applicationName.isEmpty() ? Settings::Value(Settings::Id::ApplicationName) : applicationName;
    setWindowTitle(GetResString(342).replace(QLatin1Char('@'), name));

    m_picture = new QLabel(this);
    m_picture->setObjectName(QStringLiteral("img_Startup"));
    m_picture->setAlignment(Qt::AlignCenter);
    QPixmap picture;
    const QString file = Settings::Value(Settings::Id::StartupPicture);
    if (file.isEmpty() || !picture.load(file))
        picture = QIcon(QStringLiteral(":/pictures/startup.svg")).pixmap(PictureSize);
    m_picture->setPixmap(picture);

    auto* row = new QHBoxLayout;
    row->setSpacing(4);
    for (int action = 0; action < ActionCount; ++action) {
        const ButtonText& text = Buttons[action];
        auto* button = new QToolButton(this);
        button->setObjectName(QStringLiteral("cmd_Action%1").arg(action));
        button->setAutoRaise(true);
        button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        button->setIcon(QIcon(QStringLiteral(":/pictures/") + QLatin1String(text.icon)));
        button->setIconSize(IconSize);
        button->setText(QString::fromUtf8(English() ? text.english : text.german));
        button->setFocusPolicy(Qt::StrongFocus);
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
        m_hints[action] = text.hintId ? GetResString(text.hintId)
                                      : QString::fromUtf8(English() ? text.hintEnglish : text.hintGerman);
        button->setAccessibleDescription(m_hints[action]);
        button->installEventFilter(this);
        connect(button, &QToolButton::clicked, this, [this, action] {
            m_action = action;
            accept();
        });
        row->addWidget(button);
        m_buttons[action] = button;
    }

    m_lblHelp = new QLabel(this);
    m_lblHelp->setObjectName(QStringLiteral("lbl_Help"));
    m_lblHelp->setWordWrap(true);
    m_lblHelp->setMinimumHeight(2 * fontMetrics().lineSpacing());
    m_lblHelp->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    m_chkShow = new QCheckBox(GetResString(341), this);
    m_chkShow->setObjectName(QStringLiteral("chk_Show"));
    m_chkShow->setChecked(Settings::IsTrue(Settings::Id::ShowStartupWindow));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_picture);
    layout->addLayout(row);
    layout->addWidget(m_lblHelp);
    layout->addWidget(m_chkShow);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    m_buttons[Leave]->setFocus();
}

QToolButton* frm_Startup::ActionButton(int action) const
{
    return action >= 0 && action < ActionCount ? m_buttons[action] : nullptr;
}

void frm_Startup::SetActionEnabled(int action, bool enabled)
{
    if (QToolButton* button = ActionButton(action))
        button->setEnabled(enabled);
}

int frm_Startup::ShowMe()
{
    m_action = Leave;
    exec();
    return m_action; // set only by the buttons
}

void frm_Startup::done(int result)
{
    Settings::Write(
        Settings::Id::ShowStartupWindow, m_chkShow->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
    QDialog::done(result);
}

void frm_Startup::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_F1:
        ShowHelp(HelpContext, this);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // The picture buttons take Enter like push buttons do.
        for (QToolButton* button : m_buttons) {
            if (button->hasFocus()) {
                if (button->isEnabled())
                    button->click();
                return;
            }
        }
        break;
    default:
        break;
    }
    QDialog::keyPressEvent(event);
}

bool frm_Startup::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Enter || event->type() == QEvent::Leave) {
        for (int action = 0; action < ActionCount; ++action) {
            if (watched == m_buttons[action])
                m_lblHelp->setText(event->type() == QEvent::Enter ? m_hints[action] : QString());
        }
    }
    return QDialog::eventFilter(watched, event);
}
