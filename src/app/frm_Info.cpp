// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_Info.h"

#include "ResStrings.h"
#include "Settings.h"
#include "Version.h"

#include <QDesktopServices>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace {

const QSize LogoSize(96, 96);

} // namespace

frm_Info::frm_Info(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_Info"));
    m_logo = new QLabel(this);
    m_logo->setObjectName(QStringLiteral("img_Logo"));
    m_logo->setAlignment(Qt::AlignTop | Qt::AlignHCenter);

    m_lblName = new QLabel(this);
    m_lblName->setObjectName(QStringLiteral("lbl_Name"));
    QFont big = m_lblName->font();
    big.setPointSizeF(big.pointSizeF() * 1.6);
    big.setBold(true);
    m_lblName->setFont(big);
    m_lblVersion = new QLabel(this);
    m_lblVersion->setObjectName(QStringLiteral("lbl_Version"));
    m_lblNotice = new QLabel(this);
    m_lblNotice->setObjectName(QStringLiteral("lbl_Notice"));
    m_lblNotice->setWordWrap(true);
    m_lblNotice->setMinimumWidth(260);
    m_lblURL = new QLabel(this);
    m_lblURL->setObjectName(QStringLiteral("lbl_URL"));
    m_lblURL->setTextFormat(Qt::RichText);
    m_lblURL->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    connect(m_lblURL, &QLabel::linkActivated, this,
        [](const QString& link) { QDesktopServices::openUrl(QUrl::fromUserInput(link)); });

    m_cmdClose = new QPushButton(GetResString(273), this);
    m_cmdClose->setObjectName(QStringLiteral("cmd_Close"));
    m_cmdClose->setDefault(true);
    connect(m_cmdClose, &QPushButton::clicked, this, &QDialog::accept);

    auto* texts = new QVBoxLayout;
    texts->addWidget(m_lblName);
    texts->addWidget(m_lblVersion);
    texts->addWidget(m_lblNotice);
    texts->addWidget(m_lblURL);
    texts->addStretch(1);

    auto* top = new QHBoxLayout;
    top->setSpacing(16);
    top->addWidget(m_logo);
    top->addLayout(texts, 1);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_cmdClose);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

QString frm_Info::VersionText()
{
    return QStringLiteral("%1.%2.%3").arg(SoranoVersionMajor).arg(SoranoVersionMinor).arg(SoranoVersionRevision);
}

void frm_Info::Fill(const QString& applicationName)
{
    using Settings::Id;
    setWindowTitle(applicationName);
    m_lblName->setText(applicationName);
    m_lblVersion->setText(GetResString(491) + QLatin1String(": ") + VersionText());
    m_lblNotice->setText(GetResString(492));

    QPixmap logo;
    const QString file = Settings::Value(Id::VendorLogo);
    if (file.isEmpty() || !logo.load(file))
        logo = QIcon(QStringLiteral(":/pictures/logo.svg")).pixmap(LogoSize);
    m_logo->setPixmap(logo);

    const QString url = Settings::Value(Id::VendorURL).trimmed();
    m_lblURL->setText(url.isEmpty()
            ? QString()
            : QStringLiteral("<a href=\"%1\">%2</a>").arg(url.toHtmlEscaped(), url.toHtmlEscaped()));
    m_lblURL->setVisible(!url.isEmpty());
}

void frm_Info::ShowMe(const QString& applicationName)
{
    Fill(applicationName);
    exec();
}
