// SPDX-License-Identifier: GPL-3.0-or-later
// The name and memo of a report batch, for a new batch, a copy or the properties of one.
#pragma once

#include <QDialog>

#include <functional>

class QLineEdit;
class QPlainTextEdit;
class QPushButton;

class frm_BatchProps : public QDialog
{
    Q_OBJECT
public:
    explicit frm_BatchProps(QWidget* parent = nullptr);

    // Shows name and memo modally; on OK they hold what was entered and the result is true.
    bool ShowMe(QString& name, QString& memo);
    // Checked on OK with the entered name: a text says why it can't be taken, and the dialog
    // stays open; an empty text lets it close.
    void SetValidator(std::function<QString(const QString& name)> validator) { m_validator = std::move(validator); }
    // Shows the validator's text; a warning box without it.
    void SetMessageHandler(std::function<void(const QString& title, const QString& text)> handler)
    {
        m_message = std::move(handler);
    }

    QLineEdit* txt_Name() const { return m_txtName; }
    QPlainTextEdit* txt_Memo() const { return m_txtMemo; }
    QPushButton* cmd_OK() const { return m_cmdOK; }
    QPushButton* cmd_Cancel() const { return m_cmdCancel; }

private:
    void OnOK();

    QLineEdit* m_txtName = nullptr;
    QPlainTextEdit* m_txtMemo = nullptr;
    QPushButton* m_cmdOK = nullptr;
    QPushButton* m_cmdCancel = nullptr;
    std::function<QString(const QString&)> m_validator;
    std::function<void(const QString&, const QString&)> m_message;
};
