// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_ProfileProperties.h"

#include "ChannelSelection.h"
#include "ChannelTree.h"
#include "Globals.h"
#include "ResStrings.h"
#include "frm_GraphProperties.h"
#include "frm_SeriesProperties.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr int TagRole = Qt::UserRole + 1; // module list: the module's address
constexpr int KeyRole = Qt::UserRole + 2; // module list: the module's key

template<typename T> T* Named(T* widget, const char* name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

QString NameTakenText(const QString& name)
{
    const char* text = g_lLangOffset != 0
        ? "There is a profile named '%1' already.\nPlease give this profile another name."
        : "Es gibt bereits ein Profil mit dem Namen '%1'.\nBitte geben Sie diesem Profil einen anderen Namen.";
    return QString::fromUtf8(text).arg(name);
}

bool IsChannel(const QTreeWidgetItem* item)
{
    if (!item || ChannelTree::Tag(item).isEmpty())
        return false;
    const QString image = ChannelTree::Image(item);
    return image == QLatin1String(ChannelTree::ImageChannel) || image == QLatin1String(ChannelTree::ImageChecked);
}

bool IsChecked(const QTreeWidgetItem* item)
{
    return item && !ChannelTree::Tag(item).isEmpty()
        && ChannelTree::Image(item) == QLatin1String(ChannelTree::ImageChecked);
}

void Reveal(QTreeWidget* tree, QTreeWidgetItem* item)
{
    for (QTreeWidgetItem* parent = item->parent(); parent; parent = parent->parent())
        parent->setExpanded(true);
    tree->scrollToItem(item);
}

} // namespace

qint32 ProfileDefaultColor(int index)
{
    switch (index) {
    case 2:
        return 0x00FF00;
    case 3:
        return 0xFF0000;
    case 4:
        return 0x00FFFF;
    case 5:
        return 0xFF00FF;
    case 6:
        return 0xFFFF00;
    case 7:
        return 0x000000;
    default:
        return 0x0000FF;
    }
}

frm_ProfileProperties::frm_ProfileProperties(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_ProfileProperties"));
    setWindowTitle(GetResString(424));
    BuildPages();
    resize(600, 420);
}

frm_ProfileProperties::~frm_ProfileProperties() = default;

void frm_ProfileProperties::BuildPages()
{
    m_lblCaption = Named(new QLabel(this), "lbl_Caption");
    QFont bold = m_lblCaption->font();
    bold.setBold(true);
    m_lblCaption->setFont(bold);
    m_lblDescription = Named(new QLabel(this), "lbl_Description");
    m_lblDescription->setWordWrap(true);
    m_pages = new QStackedWidget(this);

    auto* page0 = new QWidget;
    m_txtName = Named(new QLineEdit(page0), "txt_Name");
    auto* layout0 = new QVBoxLayout(page0);
    layout0->addWidget(new QLabel(GetResString(290), page0));
    layout0->addWidget(m_txtName);
    layout0->addStretch(1);
    connect(m_txtName, &QLineEdit::textChanged, this, [this] {
        UpdateCaption();
        UpdateButtons();
    });

    auto* page1 = new QWidget;
    m_lvwModules = Named(new QListWidget(page1), "lvw_Modules");
    auto* layout1 = new QVBoxLayout(page1);
    layout1->addWidget(new QLabel(GetResString(290), page1));
    layout1->addWidget(m_lvwModules, 1);
    connect(m_lvwModules, &QListWidget::itemChanged, this, &frm_ProfileProperties::OnModuleChanged);

    auto* page2 = new QWidget;
    m_trvCategories = Named(new QTreeWidget(page2), "trv_Categories");
    m_trvCategories->setHeaderHidden(true);
    auto* layout2 = new QVBoxLayout(page2);
    layout2->addWidget(m_trvCategories, 1);

    auto* page3 = new QWidget;
    m_trvChannels = Named(new QTreeWidget(page3), "trv_Channels");
    m_trvChannels->setHeaderHidden(true);
    m_cmdChartProps = Named(new QPushButton(QStringLiteral("Diagramm..."), page3), "cmd_ChartProps");
    m_cmdCurvProps = Named(new QPushButton(QStringLiteral("Kurve..."), page3), "cmd_CurvProps");
    if (g_lLangOffset != 0) {
        m_cmdChartProps->setText(QStringLiteral("Chart..."));
        m_cmdCurvProps->setText(QStringLiteral("Curve..."));
    }
    auto* layout3 = new QVBoxLayout(page3);
    layout3->addWidget(m_trvChannels, 1);
    auto* props = new QHBoxLayout;
    props->addStretch(1);
    props->addWidget(m_cmdChartProps);
    props->addWidget(m_cmdCurvProps);
    layout3->addLayout(props);
    connect(
        m_trvChannels, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) { ToggleChannel(item); });
    connect(m_trvChannels, &QTreeWidget::currentItemChanged, this, &frm_ProfileProperties::UpdateButtons);
    connect(m_trvChannels, &QTreeWidget::itemClicked, this, &frm_ProfileProperties::UpdateButtons);
    m_trvChannels->installEventFilter(
        new ChannelSelection::SpaceKeyFilter(this, [this] { ToggleChannel(m_trvChannels->currentItem()); }));
    connect(m_cmdChartProps, &QPushButton::clicked, this, [this] {
        frm_GraphProperties dialog(this);
        dialog.ShowMe(m_cGraph);
    });
    connect(m_cmdCurvProps, &QPushButton::clicked, this, [this] {
        QTreeWidgetItem* item = m_trvChannels->currentItem();
        SeriesProperties* series = IsChecked(item) ? WorkingSeries(item->text(0)) : nullptr;
        if (!series)
            return;
        frm_SeriesProperties dialog(this);
        dialog.ShowMe(*series);
    });

    for (QWidget* page : { page0, page1, page2, page3 })
        m_pages->addWidget(page);

    // A module that cannot list its tree says so here; the user can go back and choose another.
    m_lblFailure = Named(new QLabel(this), "lbl_Failure");
    m_lblFailure->setWordWrap(true);
    m_lblFailure->hide();

    m_cmdHelp = Named(new QPushButton(GetResString(275), this), "cmd_Help");
    m_cmdHelp->setEnabled(false);
    m_cmdCancel = Named(new QPushButton(GetResString(267), this), "cmd_Cancel");
    m_cmdBack = Named(new QPushButton(GetResString(270), this), "cmd_Back");
    m_cmdForward = Named(new QPushButton(GetResString(269), this), "cmd_Forward");
    m_cmdForward->setDefault(true);
    connect(m_cmdCancel, &QPushButton::clicked, this, &frm_ProfileProperties::Cancel);
    connect(m_cmdBack, &QPushButton::clicked, this, &frm_ProfileProperties::Back);
    connect(m_cmdForward, &QPushButton::clicked, this, &frm_ProfileProperties::Forward);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_cmdHelp);
    buttons->addStretch(1);
    buttons->addWidget(m_cmdCancel);
    buttons->addWidget(m_cmdBack);
    buttons->addWidget(m_cmdForward);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_lblCaption);
    layout->addWidget(m_lblDescription);
    layout->addWidget(m_pages, 1);
    layout->addWidget(m_lblFailure);
    layout->addLayout(buttons);
}

bool frm_ProfileProperties::ShowMe(Profile& profile)
{
    m_bFinished = false;
    m_sSourceAddress = profile.DataSourceID != 0 ? QString::number(profile.DataSourceID) : QString();
    m_iEntryLevel = profile.EntryLevel;
    m_cGraph = profile.GraphProperties;
    m_colNames.clear();
    m_colSeries.clear();
    for (qint32 i = 1; i <= profile.ChannelCount(); ++i) {
        const QString name = profile.ChannelName(i);
        m_colNames << name;
        if (const ::SeriesProperties* series = profile.SeriesProperties(i); series && !name.isEmpty())
            m_colSeries.insert(name, *series);
    }
    m_trvCategories->clear();
    m_trvChannels->clear();
    m_iPage = PageName;
    m_txtName->setText(profile.Name);
    GotoPage(PageName);
    exec();
    if (!m_bFinished)
        return false;

    profile.Init();
    profile.Name = m_txtName->text();
    profile.DataSourceID = m_sSourceAddress.trimmed().toInt();
    profile.EntryLevel = m_iEntryLevel;
    profile.GraphProperties = m_cGraph;
    qint32 index = 0;
    for (const QString& name : std::as_const(m_colNames)) {
        if (name.isEmpty())
            continue;
        ++index;
        profile.SetChannelName(index, name);
        const auto found = m_colSeries.constFind(name);
        if (found != m_colSeries.constEnd())
            profile.SetSeriesProperties(index, *found);
    }
    return true;
}

SeriesProperties* frm_ProfileProperties::WorkingSeries(const QString& name)
{
    const auto found = m_colSeries.find(name);
    return found != m_colSeries.end() ? &found.value() : nullptr;
}

void frm_ProfileProperties::Forward()
{
    if (!m_cmdForward->isEnabled())
        return;
    if (m_iPage == PageChannels) {
        if (!LeavePage(m_iPage, true))
            return;
        m_bFinished = true;
        accept();
        return;
    }
    GotoPage(m_iPage + 1);
}

void frm_ProfileProperties::Back()
{
    if (m_iPage > PageName)
        GotoPage(m_iPage - 1);
}

void frm_ProfileProperties::Cancel()
{
    m_bFinished = false;
    QDialog::reject();
}

void frm_ProfileProperties::reject()
{
    Cancel();
}

void frm_ProfileProperties::closeEvent(QCloseEvent* event)
{
    m_bFinished = false;
    QDialog::closeEvent(event);
}

void frm_ProfileProperties::GotoPage(int target)
{
    const int from = m_iPage;
    const bool forward = target > from;
    if (target != from && !LeavePage(from, forward))
        return;
    // With a single module there is nothing to choose: its page is passed by, and the profile
    // belongs to that module.
    if (target == PageModule && m_cDataModules.Count() == 1) {
        if (m_sSourceAddress.isEmpty())
            m_sSourceAddress = m_cDataModules.At(0)->Address();
        target = forward ? PageLevel : PageName;
    }
    m_iPage = target;
    m_pages->setCurrentIndex(target);
    m_lblDescription->setText(GetResString(426 + target));
    EnterPage(target);
    UpdateCaption();
    UpdateButtons();
}

bool frm_ProfileProperties::LeavePage(int page, bool forward)
{
    switch (page) {
    case PageName: {
        const QString name = m_txtName->text();
        if (forward && m_nameAllowed && !m_nameAllowed(name)) {
            QMessageBox::warning(this, GetResString(200), NameTakenText(name));
            m_txtName->setFocus();
            return false;
        }
        break;
    }
    case PageModule:
        if (forward) {
            for (int i = 0; i < m_lvwModules->count(); ++i)
                if (m_lvwModules->item(i)->checkState() == Qt::Checked)
                    m_sSourceAddress = m_lvwModules->item(i)->data(TagRole).toString();
        }
        break;
    case PageLevel:
        if (forward && !m_bTreeFailed) {
            if (const QTreeWidgetItem* selected = m_trvCategories->currentItem()) {
                qint32 level = 0;
                for (const QTreeWidgetItem* up = selected->parent(); up; up = up->parent())
                    ++level;
                m_iEntryLevel = level;
            }
        }
        break;
    case PageChannels:
        if (!m_bTreeFailed)
            HarvestChannels();
        break;
    default:
        break;
    }
    return true;
}

void frm_ProfileProperties::EnterPage(int page)
{
    m_bTreeFailed = false;
    m_lblFailure->hide();
    switch (page) {
    case PageModule:
        EnterModules();
        break;
    case PageLevel:
        EnterLevel();
        break;
    case PageChannels:
        EnterChannels();
        break;
    default:
        m_txtName->setFocus();
        break;
    }
}

void frm_ProfileProperties::EnterModules()
{
    m_bFilling = true;
    m_lvwModules->clear();
    for (const ModuleBoxPtr& box : m_cDataModules) {
        auto* item = new QListWidgetItem(
            ChannelTree::Icon(QLatin1String(ChannelTree::ImageDataModule)), box->Name(), m_lvwModules);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setData(KeyRole, box->GetModuleKey());
        item->setData(TagRole, box->Address());
        const bool source = !m_sSourceAddress.isEmpty() && ModuleBoxes::SameAddress(box->Address(), m_sSourceAddress);
        item->setCheckState(source ? Qt::Checked : Qt::Unchecked);
    }
    m_bFilling = false;
}

void frm_ProfileProperties::OnModuleChanged(QListWidgetItem* item)
{
    if (m_bFilling || !item)
        return;
    // One choice, shown with check boxes: checking one item clears all others.
    if (item->checkState() == Qt::Checked) {
        m_bFilling = true;
        for (int i = 0; i < m_lvwModules->count(); ++i)
            if (m_lvwModules->item(i) != item)
                m_lvwModules->item(i)->setCheckState(Qt::Unchecked);
        m_bFilling = false;
    }
    UpdateButtons();
}

ModuleBoxPtr frm_ProfileProperties::SourceModule() const
{
    return m_sSourceAddress.isEmpty() ? nullptr : m_cDataModules.Item(m_sSourceAddress);
}

bool frm_ProfileProperties::LoadTree(QTreeWidget* tree, bool withChannels)
{
    tree->clear();
    const ModuleBoxPtr box = SourceModule();
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const qint32 status = box ? box->GetChannelList(tree, QString(), withChannels, -1, false) : -1;
    QApplication::restoreOverrideCursor();
    if (status == 1 && tree->topLevelItemCount() > 0)
        return true;
    QString text = GetResString(495);
    text.replace(QStringLiteral("%s1"), box ? box->Name() : m_sSourceAddress)
        .replace(QStringLiteral("%s2"), QStringLiteral("status %1").arg(status));
    m_lblFailure->setText(text);
    m_lblFailure->show();
    m_bTreeFailed = true;
    return false;
}

QTreeWidgetItem* frm_ProfileProperties::EntryNode() const
{
    QTreeWidgetItem* node = m_trvCategories->topLevelItem(0);
    for (qint32 depth = 0; node && depth < m_iEntryLevel && node->childCount() > 0; ++depth)
        node = node->child(0);
    return node;
}

void frm_ProfileProperties::EnterLevel()
{
    if (!LoadTree(m_trvCategories, false))
        return;
    if (QTreeWidgetItem* entry = EntryNode()) {
        m_trvCategories->setCurrentItem(entry);
        entry->setExpanded(true);
        Reveal(m_trvCategories, entry);
    }
}

void frm_ProfileProperties::EnterChannels()
{
    m_trvChannels->clear();
    if (!LoadTree(m_trvCategories, true))
        return;
    // The entry node and its following siblings, with everything below them.
    if (QTreeWidgetItem* entry = EntryNode()) {
        QTreeWidgetItem* parent = entry->parent();
        const int first = parent ? parent->indexOfChild(entry) : m_trvCategories->indexOfTopLevelItem(entry);
        const int count = parent ? parent->childCount() : m_trvCategories->topLevelItemCount();
        for (int i = first; i < count; ++i)
            ChannelSelection::CopyNodeTree(
                m_trvChannels, parent ? parent->child(i) : m_trvCategories->topLevelItem(i), nullptr);
    }
    m_bFilling = true;
    ChannelSelection::ForEachNode(m_trvChannels, [this](QTreeWidgetItem* item) {
        if (!IsChannel(item) || !m_colNames.contains(item->text(0)))
            return;
        ChannelTree::SetImage(item, QLatin1String(ChannelTree::ImageChecked));
        if (item->parent())
            item->parent()->setExpanded(true);
        if (!m_trvChannels->currentItem())
            m_trvChannels->setCurrentItem(item);
    });
    m_bFilling = false;
    if (QTreeWidgetItem* selected = m_trvChannels->currentItem())
        Reveal(m_trvChannels, selected);
}

void frm_ProfileProperties::ToggleChannel(QTreeWidgetItem* item)
{
    if (!IsChannel(item))
        return;
    const QString name = item->text(0);
    if (IsChecked(item)) {
        ChannelTree::SetImage(item, QLatin1String(ChannelTree::ImageChannel));
        m_colSeries.remove(name);
    } else {
        ChannelTree::SetImage(item, QLatin1String(ChannelTree::ImageChecked));
        // A name chosen twice (the same channel name in two branches) keeps its first look.
        if (!m_colSeries.contains(name)) {
            SeriesProperties series;
            series.Color = ProfileDefaultColor(int(m_colSeries.size()) + 1);
            m_colSeries.insert(name, series);
        }
    }
    UpdateButtons();
}

void frm_ProfileProperties::HarvestChannels()
{
    m_colNames.clear();
    // A profile names its channels: one of a name in two places of the tree is one channel.
    ChannelSelection::ForEachNode(m_trvChannels, [this](QTreeWidgetItem* item) {
        if (IsChecked(item) && !m_colNames.contains(item->text(0)))
            m_colNames << item->text(0);
    });
}

void frm_ProfileProperties::UpdateCaption()
{
    m_lblCaption->setText(GetResString(425).replace(QStringLiteral("%s"), m_txtName->text()));
}

void frm_ProfileProperties::UpdateButtons()
{
    bool next = true;
    switch (m_iPage) {
    case PageName:
        next = !m_txtName->text().isEmpty();
        break;
    case PageModule:
        next = false;
        for (int i = 0; i < m_lvwModules->count(); ++i)
            next = next || m_lvwModules->item(i)->checkState() == Qt::Checked;
        break;
    default:
        next = !m_bTreeFailed;
        break;
    }
    m_cmdForward->setEnabled(next);
    m_cmdForward->setText(GetResString(m_iPage == PageChannels ? 271 : 269));
    m_cmdBack->setEnabled(m_iPage > PageName);
    m_cmdChartProps->setEnabled(m_iPage == PageChannels);
    m_cmdCurvProps->setEnabled(m_iPage == PageChannels && IsChecked(m_trvChannels->currentItem()));
}
