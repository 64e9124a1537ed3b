// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_Curves.h"

#include "ChannelSelection.h"
#include "ChannelTree.h"
#include "Measuring.h"
#include "ModuleBox.h"
#include "ResStrings.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QMenu>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>
#include <vector>

namespace {

// The channel tag of a node of the channel tree, "" for modules and categories.
QString ChannelOf(const QTreeWidgetItem* item)
{
    return item ? ChannelTree::ChannelTagFromKey(ChannelTree::Key(item)) : QString();
}

QPushButton* MakeButton(const QString& text, const char* name, QWidget* parent)
{
    auto* button = new QPushButton(text, parent);
    button->setObjectName(QLatin1String(name));
    return button;
}

} // namespace

frm_Curves::frm_Curves(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_Curves"));
    setWindowTitle(GetResString(309));

    m_curves = new QTreeWidget(this);
    m_curves->setObjectName(QStringLiteral("trv_Curves"));
    m_curves->setHeaderLabels({ GetResString(261), GetResString(307) });
    m_channels = new QTreeWidget(this);
    m_channels->setObjectName(QStringLiteral("trv_Channels"));
    m_channels->setHeaderLabel(GetResString(307));
    m_channels->setContextMenuPolicy(Qt::CustomContextMenu);

    // New and delete carry the shared captions; the rest are signs that need no words.
    m_add = MakeButton(GetResString(276), "cmd_Add", this);
    m_remove = MakeButton(GetResString(278), "cmd_Remove", this);
    m_up = MakeButton(QStringLiteral("\u25B2"), "cmd_Up", this);
    m_down = MakeButton(QStringLiteral("\u25BC"), "cmd_Down", this);
    m_join = MakeButton(QStringLiteral("+"), "cmd_Join", this);
    m_split = MakeButton(QStringLiteral("\u2212"), "cmd_Split", this);
    auto* ok = MakeButton(GetResString(266), "cmd_OK", this);
    ok->setDefault(true);
    auto* cancel = MakeButton(GetResString(267), "cmd_Cancel", this);

    m_menu = new QMenu(this);
    m_menu->setObjectName(QStringLiteral("mnu_Channels"));
    m_menu->addAction(GetResString(262), this, [this] { SetChosen(m_menuItem, true); });
    m_menu->addAction(GetResString(263), this, [this] { SetChosen(m_menuItem, false); });
    m_menu->addAction(GetResString(264), this, [this] { SetChosenBelow(m_menuItem, true); });
    m_menu->addAction(GetResString(265), this, [this] { SetChosenBelow(m_menuItem, false); });

    auto* middle = new QVBoxLayout;
    middle->addStretch(1);
    for (QPushButton* button : { m_add, m_join, m_split, m_remove, m_up, m_down })
        middle->addWidget(button);
    middle->addStretch(1);
    auto* trees = new QHBoxLayout;
    trees->addWidget(m_curves, 1);
    trees->addLayout(middle);
    trees->addWidget(m_channels, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(trees, 1);
    layout->addLayout(buttons);

    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_add, &QPushButton::clicked, this, &frm_Curves::OnAdd);
    connect(m_remove, &QPushButton::clicked, this, &frm_Curves::OnRemove);
    connect(m_up, &QPushButton::clicked, this, [this] { OnMove(-1); });
    connect(m_down, &QPushButton::clicked, this, [this] { OnMove(1); });
    connect(m_join, &QPushButton::clicked, this, &frm_Curves::OnJoin);
    connect(m_split, &QPushButton::clicked, this, &frm_Curves::OnSplit);
    connect(m_curves, &QTreeWidget::itemSelectionChanged, this, &frm_Curves::UpdateButtons);
    connect(m_channels, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) { ToggleChosen(item); });
    connect(m_channels, &QWidget::customContextMenuRequested, this, &frm_Curves::ShowChannelMenu);
    // Space chooses the current channel, as a double click does.
    m_channels->installEventFilter(
        new ChannelSelection::SpaceKeyFilter(this, [this] { ToggleChosen(m_channels->currentItem()); }));
    UpdateButtons();
    resize(860, 480);
}

qint32 frm_Curves::ShowMe(Measuring& measuring)
{
    Load(measuring);
    if (exec() != QDialog::Accepted)
        return 0;
    return m_edit.ApplyTo(measuring) ? 1 : 0;
}

void frm_Curves::Load(Measuring& measuring)
{
    m_edit = CurveListEdit::FromView(measuring);
    m_chosen.clear();
    m_channels->clear();
    m_names.clear();
    m_places.clear();
    // Every module of the application is offered, not only those the view already uses.
    std::vector<ModuleBoxPtr> boxes(measuring.OfferedModules().begin(), measuring.OfferedModules().end());
    for (const ModuleBoxPtr& box : measuring.DataModules())
        if (!measuring.OfferedModules().Contains(box->Address()))
            boxes.push_back(box);
    for (const ModuleBoxPtr& box : boxes) {
        auto* module = new QTreeWidgetItem(m_channels, QStringList(box->Name()));
        ChannelTree::SetKey(module, box->GetModuleKey());
        ChannelTree::SetImage(module, ChannelTree::ImageDataModule);
        ChannelTree::SetTag(module, box->Address());
        // The list fills the module's channel cache on the way.
        const bool structured = box->GetChannelList(m_channels, box->GetModuleKey()) == 1 && module->childCount() > 0;
        for (const DataMatrixPtr& channel : box->Channels())
            m_names.insert(box->Address() + QLatin1Char('$') + channel->ChannelID(), channel->ChannelName());
        // A module without a category structure shows its channels straight beneath it.
        if (structured)
            continue;
        for (const DataMatrixPtr& channel : box->Channels()) {
            auto* node = new QTreeWidgetItem(module, QStringList(channel->ChannelName()));
            ChannelTree::SetKey(node, box->GetChannelKey(channel->ChannelID()));
            ChannelTree::SetImage(node, ChannelTree::ImageChannel);
            ChannelTree::SetTag(node, box->Address() + QLatin1Char('$') + channel->ChannelID());
        }
    }
    m_channels->expandAll();
    // Many channels share a name ("Wirkleistung"): the curve list tells them apart by where
    // they sit in the tree.
    std::function<void(QTreeWidgetItem*, const QString&)> walk = [&](QTreeWidgetItem* item, const QString& path) {
        const QString key = ChannelOf(item);
        if (!key.isEmpty())
            m_places.insert(key, path);
        const QString below = path.isEmpty() ? item->text(0) : path + QStringLiteral(" / ") + item->text(0);
        for (int i = 0; i < item->childCount(); ++i)
            walk(item->child(i), below);
    };
    for (int i = 0; i < m_channels->topLevelItemCount(); ++i)
        walk(m_channels->topLevelItem(i), QString());
    FillCurves(m_edit.Count() > 0 ? 0 : -1);
}

void frm_Curves::FillCurves(qsizetype selectEntry, qsizetype selectPart)
{
    m_curves->clear();
    QTreeWidgetItem* selected = nullptr;
    const auto& entries = m_edit.Entries();
    for (qsizetype i = 0; i < qsizetype(entries.size()); ++i) {
        const QStringList& keys = entries[size_t(i)].keys;
        auto* node = new QTreeWidgetItem(m_curves, { Name(keys.value(0)), m_places.value(keys.value(0)) });
        // A sum shows its further channels beneath it.
        for (qsizetype part = 1; part < keys.size(); ++part) {
            auto* child = new QTreeWidgetItem(node, { Name(keys[part]), m_places.value(keys[part]) });
            if (i == selectEntry && part == selectPart)
                selected = child;
        }
        node->setExpanded(true);
        if (i == selectEntry && !selected)
            selected = node;
    }
    m_curves->resizeColumnToContents(0);
    if (selected)
        m_curves->setCurrentItem(selected);
    UpdateButtons();
}

QString frm_Curves::Name(const QString& key) const
{
    // A channel no module lists any more still shows, by its key.
    return m_names.value(key, key);
}

void frm_Curves::SetChosen(QTreeWidgetItem* item, bool chosen)
{
    const QString key = ChannelOf(item);
    if (key.isEmpty())
        return;
    if (chosen && !m_chosen.contains(key))
        m_chosen << key;
    else if (!chosen)
        m_chosen.removeAll(key);
    ChannelTree::SetImage(item, chosen ? ChannelTree::ImageChecked : ChannelTree::ImageChannel);
    UpdateButtons();
}

void frm_Curves::SetChosenBelow(QTreeWidgetItem* item, bool chosen)
{
    if (!item)
        return;
    SetChosen(item, chosen);
    for (int i = 0; i < item->childCount(); ++i)
        SetChosenBelow(item->child(i), chosen);
}

void frm_Curves::ToggleChosen(QTreeWidgetItem* item)
{
    SetChosen(item, !m_chosen.contains(ChannelOf(item)));
}

void frm_Curves::ClearChosen()
{
    for (int i = 0; i < m_channels->topLevelItemCount(); ++i)
        SetChosenBelow(m_channels->topLevelItem(i), false);
    m_chosen.clear();
    UpdateButtons();
}

void frm_Curves::ShowChannelMenu(const QPoint& position)
{
    m_menuItem = m_channels->itemAt(position);
    if (m_menuItem)
        m_menu->popup(m_channels->viewport()->mapToGlobal(position));
}

qsizetype frm_Curves::SelectedEntry() const
{
    const QTreeWidgetItem* item = m_curves->currentItem();
    if (!item || !item->isSelected())
        return -1;
    if (item->parent())
        item = item->parent();
    return m_curves->indexOfTopLevelItem(const_cast<QTreeWidgetItem*>(item));
}

qsizetype frm_Curves::SelectedPart() const
{
    const QTreeWidgetItem* item = m_curves->currentItem();
    if (!item || !item->isSelected() || !item->parent())
        return -1;
    return item->parent()->indexOfChild(const_cast<QTreeWidgetItem*>(item)) + 1;
}

void frm_Curves::UpdateButtons()
{
    const qsizetype entry = SelectedEntry();
    m_add->setEnabled(!m_chosen.isEmpty());
    m_join->setEnabled(!m_chosen.isEmpty() && entry >= 0);
    m_remove->setEnabled(entry >= 0);
    m_up->setEnabled(entry > 0);
    m_down->setEnabled(entry >= 0 && entry + 1 < m_edit.Count());
    m_split->setEnabled(SelectedPart() > 0);
}

void frm_Curves::OnAdd()
{
    qsizetype last = -1;
    // A channel that already names a curve is not added twice.
    for (const QString& key : m_chosen)
        last = std::max(last, m_edit.Add(key));
    ClearChosen();
    FillCurves(last >= 0 ? last : SelectedEntry());
}

void frm_Curves::OnRemove()
{
    const qsizetype entry = SelectedEntry();
    if (!m_edit.Remove(entry))
        return;
    FillCurves(std::min(entry, m_edit.Count() - 1));
}

void frm_Curves::OnMove(qsizetype delta)
{
    const qsizetype entry = SelectedEntry();
    if (m_edit.Move(entry, delta))
        FillCurves(entry + delta);
}

void frm_Curves::OnJoin()
{
    const qsizetype entry = SelectedEntry();
    for (const QString& key : m_chosen)
        m_edit.Join(entry, key);
    ClearChosen();
    FillCurves(entry);
}

void frm_Curves::OnSplit()
{
    const qsizetype entry = SelectedEntry();
    if (m_edit.Split(entry, SelectedPart()))
        FillCurves(entry);
}
