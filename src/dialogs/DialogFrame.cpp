// SPDX-License-Identifier: GPL-3.0-or-later
#include "DialogFrame.h"

#include "ResStrings.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <functional>

namespace DialogFrame {

namespace {

QPushButton* Frame(QDialog& dialog, const QString& name, int captionId, int descriptionId,
    const std::function<void(QVBoxLayout&)>& addBody)
{
    dialog.setObjectName(name);
    dialog.setWindowTitle(GetResString(captionId));
    auto* description = new QLabel(GetResString(descriptionId), &dialog);
    description->setObjectName(QStringLiteral("lbl_Description"));
    description->setWordWrap(true);
    auto* ok = new QPushButton(GetResString(266), &dialog);
    ok->setObjectName(QStringLiteral("cmd_OK"));
    ok->setDefault(true);
    auto* cancel = new QPushButton(GetResString(267), &dialog);
    cancel->setObjectName(QStringLiteral("cmd_Cancel"));

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(description);
    addBody(*layout);
    layout->addLayout(buttons);

    QObject::connect(ok, &QPushButton::clicked, &dialog, &QDialog::accept);
    QObject::connect(cancel, &QPushButton::clicked, &dialog, &QDialog::reject);
    return ok;
}

} // namespace

QPushButton* Build(QDialog& dialog, const QString& name, int captionId, int descriptionId, QWidget* body)
{
    return Frame(dialog, name, captionId, descriptionId, [body](QVBoxLayout& layout) { layout.addWidget(body, 1); });
}

QPushButton* Build(QDialog& dialog, const QString& name, int captionId, int descriptionId, QLayout* body)
{
    return Frame(dialog, name, captionId, descriptionId, [body](QVBoxLayout& layout) { layout.addLayout(body, 1); });
}

} // namespace DialogFrame
