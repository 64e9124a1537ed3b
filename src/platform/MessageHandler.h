// SPDX-License-Identifier: GPL-3.0-or-later
// Named messages with one text parameter, from long-running work and data modules to the shell.
#pragma once

#include <QObject>
#include <QString>

class MessageHandler : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    void Send(const QString& name, const QString& params) { emit Message(name, params); }

signals:
    void Message(const QString& name, const QString& params);
};
