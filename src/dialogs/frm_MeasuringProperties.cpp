// SPDX-License-Identifier: GPL-3.0-or-later
// The view's properties dialog: period and resolution, the chart's look and the customer's data.
#include "frm_MeasuringProperties.h"

#include "ChartAdapter.h"
#include "DateEdit.h"
#include "Measuring.h"
#include "ResStrings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

// A warning sign placed beside a field, hidden while the field is fine.
QLabel* NewMark(QWidget* parent)
{
    auto* mark = new QLabel(parent);
    mark->setPixmap(parent->style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(16, 16));
    mark->setVisible(false);
    return mark;
}

QWidget* Beside(QWidget* field, QLabel* mark, QWidget* parent)
{
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(field, 1);
    layout->addWidget(mark);
    return row;
}

} // namespace

frm_MeasuringProperties::frm_MeasuringProperties(Measuring& view, QWidget* parent)
    : QDialog(parent)
    , m_view(view)
{
    setWindowTitle(GetResString(370));
    auto* layout = new QVBoxLayout(this);
    auto* intro = new QLabel(GetResString(371), this);
    intro->setWordWrap(true);
    layout->addWidget(intro);
    m_pages = new QTabWidget(this);
    m_pages->addTab(BuildPeriodPage(), GetResString(373));
    m_pages->addTab(BuildDisplayPage(), GetResString(382));
    m_pages->addTab(BuildCustomerPage(), GetResString(381));
    layout->addWidget(m_pages);
    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    // The program's own texts, in its language, not the toolkit's.
    m_buttons->button(QDialogButtonBox::Ok)->setText(GetResString(266));
    m_buttons->button(QDialogButtonBox::Cancel)->setText(GetResString(267));
    layout->addWidget(m_buttons);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &frm_MeasuringProperties::OnAccept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    m_before = MeasuringPropertiesRules::Read(m_view);
    Show(m_before);

    connect(m_start, &DateEdit::ValueChanged, this, &frm_MeasuringProperties::UpdateState);
    connect(m_end, &DateEdit::ValueChanged, this, &frm_MeasuringProperties::UpdateState);
    for (DateEdit* edit : { m_start, m_end })
        connect(edit->Editor(), &QLineEdit::editingFinished, this, &frm_MeasuringProperties::UpdateState);
    connect(m_fromData, &QRadioButton::toggled, this, &frm_MeasuringProperties::UpdateState);
    connect(m_count, &QLineEdit::textChanged, this, &frm_MeasuringProperties::UpdateState);
    connect(m_unit, &QComboBox::currentIndexChanged, this, &frm_MeasuringProperties::UpdateState);
    for (int axis : { ChartAxis::Y1, ChartAxis::Y2 }) {
        connect(m_axisMin[axis], &QLineEdit::textChanged, this, &frm_MeasuringProperties::UpdateState);
        connect(m_axisMax[axis], &QLineEdit::textChanged, this, &frm_MeasuringProperties::UpdateState);
    }
    UpdateState();
}

QWidget* frm_MeasuringProperties::BuildPeriodPage()
{
    auto* page = new QWidget(m_pages);
    auto* layout = new QVBoxLayout(page);

    auto* period = new QGroupBox(GetResString(372), page);
    auto* periodForm = new QFormLayout(period);
    m_start = new DateEdit(period);
    m_end = new DateEdit(period);
    m_periodMark = NewMark(period);
    m_duration = new QLabel(period);
    periodForm->addRow(GetResString(375), m_start);
    periodForm->addRow(GetResString(376), Beside(m_end, m_periodMark, period));
    periodForm->addRow(GetResString(377), m_duration);
    layout->addWidget(period);

    auto* resolution = new QGroupBox(GetResString(374), page);
    auto* resolutionLayout = new QVBoxLayout(resolution);
    m_fromData = new QRadioButton(GetResString(378), resolution);
    m_normalised = new QRadioButton(GetResString(379), resolution);
    m_count = new QLineEdit(resolution);
    m_unit = new QComboBox(resolution);
    for (const auto& [code, id] : MeasuringPropertiesRules::Units())
        m_unit->addItem(GetResString(id), code);
    m_countMark = NewMark(resolution);
    auto* normalisedRow = new QHBoxLayout;
    normalisedRow->addWidget(m_normalised);
    normalisedRow->addWidget(m_count);
    normalisedRow->addWidget(m_unit);
    normalisedRow->addWidget(m_countMark);
    resolutionLayout->addWidget(m_fromData);
    resolutionLayout->addLayout(normalisedRow);
    layout->addWidget(resolution);
    layout->addStretch(1);
    return page;
}

QWidget* frm_MeasuringProperties::BuildDisplayPage()
{
    auto* page = new QWidget(m_pages);
    auto* layout = new QVBoxLayout(page);
    auto* form = new QFormLayout;
    m_gallery = new QComboBox(page);
    for (const auto& [gallery, id] : MeasuringPropertiesRules::Galleries())
        m_gallery->addItem(GetResString(id), gallery);
    form->addRow(GetResString(380), m_gallery);
    m_title = new QLineEdit(page);
    form->addRow(GetResString(387), m_title);
    layout->addLayout(form);
    m_autoScale = new QCheckBox(GetResString(383), page);
    m_view3D = new QCheckBox(GetResString(385), page);
    m_legend = new QCheckBox(GetResString(386), page);
    m_statistics = new QCheckBox(GetResString(388), page);
    for (QCheckBox* check : { m_autoScale, m_view3D, m_legend, m_statistics })
        layout->addWidget(check);

    auto* axes = new QHBoxLayout;
    for (int axis : { ChartAxis::Y1, ChartAxis::Y2 }) {
        auto* group = new QGroupBox(GetResString(axis == ChartAxis::Y1 ? 389 : 390), page);
        auto* axisForm = new QFormLayout(group);
        m_axisMin[axis] = new QLineEdit(group);
        m_axisMax[axis] = new QLineEdit(group);
        m_axisMark[axis] = NewMark(group);
        m_grid[axis] = new QCheckBox(GetResString(384), group);
        axisForm->addRow(GetResString(391), m_axisMin[axis]);
        axisForm->addRow(GetResString(392), Beside(m_axisMax[axis], m_axisMark[axis], group));
        axisForm->addRow(m_grid[axis]);
        m_axisGroup[axis] = group;
        axes->addWidget(group);
    }
    layout->addLayout(axes);
    layout->addStretch(1);
    return page;
}

QWidget* frm_MeasuringProperties::BuildCustomerPage()
{
    auto* page = new QWidget(m_pages);
    auto* form = new QFormLayout(page);
    m_company = new QLineEdit(page);
    m_contact = new QLineEdit(page);
    m_street = new QLineEdit(page);
    m_place = new QLineEdit(page);
    m_memo = new QPlainTextEdit(page);
    form->addRow(GetResString(393), m_company);
    form->addRow(GetResString(394), m_contact);
    form->addRow(GetResString(395), m_street);
    form->addRow(GetResString(396), m_place);
    form->addRow(GetResString(397), m_memo);
    return page;
}

void frm_MeasuringProperties::Show(const MeasuringPropertiesEntries& entries)
{
    m_start->SetValue(entries.start);
    m_end->SetValue(entries.end);
    m_fromData->setChecked(entries.fromData);
    m_normalised->setChecked(!entries.fromData);
    m_count->setText(entries.count);
    m_unit->setCurrentIndex(std::max(0, m_unit->findData(entries.unit)));
    m_gallery->setCurrentIndex(std::max(0, m_gallery->findData(entries.gallery)));
    m_autoScale->setChecked(entries.autoScale);
    m_view3D->setChecked(entries.view3D);
    m_legend->setChecked(entries.legend);
    m_title->setText(entries.title);
    m_statistics->setChecked(entries.statistics);
    for (int axis : { ChartAxis::Y1, ChartAxis::Y2 }) {
        m_grid[axis]->setChecked(entries.grid[axis]);
        m_axisMin[axis]->setText(entries.axisMin[axis]);
        m_axisMax[axis]->setText(entries.axisMax[axis]);
        // The limits of a hidden axis are not applied, so they are not offered.
        m_axisMin[axis]->setEnabled(entries.axisVisible[axis]);
        m_axisMax[axis]->setEnabled(entries.axisVisible[axis]);
    }
    m_company->setText(entries.company);
    m_contact->setText(entries.contact);
    m_street->setText(entries.street);
    m_place->setText(entries.place);
    m_memo->setPlainText(entries.memo);
}

MeasuringPropertiesEntries frm_MeasuringProperties::Entries() const
{
    MeasuringPropertiesEntries entries = m_before;
    entries.start = m_start->Value();
    entries.end = m_end->Value();
    entries.fromData = m_fromData->isChecked();
    entries.unit = m_unit->currentData().toString();
    entries.count = m_count->text();
    entries.gallery = m_gallery->currentData().toInt();
    entries.autoScale = m_autoScale->isChecked();
    entries.view3D = m_view3D->isChecked();
    entries.legend = m_legend->isChecked();
    entries.title = m_title->text();
    entries.statistics = m_statistics->isChecked();
    for (int axis : { ChartAxis::Y1, ChartAxis::Y2 }) {
        entries.grid[axis] = m_grid[axis]->isChecked();
        entries.axisMin[axis] = m_axisMin[axis]->text();
        entries.axisMax[axis] = m_axisMax[axis]->text();
    }
    entries.company = m_company->text();
    entries.contact = m_contact->text();
    entries.street = m_street->text();
    entries.place = m_place->text();
    entries.memo = m_memo->toPlainText();
    return entries;
}

QPushButton* frm_MeasuringProperties::OkButton() const
{
    return m_buttons->button(QDialogButtonBox::Ok);
}

QPushButton* frm_MeasuringProperties::CancelButton() const
{
    return m_buttons->button(QDialogButtonBox::Cancel);
}

void frm_MeasuringProperties::UpdateState()
{
    const MeasuringPropertiesEntries entries = Entries();
    const MeasuringPropertiesProblems problems = MeasuringPropertiesRules::Check(entries);
    // A typed date that names none leaves the old value in place; it still blocks OK.
    const bool period = problems.period || !m_start->IsValid() || !m_end->IsValid();
    m_duration->setText(MeasuringPropertiesRules::DurationText(entries.start, entries.end));
    m_periodMark->setVisible(period);
    m_countMark->setVisible(problems.count);
    m_count->setEnabled(!entries.fromData);
    m_unit->setEnabled(!entries.fromData);
    // The date entries step by the resolution the view will show; the data's own one is the
    // one the view read last.
    const auto step = entries.fromData
        ? MeasuringPropertiesRules::StepSeconds(m_view.IntervalUnit(), m_view.IntervalCount())
        : MeasuringPropertiesRules::StepSeconds(
            entries.unit, MeasuringPropertiesRules::ParseCount(entries.count).value_or(0));
    if (step) {
        m_start->SetStepSeconds(*step);
        m_end->SetStepSeconds(*step);
    }
    for (int axis : { ChartAxis::Y1, ChartAxis::Y2 })
        m_axisMark[axis]->setVisible(problems.axis[axis]);
    OkButton()->setEnabled(!period && !problems.Any());
}

void frm_MeasuringProperties::keyPressEvent(QKeyEvent* event)
{
    // Enter takes a typed date or number in its field; only the OK button closes the dialog.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

void frm_MeasuringProperties::OnAccept()
{
    UpdateState();
    if (!OkButton()->isEnabled())
        return;
    m_changed = MeasuringPropertiesRules::Apply(m_view, m_before, Entries());
    accept();
}

qint32 frm_MeasuringProperties::ShowMe()
{
    m_changed = false;
    // A keyboard user starts at the first date, the entry most often changed.
    m_pages->setCurrentIndex(0);
    m_start->setFocus();
    return exec() == QDialog::Accepted && m_changed ? 1 : 0;
}
