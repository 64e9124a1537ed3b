// SPDX-License-Identifier: GPL-3.0-or-later
// Construction of the wizard's pages and the behaviour of their controls. The page changes
// themselves are in frm_NewMeasuringPages.cpp.
#include "frm_NewMeasuring.h"

#include "ChannelSelection.h"
#include "ChannelTree.h"
#include "Curve.h"
#include "DateEdit.h"
#include "Globals.h"
#include "MeasuringHost.h"
#include "NewMeasuringPages.h"
#include "Numeric.h"
#include "ResStrings.h"
#include "Settings.h"
#include "Statistic.h"
#include "WizardTexts.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace NewMeasuringPages;
using Settings::Id;

namespace {

// The edit boxes select their whole text when they get the focus; the axis borders take
// digits, ".", "-" and Backspace only, and a typed "," as ".".
class EditFilter : public QObject
{
public:
    EditFilter(QObject* parent, bool numbersOnly)
        : QObject(parent)
        , m_bNumbersOnly(numbersOnly)
    { }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* edit = qobject_cast<QLineEdit*>(watched);
        if (edit && event->type() == QEvent::FocusIn)
            QTimer::singleShot(0, edit, &QLineEdit::selectAll);
        if (edit && m_bNumbersOnly && event->type() == QEvent::KeyPress) {
            const auto* key = static_cast<QKeyEvent*>(event);
            const QString text = key->text();
            if (key->key() == Qt::Key_Backspace || text.isEmpty() || !text.at(0).isPrint())
                return false;
            if (text == QLatin1String(",")) {
                edit->insert(QStringLiteral("."));
                return true;
            }
            const QChar c = text.at(0);
            return !(c.isDigit() || c == QLatin1Char('.') || c == QLatin1Char('-'));
        }
        return QObject::eventFilter(watched, event);
    }

private:
    bool m_bNumbersOnly;
};

QLabel* HelpLabel(QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setWordWrap(true);
    label->setObjectName(QStringLiteral("lbl_Help"));
    return label;
}

template<typename T> T* Named(T* widget, const QString& name)
{
    widget->setObjectName(name);
    return widget;
}

} // namespace

frm_NewMeasuring::frm_NewMeasuring(MeasuringHost& host, QWidget* parent)
    : QDialog(parent)
    , m_cHost(host)
{
    setObjectName(QStringLiteral("frm_NewMeasuring"));
    BuildPages();
    UpdateCaptions();
    resize(640, 440);
}

frm_NewMeasuring::~frm_NewMeasuring() = default;

void frm_NewMeasuring::BuildPages()
{
    m_pages = new QStackedWidget(this);
    m_lblHelp = HelpLabel(this);
    m_lblHelp->setMinimumWidth(180);
    m_lblHelp->setAlignment(Qt::AlignTop | Qt::AlignLeft);

    // 0: name and remark
    auto* page0 = new QWidget;
    m_lblName = new QLabel(page0);
    m_txtMeasuringName = Named(new QLineEdit(page0), QStringLiteral("txt_MeasuringName"));
    m_lblRemark = new QLabel(page0);
    m_txtMeasuringRemark = Named(new QPlainTextEdit(page0), QStringLiteral("txt_MeasuringRemark"));
    auto* layout0 = new QVBoxLayout(page0);
    layout0->addWidget(m_lblName);
    layout0->addWidget(m_txtMeasuringName);
    layout0->addWidget(m_lblRemark);
    layout0->addWidget(m_txtMeasuringRemark, 1);
    m_txtMeasuringName->installEventFilter(new EditFilter(this, false));
    connect(m_txtMeasuringName, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_sMeasuringName = text;
        UpdateButtons();
    });
    connect(m_txtMeasuringRemark, &QPlainTextEdit::textChanged, this,
        [this] { m_sRemark = m_txtMeasuringRemark->toPlainText(); });

    // 1: data modules
    auto* page1 = new QWidget;
    auto* header1 = new QLabel(GetResString(290), page1);
    m_lvwDataModules = Named(new QListWidget(page1), QStringLiteral("lvw_DataModules"));
    auto* layout1 = new QVBoxLayout(page1);
    layout1->addWidget(header1);
    layout1->addWidget(m_lvwDataModules, 1);
    connect(m_lvwDataModules, &QListWidget::itemChanged, this, [this] {
        if (m_bFilling)
            return;
        TakeUsedModules();
        UpdateButtons();
    });
    connect(m_lvwDataModules, &QListWidget::itemDoubleClicked, this, [this] {
        if (m_cmdForward->isEnabled())
            Forward();
    });

    // 2: profile
    auto* page2 = new QWidget;
    auto* header2 = new QLabel(GetResString(293), page2);
    m_lvwProfiles = Named(new QListWidget(page2), QStringLiteral("lvw_Profiles"));
    auto* layout2 = new QVBoxLayout(page2);
    layout2->addWidget(header2);
    layout2->addWidget(m_lvwProfiles, 1);
    connect(m_lvwProfiles, &QListWidget::itemSelectionChanged, this, [this] {
        if (!m_bFilling)
            TakeProfile();
    });

    // 3: channels; the working copy of a profile's channels stays hidden
    auto* page3 = new QWidget;
    m_trvChannels = Named(new QTreeWidget(page3), QStringLiteral("trv_Channels"));
    m_trvChannels->setHeaderHidden(true);
    m_trvChannels->setContextMenuPolicy(Qt::CustomContextMenu);
    m_trvProfileChannels = Named(new QTreeWidget(page3), QStringLiteral("trv_ProfileChannels"));
    m_trvProfileChannels->hide();
    m_lblFailure = Named(new QLabel(page3), QStringLiteral("lbl_Failure"));
    m_lblFailure->setWordWrap(true);
    m_lblFailure->hide();
    auto* layout3 = new QVBoxLayout(page3);
    layout3->addWidget(m_trvChannels, 1);
    layout3->addWidget(m_lblFailure);
    connect(m_trvChannels, &QTreeWidget::itemClicked, this, [this] { OnNodeClick(false); });
    connect(m_trvChannels, &QTreeWidget::itemDoubleClicked, this, [this] { OnNodeClick(true); });
    connect(m_trvChannels, &QTreeWidget::currentItemChanged, this, &frm_NewMeasuring::UpdateButtons);
    connect(m_trvChannels, &QWidget::customContextMenuRequested, this, &frm_NewMeasuring::ShowSelectMenu);
    m_trvChannels->installEventFilter(new ChannelSelection::SpaceKeyFilter(this, [this] { OnSpaceKey(); }));
    m_mnuSelect = Named(new QMenu(this), QStringLiteral("SelectMenu"));
    auto addTool = [this](const char* name, int text, auto action) {
        QAction* tool = m_mnuSelect->addAction(GetResString(text));
        tool->setObjectName(QLatin1String(name));
        connect(tool, &QAction::triggered, this, [this, action] {
            QTreeWidgetItem* item = m_trvChannels->currentItem();
            action(item);
            UpdateButtons();
        });
    };
    addTool("mnuSelectCurve", 262, [](QTreeWidgetItem* item) { ChannelSelection::SetChecked(item, true); });
    addTool("mnuDeSelectCurve", 263, [](QTreeWidgetItem* item) { ChannelSelection::SetChecked(item, false); });
    addTool("mnuSelectAll", 264, [](QTreeWidgetItem* item) { ChannelSelection::SetCheckedBelow(item, true); });
    addTool("mnuDeSelectAll", 265, [](QTreeWidgetItem* item) { ChannelSelection::SetCheckedBelow(item, false); });

    // 4: statistics
    auto* page4 = new QWidget;
    m_lstIndizes = Named(new QListWidget(page4), QStringLiteral("lst_Indizes"));
    m_lstIndizes->setSelectionMode(QAbstractItemView::MultiSelection);
    m_chkShowIndizes = Named(new QCheckBox(GetResString(300), page4), QStringLiteral("chk_ShowIndizes"));
    auto* layout4 = new QVBoxLayout(page4);
    layout4->addWidget(m_lstIndizes, 1);
    layout4->addWidget(m_chkShowIndizes);

    // 5: customer and cursors
    auto* page5 = new QWidget;
    auto* layout5 = new QGridLayout(page5);
    for (int i = 0; i < 5; ++i) {
        m_txtCustomer.at(i) = Named(new QLineEdit(page5), QStringLiteral("txt_Customer_%1").arg(i));
        layout5->addWidget(new QLabel(WizardTexts::Customer(i), page5), i, 0);
        layout5->addWidget(m_txtCustomer.at(i), i, 1);
    }
    m_chkMinCursor
        = Named(new QCheckBox(WizardTexts::Text(WizardTexts::MinCursor), page5), QStringLiteral("chk_MinCursor"));
    m_chkMaxCursor
        = Named(new QCheckBox(WizardTexts::Text(WizardTexts::MaxCursor), page5), QStringLiteral("chk_MaxCursor"));
    layout5->addWidget(m_chkMinCursor, 5, 0, 1, 2);
    layout5->addWidget(m_chkMaxCursor, 6, 0, 1, 2);
    layout5->setRowStretch(7, 1);
    connect(m_chkMinCursor, &QCheckBox::clicked, this,
        [](bool on) { Settings::Write(Id::NewMinCursor, on ? QStringLiteral("1") : QStringLiteral("0")); });
    connect(m_chkMaxCursor, &QCheckBox::clicked, this,
        [](bool on) { Settings::Write(Id::NewMaxCursor, on ? QStringLiteral("1") : QStringLiteral("0")); });

    // 6: period and resolution
    auto* page6 = new QWidget;
    m_datStart = Named(new DateEdit(page6), QStringLiteral("dat_Start"));
    m_datEnd = Named(new DateEdit(page6), QStringLiteral("dat_End"));
    m_fraResolution = Named(new QGroupBox(GetResString(360), page6), QStringLiteral("fra_Resolution"));
    m_optResolution.at(0)
        = Named(new QRadioButton(WizardTexts::Text(WizardTexts::MeasuringResolution), m_fraResolution),
            QStringLiteral("opt_Resolution_0"));
    m_optResolution.at(1) = Named(new QRadioButton(WizardTexts::Text(WizardTexts::Normalised), m_fraResolution),
        QStringLiteral("opt_Resolution_1"));
    m_txtCount = Named(new QLineEdit(m_fraResolution), QStringLiteral("txt_Count"));
    m_txtCount->installEventFilter(new EditFilter(this, false));
    m_cboUnit = Named(new QComboBox(m_fraResolution), QStringLiteral("cbo_Unit"));
    for (int id = 362; id <= 368; ++id)
        m_cboUnit->addItem(GetResString(id));
    m_cboUnit->setCurrentIndex(0);
    auto* resolution = new QGridLayout(m_fraResolution);
    resolution->addWidget(m_optResolution.at(0), 0, 0, 1, 3);
    resolution->addWidget(m_optResolution.at(1), 1, 0);
    resolution->addWidget(m_txtCount, 1, 1);
    resolution->addWidget(m_cboUnit, 1, 2);
    auto* layout6 = new QGridLayout(page6);
    layout6->addWidget(new QLabel(WizardTexts::Text(WizardTexts::From), page6), 0, 0);
    layout6->addWidget(m_datStart, 0, 1);
    layout6->addWidget(new QLabel(WizardTexts::Text(WizardTexts::To), page6), 1, 0);
    layout6->addWidget(m_datEnd, 1, 1);
    layout6->addWidget(m_fraResolution, 2, 0, 1, 2);
    layout6->setRowStretch(3, 1);
    for (QRadioButton* option : m_optResolution)
        connect(option, &QRadioButton::toggled, this, &frm_NewMeasuring::OnResolutionOption);
    connect(m_datStart, &DateEdit::ValueChanged, this, &frm_NewMeasuring::OnDateChanged);
    connect(m_datEnd, &DateEdit::ValueChanged, this, &frm_NewMeasuring::OnDateChanged);

    // 7: chart of the serial report
    auto* page7 = new QWidget;
    m_optLgaAxis.at(0)
        = Named(new QRadioButton(WizardTexts::Text(WizardTexts::AxisAuto), page7), QStringLiteral("opt_LGA_Axis_0"));
    m_optLgaAxis.at(1)
        = Named(new QRadioButton(WizardTexts::Text(WizardTexts::AxisManual), page7), QStringLiteral("opt_LGA_Axis_1"));
    m_fraYAxis1 = Named(new QGroupBox(WizardTexts::Text(WizardTexts::YAxis1), page7), QStringLiteral("fra_YAxis1"));
    m_fraYAxis2 = Named(new QGroupBox(WizardTexts::Text(WizardTexts::YAxis2), page7), QStringLiteral("fra_YAxis2"));
    auto* axis1 = new QFormLayout(m_fraYAxis1);
    auto* axis2 = new QFormLayout(m_fraYAxis2);
    auto* borderFilter = new EditFilter(this, true);
    for (int i = 0; i < 4; ++i) {
        QGroupBox* frame = i < 2 ? m_fraYAxis1 : m_fraYAxis2;
        m_txtBorder.at(i) = Named(new QLineEdit(frame), QStringLiteral("txt_Border_%1").arg(i));
        m_txtBorder.at(i)->installEventFilter(borderFilter);
        (i < 2 ? axis1 : axis2)
            ->addRow(WizardTexts::Text(i % 2 == 0 ? WizardTexts::Maximum : WizardTexts::Minimum), m_txtBorder.at(i));
        connect(m_txtBorder.at(i), &QLineEdit::textEdited, this,
            [i](const QString& text) { Settings::Write(Id::NewAxisBorder, text, QString::number(i)); });
    }
    m_optSingleAxis.at(0) = Named(
        new QRadioButton(WizardTexts::Text(WizardTexts::SingleAxis), page7), QStringLiteral("opt_SingleAxis_0"));
    m_optSingleAxis.at(1)
        = Named(new QRadioButton(WizardTexts::Text(WizardTexts::TwoAxes), page7), QStringLiteral("opt_SingleAxis_1"));
    m_optLgaDays.at(0)
        = Named(new QRadioButton(WizardTexts::Text(WizardTexts::OnePerDay), page7), QStringLiteral("opt_LGADays_0"));
    m_optLgaDays.at(1)
        = Named(new QRadioButton(WizardTexts::Text(WizardTexts::FixedCount), page7), QStringLiteral("opt_LGADays_1"));
    m_txtLgaNumValues = Named(new QLineEdit(page7), QStringLiteral("txt_LGANumValues"));
    m_chkFixedLine
        = Named(new QCheckBox(WizardTexts::Text(WizardTexts::FixedLine), page7), QStringLiteral("chk_FixedLine"));
    m_txtFixedLine = Named(new QLineEdit(page7), QStringLiteral("txt_FixedLine"));
    m_cboGallery = Named(new QComboBox(page7), QStringLiteral("cboGallery"));
    // The option pairs are groups of their own.
    for (auto* pair : { &m_optLgaAxis, &m_optSingleAxis, &m_optLgaDays }) {
        auto* group = new QButtonGroup(page7);
        group->addButton(pair->at(0));
        group->addButton(pair->at(1));
    }
    auto* layout7 = new QGridLayout(page7);
    layout7->addWidget(m_optLgaAxis.at(0), 0, 0, 1, 2);
    layout7->addWidget(m_optLgaAxis.at(1), 1, 0, 1, 2);
    layout7->addWidget(m_fraYAxis1, 2, 0);
    layout7->addWidget(m_fraYAxis2, 2, 1);
    layout7->addWidget(m_optSingleAxis.at(0), 3, 0, 1, 2);
    layout7->addWidget(m_optSingleAxis.at(1), 4, 0, 1, 2);
    layout7->addWidget(m_optLgaDays.at(0), 5, 0, 1, 2);
    layout7->addWidget(m_optLgaDays.at(1), 6, 0);
    layout7->addWidget(m_txtLgaNumValues, 6, 1);
    layout7->addWidget(m_chkFixedLine, 7, 0);
    layout7->addWidget(m_txtFixedLine, 7, 1);
    layout7->addWidget(m_cboGallery, 8, 0, 1, 2);
    layout7->setRowStretch(9, 1);
    layout7->setColumnStretch(0, 1);
    layout7->setColumnStretch(1, 1);
    auto writeFlag
        = [](Id id) { return [id](bool on) { Settings::Write(id, on ? QStringLiteral("1") : QStringLiteral("0")); }; };
    connect(m_optLgaAxis.at(0), &QRadioButton::clicked, this, &frm_NewMeasuring::OnAxisOption);
    connect(m_optLgaAxis.at(1), &QRadioButton::clicked, this, &frm_NewMeasuring::OnAxisOption);
    connect(m_optSingleAxis.at(1), &QRadioButton::toggled, this, writeFlag(Id::NewUseSingleAxis));
    connect(m_optLgaDays.at(1), &QRadioButton::toggled, this, [this, writeFlag](bool on) {
        m_txtLgaNumValues->setEnabled(on);
        writeFlag(Id::NewUseLgaDays)(on);
    });
    connect(m_chkFixedLine, &QCheckBox::toggled, this, [this, writeFlag](bool on) {
        m_txtFixedLine->setEnabled(on);
        writeFlag(Id::NewChkFixedLine)(on);
    });
    connect(m_txtLgaNumValues, &QLineEdit::textEdited, this,
        [](const QString& text) { Settings::Write(Id::NewLgaNumValues, text); });
    connect(m_txtFixedLine, &QLineEdit::textEdited, this,
        [](const QString& text) { Settings::Write(Id::NewFixedLine, text); });
    connect(m_cboGallery, &QComboBox::activated, this,
        [](int index) { Settings::Write(Id::NewLgaGallery, QString::number(index)); });

    for (QWidget* page : { page0, page1, page2, page3, page4, page5, page6, page7 })
        m_pages->addWidget(page);

    m_cmdCancel = Named(new QPushButton(GetResString(267), this), QStringLiteral("cmd_Cancel"));
    m_cmdBack = Named(new QPushButton(GetResString(270), this), QStringLiteral("cmd_Back"));
    m_cmdForward = Named(new QPushButton(GetResString(269), this), QStringLiteral("cmd_Forward"));
    m_cmdForward->setDefault(true);
    m_cmdHelp = Named(new QPushButton(GetResString(275), this), QStringLiteral("cmd_Help"));
    connect(m_cmdCancel, &QPushButton::clicked, this, &frm_NewMeasuring::Cancel);
    connect(m_cmdBack, &QPushButton::clicked, this, &frm_NewMeasuring::Back);
    connect(m_cmdForward, &QPushButton::clicked, this, &frm_NewMeasuring::Forward);
    connect(m_cmdHelp, &QPushButton::clicked, this, [this] { m_cHost.ShowHelp(m_iHelpContext); });
    auto* help = new QShortcut(QKeySequence(Qt::Key_F1), this);
    connect(help, &QShortcut::activated, m_cmdHelp, &QPushButton::click);

    auto* top = new QHBoxLayout;
    top->addWidget(m_lblHelp, 2);
    top->addWidget(m_pages, 5);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdHelp);
    buttons->addStretch(1);
    buttons->addWidget(m_cmdCancel);
    buttons->addWidget(m_cmdBack);
    buttons->addWidget(m_cmdForward);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top, 1);
    layout->addLayout(buttons);
}

void frm_NewMeasuring::SetMode(qint16 mode)
{
    m_iMode = mode;
    UpdateCaptions();
}

void frm_NewMeasuring::UpdateCaptions()
{
    setWindowTitle(m_iMode == 0 ? GetResString(289) : WizardTexts::Text(WizardTexts::BatchCaption));
    m_lblName->setText(m_iMode == 0 ? GetResString(290) : WizardTexts::Text(WizardTexts::ProjectName));
    m_lblRemark->setText(GetResString(292));
}

bool frm_NewMeasuring::ShowMe()
{
    // Every statistic a view knows, from a fresh curve.
    m_lstIndizes->clear();
    const Curve fresh;
    for (const auto& statistic : fresh.Statistics()) {
        auto* item = new QListWidgetItem(statistic->Name(), m_lstIndizes);
        item->setData(Qt::UserRole, statistic->ID());
    }
    m_sIndizes = Settings::StoredValue(Id::NewIndizes);
    m_bIndizesInChart = Settings::Number(Id::NewShowIndizes) != 0.0;

    m_bCancelled = false;
    GotoPage(PageName);
    exec();

    if (!m_bCancelled) {
        QString keys;
        for (int i = 0; i < m_lvwDataModules->count(); ++i)
            if (m_lvwDataModules->item(i)->checkState() == Qt::Checked)
                keys += m_lvwDataModules->item(i)->data(Qt::UserRole).toString() + QLatin1Char('|');
        Settings::Write(Id::NewDataModules, keys);
        Settings::Write(Id::NewIndizes, m_sIndizes);
        Settings::Write(Id::NewShowIndizes, m_bIndizesInChart ? QStringLiteral("1") : QStringLiteral("0"));
    }
    return m_bCancelled;
}

bool frm_NewMeasuring::ShowFixedLine() const
{
    return m_chkFixedLine->isChecked();
}

double frm_NewMeasuring::FixedLineValue() const
{
    const QString text = m_txtFixedLine->text();
    return IsNumeric(text) ? LeadingNumber(text) : 0.0;
}

void frm_NewMeasuring::Forward()
{
    if (m_iPage < FinishPage(m_iMode)) {
        GotoPage(m_iPage + 1);
        return;
    }
    // The finish page is left like any other, so that its values are taken.
    GotoPage(m_iPage + 1);
    m_bCancelled = false;
    QDialog::accept();
}

void frm_NewMeasuring::Back()
{
    if (m_iPage > 0)
        GotoPage(m_iPage - 1);
}

void frm_NewMeasuring::Cancel()
{
    reject();
}

void frm_NewMeasuring::reject()
{
    m_bCancelled = true;
    QDialog::reject();
}

void frm_NewMeasuring::closeEvent(QCloseEvent* event)
{
    m_bCancelled = true;
    QDialog::closeEvent(event);
}

void frm_NewMeasuring::UpdateButtons()
{
    m_cmdBack->setEnabled(m_iPage > 0);
    m_cmdForward->setText(GetResString(m_iPage == FinishPage(m_iMode) ? 271 : 269));
    bool enabled = true;
    const QTreeWidgetItem* selected = m_trvChannels->currentItem();
    switch (m_iPage) {
    case PageName:
        enabled = !m_txtMeasuringName->text().trimmed().isEmpty();
        break;
    case PageModules:
        enabled = false;
        for (int i = 0; i < m_lvwDataModules->count(); ++i)
            enabled = enabled || m_lvwDataModules->item(i)->checkState() == Qt::Checked;
        break;
    case PageChannels:
        if (m_cProfile)
            enabled = selected && selected->childCount() == 0
                && !ChannelTree::Key(selected).contains(QLatin1String("CHAN"));
        else if (m_iMode == 1)
            enabled = selected != nullptr;
        else
            enabled = HasCheckedNode() || (selected && ChannelTree::Key(selected).contains(QLatin1String("CHAN")));
        break;
    default:
        break;
    }
    m_cmdForward->setEnabled(enabled);
}

bool frm_NewMeasuring::HasCheckedNode() const
{
    bool found = false;
    ChannelSelection::ForEachNode(m_trvChannels, [&found](QTreeWidgetItem* item) {
        found = found || ChannelTree::Image(item) == QLatin1String(ChannelTree::ImageChecked);
    });
    return found;
}

void frm_NewMeasuring::OnNodeClick(bool doubleClick)
{
    if (m_cProfile)
        return;
    ChannelSelection::ToggleChannelNode(m_trvChannels, doubleClick, false);
    UpdateButtons();
}

void frm_NewMeasuring::OnSpaceKey()
{
    m_bSpaceKey = true;
    ChannelSelection::ToggleChannelNode(m_trvChannels, true, true);
    m_bSpaceKey = false;
    UpdateButtons();
}

void frm_NewMeasuring::ShowSelectMenu(const QPoint& position)
{
    QTreeWidgetItem* item = m_trvChannels->currentItem();
    if (!item)
        return;
    const bool branch = item->childCount() > 0;
    const QList<QAction*> tools = m_mnuSelect->actions();
    tools.at(0)->setEnabled(!branch);
    tools.at(1)->setEnabled(!branch);
    tools.at(2)->setEnabled(branch);
    tools.at(3)->setEnabled(branch);
    m_mnuSelect->popup(m_trvChannels->viewport()->mapToGlobal(position));
}

void frm_NewMeasuring::OnResolutionOption()
{
    const bool fixed = m_optResolution.at(1)->isChecked();
    m_txtCount->setEnabled(fixed);
    m_cboUnit->setEnabled(fixed);
    if (fixed && isVisible())
        m_txtCount->setFocus();
}

void frm_NewMeasuring::OnAxisOption()
{
    const bool manual = m_optLgaAxis.at(1)->isChecked();
    m_fraYAxis1->setEnabled(manual);
    m_fraYAxis2->setEnabled(manual);
    Settings::Write(Id::NewAxisBorders, manual ? QStringLiteral("1") : QStringLiteral("0"));
}

void frm_NewMeasuring::OnDateChanged()
{
    if (!m_bResolutionInit)
        return;
    if (m_datStart->Value() < m_dFirstAllowed)
        m_datStart->SetValue(m_dFirstAllowed);
    if (m_datEnd->Value() > m_dLastAllowed)
        m_datEnd->SetValue(m_dLastAllowed);
}
