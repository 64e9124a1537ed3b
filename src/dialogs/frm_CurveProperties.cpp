// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_CurveProperties.h"

#include "Curve.h"
#include "Measuring.h"
#include "ResStrings.h"
#include "SeriesPropertiesEditor.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

frm_CurveProperties::frm_CurveProperties(Measuring& measuring, Curve& curve, QWidget* parent)
    : QDialog(parent)
    , m_measuring(measuring)
    , m_curve(curve)
{
    setObjectName(QStringLiteral("frm_CurveProperties"));
    setWindowTitle(GetResString(406));

    auto* description = new QLabel(GetResString(407), this);
    description->setObjectName(QStringLiteral("lbl_Description"));
    description->setWordWrap(true);

    auto* tabs = new QTabWidget(this);
    tabs->setObjectName(QStringLiteral("tab_Pages"));

    auto* general = new QWidget(tabs);
    m_name = new QLineEdit(general);
    m_name->setObjectName(QStringLiteral("txt_Name"));
    m_unit = new QLineEdit(general);
    m_unit->setObjectName(QStringLiteral("txt_Unit"));
    m_visible = new QCheckBox(GetResString(412), general);
    m_visible->setObjectName(QStringLiteral("chk_Visible"));
    m_statistics = new QTreeWidget(general);
    m_statistics->setObjectName(QStringLiteral("lst_Statistics"));
    m_statistics->setRootIsDecorated(false);
    m_statistics->setColumnCount(2);
    // The name column carries "used"; the second "shown in the chart".
    m_statistics->setHeaderLabels({ GetResString(290), GetResString(279) });
    m_statistics->header()->setStretchLastSection(false);
    m_statistics->header()->setSectionResizeMode(ColumnUsed, QHeaderView::Stretch);
    auto* generalLayout = new QFormLayout(general);
    generalLayout->addRow(GetResString(410), m_name);
    generalLayout->addRow(GetResString(411), m_unit);
    generalLayout->addRow(QString(), m_visible);
    generalLayout->addRow(new QLabel(GetResString(413), general));
    generalLayout->addRow(m_statistics);
    tabs->addTab(general, GetResString(408));

    auto* display = new QWidget(tabs);
    m_look = new SeriesPropertiesEditor(display);
    m_yAxis = new QComboBox(display);
    m_yAxis->setObjectName(QStringLiteral("cbo_YAxis"));
    m_yAxis->addItem(GetResString(417), 0);
    m_yAxis->addItem(GetResString(418), 1);
    auto* displayLayout = new QVBoxLayout(display);
    displayLayout->addWidget(m_look);
    auto* axisLayout = new QFormLayout;
    axisLayout->addRow(GetResString(416), m_yAxis);
    displayLayout->addLayout(axisLayout);
    displayLayout->addStretch(1);
    tabs->addTab(display, GetResString(409));

    m_ok = new QPushButton(GetResString(266), this);
    m_ok->setObjectName(QStringLiteral("cmd_OK"));
    m_ok->setDefault(true);
    auto* cancel = new QPushButton(GetResString(267), this);
    cancel->setObjectName(QStringLiteral("cmd_Cancel"));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_ok);
    buttons->addWidget(cancel);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(description);
    layout->addWidget(tabs, 1);
    layout->addLayout(buttons);

    connect(m_name, &QLineEdit::textChanged, this, [this](const QString& text) {
        m_edit.name = text;
        ShowValidity();
    });
    // A name left empty is put back, so that the curve never loses its caption.
    connect(m_name, &QLineEdit::editingFinished, this, [this] {
        if (m_name->text().trimmed().isEmpty())
            m_name->setText(m_curve.Name());
    });
    connect(m_statistics, &QTreeWidget::itemChanged, this, &frm_CurveProperties::OnStatisticChanged);
    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    Load();
}

void frm_CurveProperties::Load()
{
    m_edit = CurvePropertiesEdit::FromCurve(m_curve);
    m_name->setText(m_edit.name);
    m_unit->setText(m_edit.unit);
    m_visible->setChecked(m_edit.visible);
    m_look->Load(m_edit.look);
    m_yAxis->setCurrentIndex(m_edit.yAxis);
    ShowStatistics();
    ShowValidity();
}

void frm_CurveProperties::ShowStatistics()
{
    const QSignalBlocker blocker(m_statistics);
    if (m_statistics->topLevelItemCount() != int(m_edit.statistics.size())) {
        m_statistics->clear();
        for (const StatisticChoice& choice : m_edit.statistics) {
            auto* item = new QTreeWidgetItem(m_statistics, { choice.name });
            item->setData(ColumnUsed, Qt::UserRole, choice.id);
        }
    }
    for (int row = 0; row < m_statistics->topLevelItemCount(); ++row) {
        const StatisticChoice& choice = m_edit.statistics[std::size_t(row)];
        QTreeWidgetItem* item = m_statistics->topLevelItem(row);
        item->setCheckState(ColumnUsed, choice.used ? Qt::Checked : Qt::Unchecked);
        Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable;
        if (choice.canShow) {
            // A tick on an unused statistic is refused by the rules and taken back here.
            item->setCheckState(ColumnShown, choice.shown ? Qt::Checked : Qt::Unchecked);
        } else {
            item->setData(ColumnShown, Qt::CheckStateRole, QVariant());
        }
        item->setFlags(flags);
    }
}

void frm_CurveProperties::OnStatisticChanged(QTreeWidgetItem* item, int column)
{
    const int row = m_statistics->indexOfTopLevelItem(item);
    if (row < 0)
        return;
    const bool checked = item->checkState(column) == Qt::Checked;
    if (column == ColumnUsed)
        m_edit.SetUsed(std::size_t(row), checked);
    else if (column == ColumnShown)
        m_edit.SetShown(std::size_t(row), checked);
    ShowStatistics(); // shows what the rules made of the click
}

void frm_CurveProperties::ShowValidity()
{
    const bool valid = m_edit.IsValid();
    m_ok->setEnabled(valid);
    // The field marks itself while its text can't be taken.
    m_name->setStyleSheet(valid ? QString() : QStringLiteral("QLineEdit { background: #ffd0d0; }"));
}

CurvePropertiesEdit frm_CurveProperties::Edit() const
{
    CurvePropertiesEdit edit = m_edit;
    edit.name = m_name->text();
    edit.unit = m_unit->text();
    edit.visible = m_visible->isChecked();
    edit.look = m_look->Values();
    edit.yAxis = qint16(m_yAxis->currentData().toInt());
    return edit;
}

qint32 frm_CurveProperties::Commit()
{
    const CurvePropertiesEdit edit = Edit();
    if (!edit.IsValid())
        return 0;
    const CurvePropertiesEdit::Result result = edit.ApplyTo(m_curve);
    if (!result.changed)
        return 0;
    if (result.axisChanged)
        m_curve.SetFixedAxis(true); // the user's choice of axis outlasts the sharing out of titles
    m_measuring.Refresh(false);
    if (result.axisChanged || result.unitChanged)
        m_measuring.UpdateAxisTitles(); // the titles list the units of each axis's curves
    return 1;
}

qint32 frm_CurveProperties::ShowMe()
{
    Load();
    if (exec() != QDialog::Accepted)
        return 0;
    return Commit();
}
