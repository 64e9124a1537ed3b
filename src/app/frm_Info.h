// SPDX-License-Identifier: GPL-3.0-or-later
// The about box: name, version and notice of the program, the vendor's logo and web address.
#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

class frm_Info : public QDialog
{
    Q_OBJECT
public:
    explicit frm_Info(QWidget* parent = nullptr);

    // Fills the box for applicationName and shows it modally. The installation's "VendorLogo"
    // replaces the built-in logo; its "VendorURL", when set, shows as a link that opens in the
    // browser.
    void ShowMe(const QString& applicationName);

    // The version of this build, "major.minor.revision".
    static QString VersionText();

private:
    void Fill(const QString& applicationName);

    QLabel* m_logo = nullptr;
    QLabel* m_lblName = nullptr;
    QLabel* m_lblVersion = nullptr;
    QLabel* m_lblNotice = nullptr;
    QLabel* m_lblURL = nullptr;
    QPushButton* m_cmdClose = nullptr;
};
