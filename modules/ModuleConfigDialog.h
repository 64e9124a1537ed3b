// SPDX-License-Identifier: GPL-3.0-or-later
// The frame of the shipped modules' configuration dialogs: a caption, one path with a browse
// button, room for what a module shows below it, and OK and Cancel, in German or English.
#pragma once

#include <QDialog>
#include <QString>

class QLineEdit;
class QVBoxLayout;

class ModuleConfigDialog : public QDialog
{
    Q_OBJECT
public:
    // Shows the dialog modally; true on OK.
    bool ShowMe();

protected:
    struct Texts
    {
        QString title;
        QString label;
    };
    // pathName is the object name of the path field.
    ModuleConfigDialog(const Texts& texts, const QString& pathName, const QString& path, bool english, QWidget* parent);

    bool English() const { return m_bEnglish; }
    // The path as the field holds it, blanks around it removed.
    QString Path() const;
    void SetPath(const QString& path);
    QLineEdit* PathField() const { return m_txtPath; }
    // Adds a widget below the path row, above the buttons.
    void AddBelow(QWidget* widget, int stretch = 0);
    // Asks for a path when the browse button is clicked.
    virtual void Browse() = 0;

private:
    QLineEdit* m_txtPath = nullptr;
    QVBoxLayout* m_layout = nullptr;
    bool m_bEnglish = false;
};
