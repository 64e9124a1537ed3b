// SPDX-License-Identifier: GPL-3.0-or-later
// The frame of the server modules' configuration dialogs: the connection text in the path field,
// a form for further fields, a button that tests the connection with the entered values and shows
// the server's answer, and a preview of the channel tree read with those values.
#pragma once

#include "ModuleConfigDialog.h"

#include <QStringList>

class QFormLayout;
class QLabel;
class QPushButton;
class QTreeWidget;

class ServerConfigDialog : public ModuleConfigDialog
{
    Q_OBJECT
public:
    // Tests the connection, shows the answer and fills the preview; what the test button does.
    void TestAndPreview();

protected:
    ServerConfigDialog(const Texts& texts, const QString& pathName, const QString& path, bool english, QWidget* parent);

    // Adds a labelled row to the form below the connection text.
    void AddField(const QString& label, QWidget* field);
    // Connects with the entered values; the server's answer (its version) or the error message.
    virtual QString TestConnection() = 0;
    // Reads the structure with the entered values: category strings "id$name$remark$parent[$kind]"
    // and channel strings "id$name$remark$category$parent channel[$path id]", parents first. False
    // and answer set when it can't be read.
    virtual bool ReadPreview(QStringList& categories, QStringList& channels, QString& answer) = 0;
    // Fills the tree from structure strings; says how many channels it shows.
    void ShowPreview(const QStringList& categories, const QStringList& channels);

private:
    // Server dialogs have nothing to browse for.
    void Browse() override { }

    QFormLayout* m_form = nullptr;
    QPushButton* m_cmdTest = nullptr;
    QLabel* m_lblAnswer = nullptr;
    QTreeWidget* m_trvChannels = nullptr;
    QLabel* m_lblPreview = nullptr;
};
