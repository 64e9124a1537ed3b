// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_Options.h"

#include "Calendar.h"
#include "Help.h"
#include "IndizesEditor.h"
#include "ResStrings.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QEvent>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QStyle>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <optional>

namespace {

using Settings::Id;

// Help context of each page, in page order: all of them lead to the dialog's own help page.
constexpr std::array<qint32, 4> PageHelpContexts { 1040, 1040, 1040, 1040 };

// The units of a navigation step in list order, as the settings spell them.
constexpr std::array StepUnits { Calendar::Unit::Second, Calendar::Unit::Minute, Calendar::Unit::Hour,
    Calendar::Unit::Day, Calendar::Unit::Week, Calendar::Unit::Month, Calendar::Unit::Year };
constexpr int FirstUnitTextId = 362;

// A caption of the table used as a title: without its closing colon.
QString Title(int id)
{
    QString text = GetResString(id);
    if (text.endsWith(u':'))
        text.chop(1);
    return text;
}

// A caption of the table used as a field label: capitalised and with a colon.
QString FieldLabel(int id)
{
    QString text = Title(id);
    if (!text.isEmpty())
        text[0] = text[0].toUpper();
    return text + u':';
}

// The option of a stored choice: its number when it names one of the options, else the
// option of the default.
int OptionOf(Id id, int count)
{
    const int stored = static_cast<int>(Settings::Number(id));
    if (stored >= 0 && stored < count)
        return stored;
    return QString::fromUtf8(Settings::DefinitionOf(id).defaultValue).toInt();
}

} // namespace

frm_Options::frm_Options(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_Options"));
    setWindowTitle(GetResString(310) + u' ' + Settings::Value(Id::ApplicationName));

    m_tabStrip = new QTabWidget(this);
    m_tabStrip->setObjectName(QStringLiteral("tabStrip"));
    m_tabStrip->addTab(BuildGeneralPage(), GetResString(408));
    m_tabStrip->addTab(BuildViewPage(), GetResString(279));
    m_tabStrip->addTab(BuildNavigationPage(), Title(333));
    m_tabStrip->addTab(BuildStatisticsPage(), Title(413));

    auto* buttons = new QDialogButtonBox(this);
    auto* ok = buttons->addButton(GetResString(266), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("cmd_OK"));
    ok->setDefault(true);
    auto* cancel = buttons->addButton(GetResString(267), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cmd_Cancel"));
    auto* help = buttons->addButton(GetResString(275), QDialogButtonBox::HelpRole);
    help->setObjectName(QStringLiteral("cmd_Help"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::helpRequested, this, &frm_Options::cmd_Help_Click);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_tabStrip, 1);
    layout->addWidget(buttons);
    // The layout keeps every text whole; the first size leaves a little room beyond that.
    resize(sizeHint().expandedTo(QSize(560, 460)));

    // Every text field, the statistic editor's too, takes its whole text when entered.
    for (QLineEdit* edit : findChildren<QLineEdit*>())
        edit->installEventFilter(this);
}

QWidget* frm_Options::BuildGeneralPage()
{
    auto* page = new QWidget(m_tabStrip);
    auto* layout = new QVBoxLayout(page);

    layout->addWidget(NewCheck("chk_StartupWindow", 318, Id::ShowStartupWindow, page));
    auto* company = new QGroupBox(Title(393), page);
    auto* address = new QFormLayout(company);
    for (int i = 0; i < 2; ++i) {
        m_txtAddress[i] = new QLineEdit(company);
        m_txtAddress[i]->setObjectName(QStringLiteral("txt_Address%1").arg(i));
        address->addRow(GetResString(331 + i), m_txtAddress[i]);
    }
    layout->addWidget(company);

    auto* close = new QGroupBox(Title(319), page);
    auto* closeLayout = new QVBoxLayout(close);
    m_optClose = NewOptions("opt_Close", { 320, 321, 322 }, close);
    for (QAbstractButton* option : m_optClose->buttons())
        closeLayout->addWidget(option);
    layout->addWidget(close);

    auto* print = new QGroupBox(Title(323), page);
    auto* printLayout = new QVBoxLayout(print);
    printLayout->addWidget(NewCheck("chk_ClosePreview", 324, Id::ClosePreviewAfterPrint, print));
    layout->addWidget(print);
    layout->addStretch(1);
    return page;
}

QWidget* frm_Options::BuildViewPage()
{
    auto* page = new QWidget(m_tabStrip);
    auto* layout = new QVBoxLayout(page);

    auto* load = new QGroupBox(Title(314), page);
    auto* loadLayout = new QVBoxLayout(load);
    m_optLoad = NewOptions("opt_Load", { 315, 316, 317 }, load);
    for (QAbstractButton* option : m_optLoad->buttons())
        loadLayout->addWidget(option);
    layout->addWidget(load);

    auto* zoom = new QGroupBox(Title(311), page);
    auto* zoomLayout = new QVBoxLayout(zoom);
    m_optZoomMode = NewOptions("opt_ZoomMode", { 312, 313 }, zoom);
    for (QAbstractButton* option : m_optZoomMode->buttons())
        zoomLayout->addWidget(option);
    layout->addWidget(zoom);

    auto* cursor = new QGroupBox(Title(325), page);
    auto* cursorLayout = new QVBoxLayout(cursor);
    cursorLayout->addWidget(NewCheck("chk_CrossHairsCursor", 327, Id::CursorCrossHairs, cursor));
    cursorLayout->addWidget(NewCheck("chk_CursorLine", 328, Id::CursorLine, cursor));
    layout->addWidget(cursor);

    auto* standard = new QGroupBox(Title(326), page);
    auto* standardLayout = new QVBoxLayout(standard);
    standardLayout->addWidget(NewCheck("chk_CrossHairs", 329, Id::CrossHairs, standard));
    standardLayout->addWidget(NewCheck("chk_ToolTips", 330, Id::ToolTips, standard));
    layout->addWidget(standard);
    layout->addStretch(1);
    return page;
}

QWidget* frm_Options::BuildNavigationPage()
{
    auto* page = new QWidget(m_tabStrip);
    auto* layout = new QVBoxLayout(page);
    // The tab names the group already.
    auto* steps = new QGroupBox(page);
    auto* grid = new QGridLayout(steps);
    m_small = NewStep(QStringLiteral("Small"), steps);
    m_medium = NewStep(QStringLiteral("Medium"), steps);
    m_big = NewStep(QStringLiteral("Big"), steps);
    int row = 0;
    for (const auto& [textId, step] : { std::pair { 334, m_small }, { 335, m_medium }, { 336, m_big } }) {
        auto* label = new QLabel(FieldLabel(textId), steps);
        label->setBuddy(step.count);
        grid->addWidget(label, row, 0);
        grid->addWidget(step.count, row, 1);
        grid->addWidget(step.unit, row, 2);
        ++row;
    }
    grid->setColumnStretch(3, 1);
    layout->addWidget(steps);
    layout->addStretch(1);
    return page;
}

QWidget* frm_Options::BuildStatisticsPage()
{
    auto* page = new QWidget(m_tabStrip);
    auto* layout = new QVBoxLayout(page);
    auto* description = new QLabel(GetResString(349), page);
    description->setWordWrap(true);
    layout->addWidget(description);
    m_editor = new IndizesEditor(page);
    // The list is as wide as its longest name, so none is cut off in the narrower page.
    if (auto* list = m_editor->findChild<QListWidget*>(QStringLiteral("lst_Indizes"))) {
        list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        list->setMinimumWidth(list->sizeHintForColumn(0) + 2 * list->frameWidth()
            + list->style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 8);
    }
    layout->addWidget(m_editor, 1);
    return page;
}

// A check box bound to a "1"/"0" value.
QCheckBox* frm_Options::NewCheck(const char* name, int textId, Id id, QWidget* parent)
{
    auto* check = new QCheckBox(GetResString(textId), parent);
    check->setObjectName(QString::fromLatin1(name));
    m_checks.emplace_back(check, id);
    return check;
}

// Radio buttons named <name>0, <name>1, ...; the button's id is the value it stands for.
QButtonGroup* frm_Options::NewOptions(const char* name, std::initializer_list<int> textIds, QWidget* parent)
{
    auto* group = new QButtonGroup(parent);
    group->setObjectName(QString::fromLatin1(name));
    int index = 0;
    for (int textId : textIds) {
        auto* option = new QRadioButton(GetResString(textId), parent);
        option->setObjectName(group->objectName() + QString::number(index));
        group->addButton(option, index++);
    }
    return group;
}

// A count field that takes digits only and the list of units; named txt_<name>Count and
// cbo_<name>Unit.
frm_Options::StepControls frm_Options::NewStep(const QString& name, QWidget* parent)
{
    StepControls step;
    step.count = new QLineEdit(parent);
    step.count->setObjectName(QStringLiteral("txt_%1Count").arg(name));
    // The validator refuses a typed or pasted text with anything but digits in it.
    step.count->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*")), step.count));
    step.count->setAlignment(Qt::AlignRight);
    step.count->setMaximumWidth(step.count->fontMetrics().horizontalAdvance(QStringLiteral("000000")) + 16);
    step.unit = new QComboBox(parent);
    step.unit->setObjectName(QStringLiteral("cbo_%1Unit").arg(name));
    for (std::size_t i = 0; i < StepUnits.size(); ++i)
        step.unit->addItem(GetResString(FirstUnitTextId + static_cast<int>(i)), Calendar::UnitCode(StepUnits[i]));
    return step;
}

bool frm_Options::ShowMe()
{
    m_bIndizesChanged = false;
    LoadValues();
    m_tabStrip->setCurrentIndex(0);
    if (exec() != QDialog::Accepted)
        return false;
    SaveValues();
    m_bIndizesChanged = m_editor->Changed();
    return true;
}

void frm_Options::LoadValues()
{
    for (const auto& [check, id] : m_checks)
        check->setChecked(Settings::IsTrue(id));
    m_txtAddress[0]->setText(Settings::Value(Id::CompanyName));
    m_txtAddress[1]->setText(Settings::Value(Id::CompanyAddress));
    m_optZoomMode->button(Settings::Number(Id::ZoomArea) == 0.0 ? 0 : 1)->setChecked(true);
    m_optLoad->button(OptionOf(Id::OnNewMeasuring, 3))->setChecked(true);
    m_optClose->button(OptionOf(Id::OnCloseMeasuring, 3))->setChecked(true);

    // A step is its leading digits and the unit's letters; an unknown unit selects none.
    for (const auto& [step, id] : { std::pair { m_small, Id::NavSmallStep }, { m_medium, Id::NavMediumStep } }) {
        const QString text = Settings::Value(id);
        qsizetype digits = 0;
        while (digits < text.size() && text.at(digits) >= u'0' && text.at(digits) <= u'9')
            ++digits;
        step.count->setText(text.left(digits));
        const std::optional<Calendar::Unit> unit = Calendar::ParseUnit(QStringView(text).mid(digits));
        step.unit->setCurrentIndex(unit ? step.unit->findData(Calendar::UnitCode(*unit)) : -1);
    }

    m_editor->Load();
}

void frm_Options::SaveValues() const
{
    for (const auto& [check, id] : m_checks)
        Settings::Write(id, check->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
    Settings::Write(Id::CompanyName, m_txtAddress[0]->text());
    Settings::Write(Id::CompanyAddress, m_txtAddress[1]->text());
    Settings::Write(Id::ZoomArea, m_optZoomMode->checkedId() == 0 ? QStringLiteral("0") : QStringLiteral("1"));
    Settings::Write(Id::OnNewMeasuring, QString::number(m_optLoad->checkedId()));
    Settings::Write(Id::OnCloseMeasuring, QString::number(m_optClose->checkedId()));
    for (const auto& [step, id] : { std::pair { m_small, Id::NavSmallStep }, { m_medium, Id::NavMediumStep } })
        Settings::Write(id, step.count->text() + step.unit->currentData().toString());
    m_editor->Save();
}

void frm_Options::cmd_Help_Click()
{
    const int page = m_tabStrip->currentIndex();
    ShowHelp(
        page >= 0 && page < static_cast<int>(PageHelpContexts.size()) ? PageHelpContexts[page] : PageHelpContexts[0],
        this);
}

void frm_Options::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F1) {
        cmd_Help_Click();
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

bool frm_Options::eventFilter(QObject* watched, QEvent* event)
{
    // Selected after the event, as a mouse click that gave the focus would place the cursor.
    if (event->type() == QEvent::FocusIn) {
        if (auto* edit = qobject_cast<QLineEdit*>(watched))
            QTimer::singleShot(0, edit, &QLineEdit::selectAll);
    }
    return QDialog::eventFilter(watched, event);
}
