// SPDX-License-Identifier: GPL-3.0-or-later
#include "IndizesEditor.h"

#include "ResStrings.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>

IndizesEditor::IndizesEditor(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("IndizesEditor"));

    m_lstIndizes = new QListWidget(this);
    m_lstIndizes->setObjectName(QStringLiteral("lst_Indizes"));
    for (const IndizesEntry& entry : IndizesRules::Entries()) {
        auto* item = new QListWidgetItem(GetResString(entry.nameId), m_lstIndizes);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Checked);
    }

    m_txtFormatNumber = new QLineEdit(this);
    m_txtFormatNumber->setObjectName(QStringLiteral("txt_FormatNumber"));
    m_chkDate = new QCheckBox(GetResString(339), this);
    m_chkDate->setObjectName(QStringLiteral("chk_Date"));
    m_txtFormatDate = new QLineEdit(this);
    m_txtFormatDate->setObjectName(QStringLiteral("txt_FormatDate"));
    m_lblSample = new QLabel(this);
    m_lblSample->setObjectName(QStringLiteral("lbl_Sample"));
    m_lblSample->setTextFormat(Qt::PlainText);

    auto* numberLabel = new QLabel(GetResString(338), this);
    numberLabel->setBuddy(m_txtFormatNumber);
    auto* dateLabel = new QLabel(GetResString(340), this);
    dateLabel->setBuddy(m_txtFormatDate);
    auto* sampleLabel = new QLabel(GetResString(337), this);

    auto* fields = new QGridLayout;
    fields->addWidget(numberLabel, 0, 0);
    fields->addWidget(m_txtFormatNumber, 0, 1);
    fields->addWidget(m_chkDate, 1, 0, 1, 2);
    fields->addWidget(dateLabel, 2, 0);
    fields->addWidget(m_txtFormatDate, 2, 1);
    fields->addWidget(sampleLabel, 3, 0);
    fields->addWidget(m_lblSample, 3, 1);
    fields->setRowStretch(4, 1);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_lstIndizes, 1);
    layout->addLayout(fields, 2);

    connect(m_lstIndizes, &QListWidget::currentRowChanged, this, &IndizesEditor::lst_Indizes_Click);
    connect(m_lstIndizes, &QListWidget::itemChanged, this, &IndizesEditor::lst_Indizes_ItemCheck);
    connect(m_txtFormatNumber, &QLineEdit::textChanged, this, &IndizesEditor::txt_FormatNumber_Change);
    connect(m_chkDate, &QCheckBox::toggled, this, &IndizesEditor::chk_Date_Click);
    connect(m_txtFormatDate, &QLineEdit::textChanged, this, &IndizesEditor::txt_FormatDate_Change);
}

void IndizesEditor::Load()
{
    const auto& entries = IndizesRules::Entries();
    m_bFilling = true;
    for (int i = 0; i < IndizesRules::EntryCount; ++i) {
        m_formats[i] = IndizesRules::Read(QString::fromLatin1(entries[i].key));
        m_lstIndizes->item(i)->setCheckState(m_formats[i].show ? Qt::Checked : Qt::Unchecked);
    }
    m_loaded = m_formats;
    m_bFilling = false;
    m_lstIndizes->setCurrentRow(0);
    ShowSelected();
}

void IndizesEditor::Save() const
{
    const auto& entries = IndizesRules::Entries();
    for (int i = 0; i < IndizesRules::EntryCount; ++i)
        IndizesRules::Write(QString::fromLatin1(entries[i].key), m_formats[i]);
}

bool IndizesEditor::Changed() const
{
    return m_formats != m_loaded;
}

IndizesFormat* IndizesEditor::Selected()
{
    const int row = m_lstIndizes->currentRow();
    return row >= 0 && row < IndizesRules::EntryCount ? &m_formats[row] : nullptr;
}

void IndizesEditor::lst_Indizes_Click()
{
    ShowSelected();
}

void IndizesEditor::lst_Indizes_ItemCheck(QListWidgetItem* item)
{
    const int row = m_lstIndizes->row(item);
    if (m_bFilling || row < 0 || row >= IndizesRules::EntryCount)
        return;
    m_formats[row].show = item->checkState() == Qt::Checked;
}

void IndizesEditor::txt_FormatNumber_Change(const QString& text)
{
    IndizesFormat* format = Selected();
    if (m_bFilling || !format)
        return;
    format->formatNumber = text;
    ShowSample();
}

void IndizesEditor::chk_Date_Click(bool checked)
{
    IndizesFormat* format = Selected();
    m_txtFormatDate->setEnabled(checked);
    if (m_bFilling || !format)
        return;
    format->useDate = checked;
    ShowSample();
}

void IndizesEditor::txt_FormatDate_Change(const QString& text)
{
    IndizesFormat* format = Selected();
    if (m_bFilling || !format)
        return;
    format->formatDate = text;
    ShowSample();
}

// Fills the fields with the selected statistic; with none selected they are empty and off.
void IndizesEditor::ShowSelected()
{
    const IndizesFormat* format = Selected();
    m_bFilling = true;
    m_txtFormatNumber->setText(format ? format->formatNumber : QString());
    m_chkDate->setChecked(format && format->useDate);
    m_txtFormatDate->setText(format ? format->formatDate : QString());
    m_bFilling = false;
    m_txtFormatNumber->setEnabled(format != nullptr);
    m_chkDate->setEnabled(format != nullptr);
    m_txtFormatDate->setEnabled(format != nullptr && format->useDate);
    ShowSample();
}

void IndizesEditor::ShowSample()
{
    const IndizesFormat* format = Selected();
    const QString key
        = format ? QString::fromLatin1(IndizesRules::Entries()[m_lstIndizes->currentRow()].key) : QString();
    m_lblSample->setText(format ? IndizesRules::Sample(key, *format) : QString());
}
