// SPDX-License-Identifier: GPL-3.0-or-later
// Named messages with one text parameter, from long-running work and data modules to the shell.
#pragma once

#include "DataModuleInterface.h"

#include <QObject>
#include <QString>

class MessageHandler : public QObject, public MessageHandlerInterface
{
    Q_OBJECT
public:
    using QObject::QObject;

    void Send(const QString& name, const QString& params) { emit Message(name, params); }

    void SendMessage(const QString& name, const QString& params, qint32& status) override
    {
        Send(name, params);
        status = 1;
    }
    void WriteLog(const QString& title, const QString& text, const QString& source, qint16 level) override;

signals:
    void Message(const QString& name, const QString& params);
};
