// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_PageSetup.h"

#include "Numeric.h"
#include "ResStrings.h"
#include "Settings.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

using Settings::Id;

struct Border
{
    Id id;
    int label;
    int defaultValue; ///< millimetres
};

// In the order of the boxes.
constexpr std::array<Border, 6> Borders { {
    { Id::ReportLeft, 480, 25 },
    { Id::ReportRight, 481, 10 },
    { Id::ReportTop, 482, 15 },
    { Id::ReportBottom, 483, 10 },
    { Id::ReportHeadHeight, 484, 15 },
    { Id::ReportFootHeight, 485, 10 },
} };

} // namespace

frm_PageSetup::frm_PageSetup(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_PageSetup"));
    setWindowTitle(GetResString(478));

    auto* description = new QLabel(GetResString(479), this);
    description->setObjectName(QStringLiteral("lbl_Description"));
    description->setWordWrap(true);

    auto* fields = new QGridLayout;
    for (std::size_t i = 0; i < Borders.size(); ++i) {
        auto* edit = new QLineEdit(this);
        edit->setObjectName(QStringLiteral("txt_Border%1").arg(i));
        edit->setAlignment(Qt::AlignRight);
        edit->setMaximumWidth(edit->fontMetrics().horizontalAdvance(QStringLiteral("0000000")) + 12);
        edit->installEventFilter(this);
        auto* label = new QLabel(GetResString(Borders[i].label), this);
        label->setBuddy(edit);
        const int row = static_cast<int>(i);
        fields->addWidget(label, row, 0);
        fields->addWidget(edit, row, 1);
        fields->addWidget(new QLabel(QStringLiteral("mm"), this), row, 2);
        m_txtBorder[i] = edit;
    }
    fields->setColumnStretch(3, 1);
    m_chkDrawLine = new QCheckBox(GetResString(486), this);
    m_chkDrawLine->setObjectName(QStringLiteral("chk_DrawLine"));

    auto* buttons = new QDialogButtonBox(this);
    auto* ok = buttons->addButton(GetResString(266), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("cmd_OK"));
    ok->setDefault(true);
    buttons->addButton(GetResString(267), QDialogButtonBox::RejectRole)->setObjectName(QStringLiteral("cmd_Cancel"));
    m_cmdHelp = buttons->addButton(GetResString(275), QDialogButtonBox::HelpRole);
    m_cmdHelp->setObjectName(QStringLiteral("cmd_Help"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(description);
    layout->addSpacing(6);
    layout->addLayout(fields);
    layout->addWidget(m_chkDrawLine);
    layout->addStretch(1);
    layout->addWidget(buttons);

    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::helpRequested, this, [this] {
        if (m_help)
            m_help(HelpContext);
    });
    resize(sizeHint().expandedTo(QSize(400, 0)));
}

bool frm_PageSetup::ShowMe()
{
    Load();
    if (exec() != QDialog::Accepted)
        return false;
    Save();
    return true;
}

void frm_PageSetup::Load()
{
    for (std::size_t i = 0; i < Borders.size(); ++i) {
        const bool stored = !Settings::StoredValue(Borders[i].id).isEmpty();
        m_txtBorder[i]->setText(
            stored ? QString::number(Settings::Number(Borders[i].id)) : QString::number(Borders[i].defaultValue));
    }
    const bool stored = !Settings::StoredValue(Id::ReportDrawLine).isEmpty();
    m_chkDrawLine->setChecked(!stored || Settings::IsTrue(Id::ReportDrawLine));
}

void frm_PageSetup::Save()
{
    // The number a box starts with; a box without one stores 0.
    for (std::size_t i = 0; i < Borders.size(); ++i)
        Settings::Write(Borders[i].id, QString::number(LeadingNumber(m_txtBorder[i]->text())));
    Settings::Write(Id::ReportDrawLine, m_chkDrawLine->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
}

void frm_PageSetup::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F1) {
        m_cmdHelp->click();
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

bool frm_PageSetup::eventFilter(QObject* watched, QEvent* event)
{
    // Selected after the event, as a mouse click that gave the focus would place the cursor.
    if (event->type() == QEvent::FocusIn)
        if (auto* edit = qobject_cast<QLineEdit*>(watched))
            QTimer::singleShot(0, edit, &QLineEdit::selectAll);
    return QDialog::eventFilter(watched, event);
}
