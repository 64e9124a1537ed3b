// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_PrintReport.h"

#include "Globals.h"
#include "Numeric.h"
#include "ResStrings.h"
#include "Settings.h"
#include "frm_PageSetup.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

// A row's item data: 100 + r for the portrait row of report r (from 1), 200 + r for its
// landscape row.
constexpr int DataRole = Qt::UserRole;
constexpr int PortraitBase = 100;
constexpr int LandscapeBase = 200;

// Reports of this family have no landscape form.
constexpr char NoLandscapeTag[] = "QUANDEL_REP";

template<typename T> T* Named(T* widget, const char* name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

QString Localised(const char* german, const char* english)
{
    return QString::fromUtf8(g_lLangOffset != 0 ? english : german);
}

QListWidgetItem* NewRow(const QString& name, int orientationText, int data, bool checked)
{
    auto* item = new QListWidgetItem(name + QLatin1String(" (") + GetResString(orientationText) + u')');
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setData(DataRole, data);
    item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
    return item;
}

// A flag that is no number counts as not set, as does a missing one.
bool FlagSet(const QStringList& flags, qsizetype row)
{
    if (row >= flags.size() || !IsNumeric(flags.at(row)))
        return false;
    return LeadingNumber(flags.at(row)) != 0.0;
}

} // namespace

frm_PrintReport::frm_PrintReport(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_PrintReport"));
    setWindowTitle(GetResString(455));

    auto* description = Named(new QLabel(GetResString(456), this), "lbl_Description");
    description->setWordWrap(true);

    m_lstReports = Named(new QListWidget(this), "lst_Reports");
    m_lstReports->setSelectionMode(QAbstractItemView::SingleSelection);
    // Signs that need no words, as in the curve list.
    m_cmdUp = Named(new QPushButton(QStringLiteral("\u25B2"), this), "cmd_Up");
    m_cmdDown = Named(new QPushButton(QStringLiteral("\u25BC"), this), "cmd_Down");
    m_cmdUp->setToolTip(Localised("nach oben", "move up"));
    m_cmdDown->setToolTip(Localised("nach unten", "move down"));

    // The orientation of the chosen row is shown here; it is chosen by ticking the row of the
    // wanted orientation, so the options take no clicks.
    auto* fraFormat = Named(new QGroupBox(GetResString(457), this), "fra_Format");
    m_optPortrait = Named(new QRadioButton(GetResString(458), fraFormat), "opt_Portrait");
    m_optLandscape = Named(new QRadioButton(GetResString(459), fraFormat), "opt_Landscape");
    for (QRadioButton* option : { m_optPortrait, m_optLandscape }) {
        option->setAttribute(Qt::WA_TransparentForMouseEvents);
        option->setFocusPolicy(Qt::NoFocus);
    }
    auto* formatLayout = new QVBoxLayout(fraFormat);
    formatLayout->addWidget(m_optPortrait);
    formatLayout->addWidget(m_optLandscape);

    m_fraMulti = Named(new QGroupBox(Localised("Messansichten", "Views"), this), "fra_Multi");
    m_optSingle = Named(new QRadioButton(Localised("nur die aktive", "the active one only"), m_fraMulti), "opt_Single");
    m_optAll = Named(new QRadioButton(Localised("alle geöffneten", "all open ones"), m_fraMulti), "opt_All");
    auto* multiLayout = new QVBoxLayout(m_fraMulti);
    multiLayout->addWidget(m_optSingle);
    multiLayout->addWidget(m_optAll);

    m_cmdSetup = Named(new QPushButton(GetResString(467), this), "cmd_Setup");

    auto* buttons = new QDialogButtonBox(this);
    m_cmdOK = Named(buttons->addButton(GetResString(266), QDialogButtonBox::AcceptRole), "cmd_OK");
    m_cmdOK->setDefault(true);
    Named(buttons->addButton(GetResString(267), QDialogButtonBox::RejectRole), "cmd_Cancel");
    m_cmdHelp = Named(buttons->addButton(GetResString(275), QDialogButtonBox::HelpRole), "cmd_Help");

    auto* moves = new QVBoxLayout;
    moves->addStretch(1);
    moves->addWidget(m_cmdUp);
    moves->addWidget(m_cmdDown);
    moves->addStretch(1);
    auto* list = new QHBoxLayout;
    list->addWidget(m_lstReports, 1);
    list->addLayout(moves);
    auto* frames = new QHBoxLayout;
    frames->addWidget(fraFormat, 1);
    frames->addWidget(m_fraMulti, 1);
    auto* setup = new QHBoxLayout;
    setup->addWidget(m_cmdSetup);
    setup->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(description);
    layout->addLayout(list, 1);
    layout->addLayout(frames);
    layout->addLayout(setup);
    layout->addWidget(buttons);

    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::helpRequested, this, [this] {
        if (m_help)
            m_help(HelpContext);
    });
    connect(m_cmdSetup, &QPushButton::clicked, this, &frm_PrintReport::PageSetup);
    connect(m_cmdUp, &QPushButton::clicked, this, [this] { MoveRow(-1); });
    connect(m_cmdDown, &QPushButton::clicked, this, [this] { MoveRow(1); });
    connect(m_lstReports, &QListWidget::itemChanged, this, &frm_PrintReport::UpdateButtons);
    connect(m_lstReports, &QListWidget::itemSelectionChanged, this, [this] {
        ShowRowOrientation();
        UpdateButtons();
    });
    resize(sizeHint().expandedTo(QSize(440, 380)));
}

bool frm_PrintReport::ShowMe(bool singleOnly, const ReportCollection& available, std::vector<ReportPtr>& reports,
    std::vector<qint32>& orientations, bool& allOpen)
{
    m_fraMulti->setVisible(!singleOnly);
    m_optSingle->setChecked(true);
    Fill(available);
    if (exec() != QDialog::Accepted)
        return false;

    Harvest(available, reports, orientations);
    allOpen = m_optAll->isChecked();
    // Only the ticks are remembered, one per row; the order of the rows is not.
    QString selection;
    for (int row = 0; row < m_lstReports->count(); ++row)
        selection += m_lstReports->item(row)->checkState() == Qt::Checked ? QLatin1String("1;") : QLatin1String("0;");
    Settings::Write(Settings::Id::ReportSelection, selection);
    return true;
}

void frm_PrintReport::Fill(const ReportCollection& available)
{
    const QStringList flags = Settings::Value(Settings::Id::ReportSelection).split(u';');
    const QSignalBlocker blocker(m_lstReports);
    m_lstReports->clear();
    // The ticks count list rows, not reports.
    int row = 0;
    for (qsizetype r = 1; r <= available.Count(); ++r) {
        const ReportInterface& report = *available.At(r - 1);
        m_lstReports->addItem(NewRow(report.Name(), 458, PortraitBase + static_cast<int>(r), FlagSet(flags, row++)));
        if (!report.ID().contains(QLatin1String(NoLandscapeTag)))
            m_lstReports->addItem(
                NewRow(report.Name(), 459, LandscapeBase + static_cast<int>(r), FlagSet(flags, row++)));
    }
    ShowRowOrientation();
    UpdateButtons();
}

void frm_PrintReport::MoveRow(int delta)
{
    const int row = m_lstReports->currentRow();
    const int other = row + delta;
    if (row < 0 || other < 0 || other >= m_lstReports->count())
        return;
    QListWidgetItem* a = m_lstReports->item(row);
    QListWidgetItem* b = m_lstReports->item(other);
    {
        const QSignalBlocker blocker(m_lstReports);
        const QString text = a->text();
        const Qt::CheckState check = a->checkState();
        const QVariant data = a->data(DataRole);
        a->setText(b->text());
        a->setCheckState(b->checkState());
        a->setData(DataRole, b->data(DataRole));
        b->setText(text);
        b->setCheckState(check);
        b->setData(DataRole, data);
    }
    // The selection goes with the row, so that it can be moved on.
    m_lstReports->setCurrentRow(other);
    ShowRowOrientation();
    UpdateButtons();
}

void frm_PrintReport::ShowRowOrientation()
{
    const QListWidgetItem* item = m_lstReports->currentItem();
    if (!item || !item->isSelected())
        return;
    if (item->text().contains(GetResString(459)))
        m_optLandscape->setChecked(true);
    else
        m_optPortrait->setChecked(true);
}

void frm_PrintReport::UpdateButtons()
{
    bool anyChecked = false;
    for (int row = 0; row < m_lstReports->count() && !anyChecked; ++row)
        anyChecked = m_lstReports->item(row)->checkState() == Qt::Checked;
    m_cmdOK->setEnabled(anyChecked);

    const QListWidgetItem* item = m_lstReports->currentItem();
    const int row = item && item->isSelected() ? m_lstReports->currentRow() : -1;
    m_cmdUp->setEnabled(row > 0);
    m_cmdDown->setEnabled(row >= 0 && row < m_lstReports->count() - 1);
}

void frm_PrintReport::Harvest(
    const ReportCollection& available, std::vector<ReportPtr>& reports, std::vector<qint32>& orientations) const
{
    reports.clear();
    orientations.clear();
    for (int row = 0; row < m_lstReports->count(); ++row) {
        const QListWidgetItem* item = m_lstReports->item(row);
        if (item->checkState() != Qt::Checked)
            continue;
        const int data = item->data(DataRole).toInt();
        const qint32 orientation = data > LandscapeBase ? 2 : 1;
        const qsizetype index = data - (orientation == 2 ? LandscapeBase : PortraitBase) - 1;
        if (index < 0 || index >= available.Count())
            continue;
        const ReportPtr& report = available.At(index);
        report->SetOrientation(orientation);
        reports.push_back(report);
        orientations.push_back(orientation);
    }
}

void frm_PrintReport::PageSetup()
{
    frm_PageSetup dialog(this);
    dialog.SetHelpHandler(m_help);
    dialog.ShowMe();
}

void frm_PrintReport::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F1) {
        m_cmdHelp->click();
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}
