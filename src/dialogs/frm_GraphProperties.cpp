// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_GraphProperties.h"

#include "ChartAdapter.h"
#include "DialogFrame.h"
#include "ResStrings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>

frm_GraphProperties::frm_GraphProperties(QWidget* parent)
    : QDialog(parent)
{
    m_gallery = new QComboBox(this);
    m_gallery->setObjectName(QStringLiteral("cbo_Gallery"));
    m_gallery->addItem(GetResString(403), ChartGallery::Lines);
    m_gallery->addItem(GetResString(404), ChartGallery::Bar);
    m_gallery->addItem(GetResString(405), ChartGallery::Step);
    m_legend = new QCheckBox(GetResString(386), this);
    m_legend->setObjectName(QStringLiteral("chk_Legend"));
    m_view3D = new QCheckBox(GetResString(385), this);
    m_view3D->setObjectName(QStringLiteral("chk_View3D"));
    m_grid1 = new QCheckBox(GetResString(449), this);
    m_grid1->setObjectName(QStringLiteral("chk_YGrid1"));
    m_grid2 = new QCheckBox(GetResString(450), this);
    m_grid2->setObjectName(QStringLiteral("chk_YGrid2"));
    m_title = new QLineEdit(this);
    m_title->setObjectName(QStringLiteral("txt_Title"));

    auto* fields = new QFormLayout;
    fields->addRow(GetResString(380), m_gallery);
    fields->addRow(GetResString(387), m_title);
    fields->addRow(QString(), m_legend);
    fields->addRow(QString(), m_view3D);
    fields->addRow(QString(), m_grid1);
    fields->addRow(QString(), m_grid2);
    DialogFrame::Build(*this, QStringLiteral("frm_GraphProperties"), 447, 448, fields);
}

void frm_GraphProperties::Load(const GraphProperties& properties)
{
    // A chart type the list doesn't offer shows no entry and stays as it is unless one is chosen.
    m_gallery->setCurrentIndex(m_gallery->findData(properties.Gallery));
    m_legend->setChecked(properties.Legend);
    m_view3D->setChecked(properties.View3D);
    m_grid1->setChecked(properties.ShowYGrid1);
    m_grid2->setChecked(properties.ShowYGrid2);
    m_title->setText(properties.Title);
}

void frm_GraphProperties::Save(GraphProperties& target) const
{
    if (m_gallery->currentIndex() >= 0)
        target.Gallery = m_gallery->currentData().toInt();
    target.Legend = m_legend->isChecked();
    target.View3D = m_view3D->isChecked();
    target.ShowYGrid1 = m_grid1->isChecked();
    target.ShowYGrid2 = m_grid2->isChecked();
    target.Title = m_title->text();
}

bool frm_GraphProperties::ShowMe(GraphProperties& properties)
{
    Load(properties);
    if (exec() != QDialog::Accepted)
        return false;
    Save(properties);
    return true;
}
