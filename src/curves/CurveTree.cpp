// SPDX-License-Identifier: GPL-3.0-or-later
// The curve's side of the statistic tree, and the placing of its cursors.
#include "ChannelTree.h"
#include "ChartAdapter.h"
#include "Curve.h"
#include "CurveGrid.h"
#include "Numeric.h"
#include "ResStrings.h"

#include <QSignalBlocker>
#include <QTreeWidget>

#include <cmath>
#include <cstdlib>

namespace {

void SetCheckBox(QTreeWidgetItem* item, bool checked)
{
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(0, checked ? Qt::Checked : Qt::Unchecked);
}

void RemoveCheckBox(QTreeWidgetItem* item)
{
    item->setFlags(item->flags() & ~Qt::ItemIsUserCheckable);
    item->setData(0, Qt::CheckStateRole, QVariant());
}

QTreeWidgetItem* NewNode(const QString& key, const QString& tag)
{
    auto* item = new QTreeWidgetItem;
    ChannelTree::SetKey(item, key);
    ChannelTree::SetTag(item, tag);
    return item;
}

void RemoveNode(QTreeWidget* tree, const QString& key)
{
    delete ChannelTree::FindItem(tree, key);
}

} // namespace

QString Curve::GetStatisticKey(const Statistic* statistic) const
{
    const QString key = QStringLiteral("S_") + m_sID;
    return statistic ? key + QLatin1Char('_') + statistic->ID() : key;
}

Statistic* Curve::GetStatisticFromKey(const QString& key) const
{
    if (!key.startsWith(QStringLiteral("S_")))
        return nullptr;
    const QStringList fields = key.split(QLatin1Char('_'));
    if (fields.size() != 3)
        return nullptr;
    const QString& third = fields[2];
    const qsizetype hp = third.indexOf(QStringLiteral("HP"));
    if (hp < 0)
        return FindStatistic(third);
    bool ok = false;
    const int position = third.mid(hp + 2).toInt(&ok);
    if (!ok || position < 1 || position > static_cast<int>(m_cCursors.size()))
        return nullptr;
    return &m_cCursors[static_cast<size_t>(position - 1)]->CursorStatistic();
}

QTreeWidgetItem* Curve::CurveNode()
{
    const QString key = GetStatisticKey(nullptr);
    QTreeWidgetItem* node = ChannelTree::FindItem(m_cTree, key);
    if (!node) {
        node = NewNode(key, m_sID);
        m_cTree->addTopLevelItem(node);
        node->setExpanded(true);
    }
    return node;
}

qint32 Curve::UpdateStatistic(QTreeWidget* tree)
{
    if (!m_cTree)
        m_cTree = tree;
    if (!m_cTree)
        return NoView;
    // The tree tells its owner of changed check boxes: what the curve writes is no click.
    const QSignalBlocker quiet(m_cTree);

    QTreeWidgetItem* curveNode = CurveNode();
    curveNode->setText(0, m_sUnit.isEmpty() ? m_sName : m_sName + QStringLiteral(" (") + m_sUnit + QLatin1Char(')'));
    curveNode->setForeground(0, CurveColors::ToColor(m_cSeriesProperties.Color));
    SetCheckBox(curveNode, m_bVisible);

    QTreeWidgetItem* previous = nullptr;
    for (const auto& statistic : m_cStatistics) {
        const QString key = GetStatisticKey(statistic.get());
        QTreeWidgetItem* node = ChannelTree::FindItem(m_cTree, key);
        if (!statistic->Used()) {
            delete node;
            continue;
        }
        if (!node) {
            node = NewNode(key, m_sID);
            const int at = previous && previous->parent() == curveNode ? curveNode->indexOfChild(previous) + 1 : 0;
            curveNode->insertChild(at, node);
        }
        RefreshStatistic(*statistic);
        // The values of a power factor are shown as measured, like its cursors and table
        // cells; its scatter, sum and count are no power factors and show as computed.
        double display = 0;
        const double value = statistic->Value();
        if (m_cResult && m_cResult->DataType() == DataMatrix::CosPhiType && std::abs(value) <= 1
            && statistic->IsValueStatistic())
            display = MeasuredCosPhi(value);
        node->setText(0, statistic->Name() + QStringLiteral(" = ") + statistic->FormatedValue(m_sUnit, display));
        if (statistic->DisplayType() == Statistic::DisplayLine)
            SetCheckBox(node, statistic->Visible());
        else
            RemoveCheckBox(node);
        previous = node;
    }
    UpdateCursorNodes(curveNode, false);
    return 0;
}

QString Curve::CursorCaption(int position) const
{
    return GetResString(355) + QLatin1Char(' ') + QString::number(position) + QStringLiteral(" = ")
        + m_cCursors[static_cast<size_t>(position - 1)]->Text();
}

void Curve::UpdateCursorNodes(QTreeWidgetItem* curveNode, bool checkAll)
{
    const QSignalBlocker quiet(m_cTree);
    const QString prefix = GetStatisticKey(nullptr);
    const int count = static_cast<int>(m_cCursors.size());
    for (int i = 1; i <= count; ++i) {
        const QString key = prefix + QStringLiteral("_HP") + QString::number(i);
        QTreeWidgetItem* node = ChannelTree::FindItem(m_cTree, key);
        if (!node) {
            node = NewNode(key, m_sID);
            curveNode->addChild(node);
        }
        node->setText(0, CursorCaption(i));
        SetCheckBox(node, checkAll || m_cCursors[static_cast<size_t>(i - 1)]->CursorStatistic().Visible());
    }
    for (int i = count + 1; i <= MaxCursorNodes; ++i)
        RemoveNode(m_cTree, prefix + QStringLiteral("_HP") + QString::number(i));

    const QString diffKey = prefix + QStringLiteral("_DIFFHP");
    if (count < 2) {
        RemoveNode(m_cTree, diffKey);
        return;
    }
    QTreeWidgetItem* node = ChannelTree::FindItem(m_cTree, diffKey);
    if (!node) {
        node = NewNode(diffKey, m_sID);
        curveNode->addChild(node);
    }
    node->setText(0, GetResString(357) + QStringLiteral(" = ") + m_cCursors[0]->BuildDifference(*m_cCursors[1]));
}

bool Curve::EnableElement(const QString& key, bool enabled)
{
    Statistic* statistic = GetStatisticFromKey(key);
    if (!statistic) {
        m_bVisible = enabled;
        return true;
    }
    if (statistic->DisplayType() == Statistic::DisplayLine || statistic->DisplayType() == Statistic::DisplayCursor) {
        statistic->SetVisible(enabled);
        return true;
    }
    return false;
}

Cursor* Curve::NewCursor(ChartAdapter* chart, ChartAnnotations* annotations)
{
    auto cursor = std::make_unique<Cursor>();
    cursor->Initialize(chart, annotations);
    cursor->SetTag(static_cast<qint32>(m_cCursors.size() + 1) * 100 + m_lSeriesID);
    cursor->SetUnit(m_sUnit);
    m_cCursors.push_back(std::move(cursor));
    return m_cCursors.back().get();
}

Cursor* Curve::SetCursor(qint32 row, ChartAdapter* chart, ChartAnnotations* annotations, qint16 number)
{
    Cursor* cursor = nullptr;
    if (row >= 0)
        for (const auto& candidate : m_cCursors)
            if (candidate->Index() == row) {
                cursor = candidate.get();
                break;
            }
    if (!cursor && m_cCursors.size() > 1) {
        if (number == 0) {
            // The first of equally near cursors wins.
            qint64 best = 1000000;
            for (const auto& candidate : m_cCursors) {
                const qint64 distance = std::llabs(qint64(candidate->Index()) - row);
                if (distance < best) {
                    best = distance;
                    cursor = candidate.get();
                }
            }
        } else {
            cursor = m_cCursors[number == 1 ? 0 : 1].get();
        }
    }
    if (!cursor)
        cursor = NewCursor(chart, annotations);

    const MatrixBlockPtr block = m_cResult ? m_cResult->DataBlock() : nullptr;
    if (row >= 0 && block && row < block->Rows() && block->Columns() >= 2) {
        const double value = block->At(row, 1);
        const double date = block->At(row, 0);
        cursor->SetBoxPosition(QString());
        cursor->SetCustomText(QString());
        const double display = m_cResult->DataType() == DataMatrix::CosPhiType ? MeasuredCosPhi(value) : 0.0;
        cursor->SetPoint(row, value, static_cast<qint16>(m_lSeriesID), YAxis(), date, display);
    }
    if (m_cTree)
        UpdateCursorNodes(CurveNode(), true);
    return cursor;
}

void Curve::SetFreeCursor(double x, double y, ChartAnnotations* annotations)
{
    Cursor* cursor = m_cCursors.empty() ? NewCursor(m_cChart, annotations) : m_cCursors.front().get();
    cursor->SetBoxPosition(QString());
    cursor->SetCustomText(QString());
    const qint64 row = std::llround(x);
    const MatrixBlockPtr block = m_cResult ? m_cResult->DataBlock() : nullptr;
    double date = 0.0;
    if (block && row >= 0 && row < block->Rows() && block->Columns() >= 1)
        date = block->At(row, 0);
    cursor->SetPoint(x, y, static_cast<qint16>(m_lSeriesID), YAxis(), date, 0);
}

void Curve::RemoveCursor(qint32 number)
{
    const qint32 count = static_cast<qint32>(m_cCursors.size());
    for (qint32 i = 1; i <= count; ++i)
        if (number == -1 || number == i)
            m_cCursors[static_cast<size_t>(i - 1)]->Hide();
    if (number == -1)
        m_cCursors.clear();
    else if (number >= 1 && number <= count)
        m_cCursors.erase(m_cCursors.begin() + (number - 1));
    RetagCursors();
    UpdateStatistic(nullptr);
}

void Curve::RemoveFromView()
{
    if (m_cChart && m_cTree)
        RemoveNode(m_cTree, GetStatisticKey(nullptr));
    if (m_cGrid) {
        m_cGrid->RemoveMatrix(m_sID);
        m_cGrid->Update();
    }
}
