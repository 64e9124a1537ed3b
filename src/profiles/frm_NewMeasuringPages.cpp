// SPDX-License-Identifier: GPL-3.0-or-later
// The wizard's page changes: what leaving a page takes, which page really follows, and what
// entering a page loads.
#include "frm_NewMeasuring.h"

#include "Calendar.h"
#include "ChannelSelection.h"
#include "ChannelTree.h"
#include "DateEdit.h"
#include "Measuring.h"
#include "NewMeasuringPages.h"
#include "Numeric.h"
#include "ResStrings.h"
#include "Settings.h"
#include "WizardTexts.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QStyle>
#include <QTreeWidget>

#include <memory>
#include <optional>

using namespace NewMeasuringPages;
using Settings::Id;

namespace {

constexpr int KeyRole = Qt::UserRole; // list items: the module key
constexpr int TagRole = Qt::UserRole + 1; // list items: the module address, or the profile's index

QString Flag(bool on)
{
    return on ? QStringLiteral("1") : QStringLiteral("0");
}

void Reveal(QTreeWidget* tree, QTreeWidgetItem* item)
{
    for (QTreeWidgetItem* parent = item->parent(); parent; parent = parent->parent())
        parent->setExpanded(true);
    tree->scrollToItem(item);
}

// The codes of cbo_Unit's entries, in list order.
const QStringList& UnitCodes()
{
    static const QStringList codes { "s", "n", "h", "d", "ww", "m", "yyyy" };
    return codes;
}

} // namespace

void frm_NewMeasuring::GotoPage(int target)
{
    if (target < 0 || target > PanelCount)
        return;
    const int left = m_iPage;
    LeavePage(left);
    const Situation situation { m_iMode, m_cDataModules.Count(), m_cProfiles && !m_cProfiles->IsEmpty() };
    const Move move = Skip(situation, left, target);
    if (move.fillUsedModules && m_cUsedModules.IsEmpty())
        for (const ModuleBoxPtr& box : m_cDataModules)
            m_cUsedModules.Add(box);
    target = move.target;
    EnterPage(target);
    if (target < PanelCount)
        m_pages->setCurrentIndex(target);
    m_iPage = target;
    UpdateButtons();
    if (target <= PageIndizes)
        m_iHelpContext = 1034 + target;
}

void frm_NewMeasuring::LeavePage(int page)
{
    switch (page) {
    case PageChannels:
        HarvestChannels();
        break;
    case PageIndizes: {
        QStringList ids;
        for (int i = 0; i < m_lstIndizes->count(); ++i)
            if (m_lstIndizes->item(i)->isSelected())
                ids << m_lstIndizes->item(i)->data(Qt::UserRole).toString();
        m_sIndizes = IndizesString(ids);
        m_bIndizesInChart = m_chkShowIndizes->isChecked();
        break;
    }
    case PageCustomer:
        for (int i = 0; i < 5; ++i)
            Settings::Write(Id::NewCustomer, m_txtCustomer.at(i)->text(), QString::number(i));
        break;
    case PagePeriod:
        Settings::Write(Id::NewOptResolution, Flag(m_optResolution.at(1)->isChecked()));
        Settings::Write(Id::NewResolutionCount, m_txtCount->text());
        Settings::Write(Id::NewResolutionUnit, QString::number(m_cboUnit->currentIndex()));
        break;
    default:
        break;
    }
}

QString frm_NewMeasuring::HelpText(int page) const
{
    const bool batch = m_iMode != 0;
    switch (page) {
    case PageName:
        return batch ? WizardTexts::Text(WizardTexts::BatchHelp0) : GetResString(295);
    case PageModules:
        return GetResString(296);
    case PageProfile:
        return GetResString(298);
    case PageChannels:
        return batch ? WizardTexts::Text(WizardTexts::BatchHelp3) : GetResString(297);
    case PageIndizes:
        return GetResString(299);
    case PageCustomer:
        return WizardTexts::Text(WizardTexts::CustomerHelp);
    case PagePeriod:
        return WizardTexts::Text(WizardTexts::PeriodHelp);
    case PageChart:
        return WizardTexts::Text(WizardTexts::ChartHelp);
    default:
        return QString();
    }
}

void frm_NewMeasuring::EnterPage(int page)
{
    if (page < PanelCount)
        m_lblHelp->setText(HelpText(page));
    switch (page) {
    case PageName:
        m_txtMeasuringName->setText(m_sMeasuringName);
        m_txtMeasuringRemark->setPlainText(m_sRemark);
        break;
    case PageModules:
        EnterModules();
        break;
    case PageProfile:
        EnterProfiles();
        break;
    case PageChannels:
        EnterChannels();
        break;
    case PageIndizes:
        for (int i = 0; i < m_lstIndizes->count(); ++i) {
            QListWidgetItem* item = m_lstIndizes->item(i);
            item->setSelected(IndizesContains(m_sIndizes, item->data(Qt::UserRole).toString()));
        }
        m_chkShowIndizes->setChecked(m_bIndizesInChart);
        break;
    case PageCustomer:
        for (int i = 0; i < 5; ++i)
            m_txtCustomer.at(i)->setText(Settings::StoredValue(Id::NewCustomer, QString::number(i)));
        m_chkMinCursor->setChecked(Settings::StoredValue(Id::NewMinCursor) == QLatin1String("1"));
        m_chkMaxCursor->setChecked(Settings::StoredValue(Id::NewMaxCursor) == QLatin1String("1"));
        break;
    case PagePeriod:
        EnterPeriod();
        break;
    case PageChart:
        EnterChart();
        break;
    default:
        break;
    }
}

void frm_NewMeasuring::EnterModules()
{
    const QString stored = Settings::StoredValue(Id::NewDataModules);
    m_bFilling = true;
    m_lvwDataModules->clear();
    for (const ModuleBoxPtr& box : m_cDataModules) {
        auto* item = new QListWidgetItem(
            ChannelTree::Icon(QLatin1String(ChannelTree::ImageDataModule)), box->Name(), m_lvwDataModules);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setData(KeyRole, box->GetModuleKey());
        item->setData(TagRole, box->Address());
        const bool remembered = m_cUsedModules.IsEmpty() && stored.contains(box->GetModuleKey() + QLatin1Char('|'));
        const bool used = m_cUsedModules.Contains(box->Address());
        item->setCheckState(remembered || used ? Qt::Checked : Qt::Unchecked);
    }
    if (m_lvwDataModules->count() > 0)
        m_lvwDataModules->setCurrentRow(0);
    m_bFilling = false;
    TakeUsedModules();
}

void frm_NewMeasuring::TakeUsedModules()
{
    ModuleBoxes used;
    for (int i = 0; i < m_lvwDataModules->count(); ++i) {
        const QListWidgetItem* item = m_lvwDataModules->item(i);
        if (item->checkState() == Qt::Checked)
            used.Add(m_cDataModules.Item(item->data(TagRole).toString()));
    }
    m_cUsedModules = used;
}

void frm_NewMeasuring::EnterProfiles()
{
    m_bFilling = true;
    m_lvwProfiles->clear();
    auto* none = new QListWidgetItem(GetResString(294), m_lvwProfiles);
    none->setData(TagRole, -1);
    m_lvwProfiles->setCurrentItem(none);
    for (qsizetype i = 0; m_cProfiles && i < m_cProfiles->Count(); ++i) {
        const ProfilePtr profile = m_cProfiles->At(i);
        for (const ModuleBoxPtr& box : m_cUsedModules) {
            bool number = false;
            const qint64 address = box->Address().trimmed().toLongLong(&number);
            if (!number || address != profile->DataSourceID)
                continue;
            auto* item = new QListWidgetItem(
                style()->standardIcon(QStyle::SP_FileDialogInfoView), profile->Name, m_lvwProfiles);
            item->setData(KeyRole, profile->Name);
            item->setData(TagRole, int(i));
            if (m_cProfile && m_cProfile->Name == profile->Name)
                m_lvwProfiles->setCurrentItem(item);
        }
    }
    m_bFilling = false;
}

void frm_NewMeasuring::TakeProfile()
{
    const QListWidgetItem* item = m_lvwProfiles->currentItem();
    const int index = item ? item->data(TagRole).toInt() : -1;
    m_cProfile = index >= 0 && m_cProfiles ? m_cProfiles->At(index) : nullptr;
}

void frm_NewMeasuring::EnterChannels()
{
    m_cmdBack->setEnabled(false);
    m_cmdForward->setEnabled(false);
    const QString remembered
        = m_trvChannels->currentItem() ? ChannelTree::Key(m_trvChannels->currentItem()) : QString();
    m_trvChannels->clear();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    QStringList failures;
    for (const ModuleBoxPtr& box : m_cUsedModules) {
        qint32 status = 0;
        if (m_cProfile && m_iMode != 1) {
            // Entry level 0 is the root level, which the tree counts as its first level.
            status = box->GetChannelList(m_trvChannels, QString(), false, m_cProfile->EntryLevel + 1, false);
        } else if (m_iMode == 1) {
            // The loggers a batch can be printed for, without their channels: every category,
            // the loggers (measurings) among them.
            status = box->GetChannelList(m_trvChannels, QString(), false, -1, false);
            QTreeWidgetItem* entry = nullptr;
            ChannelSelection::ForEachNode(m_trvChannels, [&entry](QTreeWidgetItem* item) {
                const QString image = ChannelTree::Image(item);
                if (!entry && item->childCount() == 0
                    && (image == QLatin1String(ChannelTree::ImageCategorie)
                        || image == QLatin1String(ChannelTree::ImageMeasuring)))
                    entry = item;
            });
            if (entry) {
                m_trvChannels->setCurrentItem(entry);
                Reveal(m_trvChannels, entry);
            }
        } else {
            status = box->GetChannelList(m_trvChannels, QString(), true, -1, false);
        }
        // A module that cannot list its channels (its store is gone) is named with its reason;
        // the user can go back and leave it out.
        if (status != 1) {
            QString text = GetResString(495);
            text.replace(QStringLiteral("%s1"), box->Name())
                .replace(QStringLiteral("%s2"), QStringLiteral("status %1").arg(status));
            failures << text;
        }
    }
    m_lblFailure->setText(failures.join(QLatin1Char('\n')));
    m_lblFailure->setVisible(!failures.isEmpty());
    if (m_trvChannels->topLevelItemCount() > 0) {
        if (!m_trvChannels->currentItem())
            m_trvChannels->setCurrentItem(m_trvChannels->topLevelItem(0));
        for (int i = 0; i < m_trvChannels->topLevelItemCount(); ++i)
            m_trvChannels->topLevelItem(i)->setExpanded(true);
    }
    QApplication::restoreOverrideCursor();

    if (!m_cChannels.isEmpty()) {
        bool found = false;
        for (const QString& reference : std::as_const(m_cChannels)) {
            const QStringList parts = reference.split(QLatin1Char('$'));
            if (parts.size() != 2)
                continue;
            const ModuleBoxPtr box = m_cUsedModules.Item(parts.at(0));
            QTreeWidgetItem* item
                = box ? ChannelTree::FindItem(m_trvChannels, box->GetChannelKey(parts.at(1))) : nullptr;
            if (!item)
                continue;
            ChannelTree::SetImage(item, QLatin1String(ChannelTree::ImageChecked));
            Reveal(m_trvChannels, item);
            found = true;
        }
        QTreeWidgetItem* before = remembered.isEmpty() ? nullptr : ChannelTree::FindItem(m_trvChannels, remembered);
        if (!found && before) {
            m_trvChannels->setCurrentItem(before);
            Reveal(m_trvChannels, before);
        }
    }
    m_cmdBack->setEnabled(true);
}

void frm_NewMeasuring::HarvestChannels()
{
    QTreeWidgetItem* selected = m_trvChannels->currentItem();
    if (!m_cProfile && m_iMode != 1) {
        m_cChannels.clear();
        ChannelSelection::ForEachNode(m_trvChannels, [this](QTreeWidgetItem* item) {
            if (ChannelTree::Image(item) == QLatin1String(ChannelTree::ImageChecked)
                && !m_cChannels.contains(ChannelTree::Tag(item)))
                m_cChannels << ChannelTree::Tag(item);
        });
        if (m_cChannels.isEmpty() && selected)
            m_cChannels << ChannelTree::Tag(selected);
        return;
    }
    if (!selected)
        return;
    // The entry point chosen: its module's full tree, and the channels below it.
    const QString text = selected->text(0);
    const ModuleBoxPtr box = m_cDataModules.Item(ChannelTree::Tag(selected));
    m_trvChannels->clear();
    if (box)
        box->GetChannelList(m_trvChannels, QString(), true, -1, false);
    QTreeWidgetItem* entry = nullptr;
    ChannelSelection::ForEachNode(m_trvChannels, [&entry, &text](QTreeWidgetItem* item) {
        if (!entry && item->text(0) == text)
            entry = item;
    });
    if (entry)
        m_trvChannels->setCurrentItem(entry);
    m_trvProfileChannels->clear();
    m_cChannels.clear();
    if (!entry)
        return;
    ChannelSelection::CopyNodeTree(m_trvProfileChannels, entry, nullptr);
    ChannelSelection::ForEachNode(m_trvProfileChannels, [this](QTreeWidgetItem* item) {
        const QString tag = ChannelTree::Tag(item);
        if (!tag.contains(QLatin1Char('$')) || m_cChannels.contains(tag))
            return;
        bool named = m_iMode != 0;
        for (qint32 i = 1; !named && m_cProfile && i <= m_cProfile->ChannelCount(); ++i)
            named = item->text(0) == m_cProfile->ChannelName(i);
        if (named)
            m_cChannels << tag;
    });
}

void frm_NewMeasuring::EnterPeriod()
{
    InitResolution();
    const QString option = Settings::StoredValue(Id::NewOptResolution);
    m_optResolution.at(option == QLatin1String("1") ? 1 : 0)->setChecked(true);
    OnResolutionOption();
    const QString count = Settings::StoredValue(Id::NewResolutionCount);
    if (IsNumeric(count))
        m_txtCount->setText(count);
    const QString unit = Settings::StoredValue(Id::NewResolutionUnit);
    if (IsNumeric(unit)) {
        const double index = LeadingNumber(unit);
        if (index >= 0 && index < m_cboUnit->count())
            m_cboUnit->setCurrentIndex(int(index));
    }
}

void frm_NewMeasuring::InitResolution()
{
    if (m_bResolutionInit)
        return;
    m_bResolutionInit = true;
    auto scratch = std::make_unique<Measuring>(m_cHost);
    if (scratch->Init() == 0) {
        for (const ModuleBoxPtr& box : m_cUsedModules)
            scratch->DataModules().Add(box);
        const bool added = !m_cChannels.isEmpty()
            && scratch->AddCurve(m_cChannels.first(), false, QString(), QString(), nullptr) != nullptr;
        double first = added ? scratch->FirstDataDate() : 0.0;
        if (first == 0.0) {
            const Calendar::DateParts today = Calendar::Split(Calendar::Now());
            first = Calendar::FromParts(today.year, today.month, 1);
        }
        m_dFirstAllowed = first;
        const double last = added ? scratch->LastDataDate() : 0.0;
        if (last == 0.0) {
            const Calendar::DateParts today = Calendar::Split(Calendar::Now());
            m_dLastAllowed = Calendar::FromParts(today.year, today.month + 1, 1);
        } else {
            m_dLastAllowed = last;
        }
        m_datStart->SetLimits(m_dFirstAllowed, std::nullopt);
        m_datStart->SetValue(m_dFirstAllowed);
        m_datEnd->SetLimits(std::nullopt, m_dLastAllowed);
        m_datEnd->SetValue(m_dLastAllowed);
        const qsizetype unit = UnitCodes().indexOf(scratch->IntervalUnit());
        if (!scratch->IntervalUnit().isEmpty()) {
            m_optResolution.at(1)->setChecked(true);
            m_txtCount->setText(QString::number(scratch->IntervalCount()));
            if (unit >= 0)
                m_cboUnit->setCurrentIndex(int(unit));
        } else {
            m_optResolution.at(0)->setChecked(true);
            m_txtCount->setText(QStringLiteral("1"));
            m_cboUnit->setCurrentIndex(1);
        }
    }
    scratch->Terminate();
    if (m_iMode == 0)
        m_fraResolution->hide();
}

void frm_NewMeasuring::EnterChart()
{
    m_optLgaAxis.at(Settings::StoredValue(Id::NewAxisBorders) == QLatin1String("1") ? 1 : 0)->setChecked(true);
    OnAxisOption();
    m_optSingleAxis.at(Settings::StoredValue(Id::NewUseSingleAxis) == QLatin1String("1") ? 1 : 0)->setChecked(true);
    const bool days = Settings::StoredValue(Id::NewUseLgaDays) == QLatin1String("1");
    m_optLgaDays.at(days ? 1 : 0)->setChecked(true);
    m_txtLgaNumValues->setEnabled(days);
    m_txtLgaNumValues->setText(Settings::StoredValue(Id::NewLgaNumValues));
    const bool fixed = Settings::StoredValue(Id::NewChkFixedLine) == QLatin1String("1");
    m_chkFixedLine->setChecked(fixed);
    m_txtFixedLine->setEnabled(fixed);
    m_txtFixedLine->setText(Settings::StoredValue(Id::NewFixedLine));
    for (int i = 0; i < 4; ++i)
        m_txtBorder.at(i)->setText(Settings::StoredValue(Id::NewAxisBorder, QString::number(i)));
    m_cboGallery->clear();
    m_cboGallery->addItem(WizardTexts::Text(WizardTexts::Lines), 1);
    m_cboGallery->addItem(WizardTexts::Text(WizardTexts::Bars), 2);
    m_cboGallery->addItem(WizardTexts::Text(WizardTexts::Steps), 8);
    const QString gallery = Settings::StoredValue(Id::NewLgaGallery);
    const double index = IsNumeric(gallery) ? LeadingNumber(gallery) : -1.0;
    m_cboGallery->setCurrentIndex(index >= 0 && index <= 2 ? int(index) : 0);
}
