// SPDX-License-Identifier: GPL-3.0-or-later
// How tests steer the test data module: each module object reads its script, by the name it
// was registered with, from a property of the application object, and counts its calls there.
// Plug-in and test share the one application object of the process.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace TestModuleScript {

// Script entries; a missing entry takes the default named here.
inline constexpr char SelfCheck[] = "selfCheck";             ///< int returned by SelfCheck, 1
inline constexpr char InitFailures[] = "initFailures";       ///< Initialize fails this many times first, 0
inline constexpr char InitStatus[] = "initStatus";           ///< what a failing Initialize returns, -7
inline constexpr char OverviewStatus[] = "overviewStatus";   ///< int, 1
inline constexpr char StructureStatus[] = "structureStatus"; ///< int, 1
inline constexpr char Overview[] = "overview";               ///< channel ids, {"1001", "1002"}
inline constexpr char Categories[] = "categories";           ///< category strings, {"1$Site$$0"}
inline constexpr char Channels[] = "channels";               ///< channel strings, one per default channel
inline constexpr char HasConfig[] = "hasConfig";             ///< bool, true
inline constexpr char AnnounceOnConfig[] = "announceOnConfig"; ///< ShowConfig sends CHANNELS_CHANGED, false
// Names of operations that throw instead of answering: "Create", "SelfCheck", "Initialize",
// "GetChannelOverview", "GetChannelStructure", "HasConfig", "ShowConfig", "SetMessageHandler".
inline constexpr char Throws[] = "throws";

inline QByteArray ScriptProperty(const QString& name)
{
    return "soranoTestModule/" + name.toUtf8();
}

inline QByteArray CallsProperty(const QString& name)
{
    return "soranoTestModuleCalls/" + name.toUtf8();
}

inline QVariantMap Script(const QString& name)
{
    return qApp->property(ScriptProperty(name).constData()).toMap();
}

inline void SetScript(const QString& name, const QVariantMap& script)
{
    qApp->setProperty(ScriptProperty(name).constData(), script);
    qApp->setProperty(CallsProperty(name).constData(), QVariantMap());
}

inline void CountCall(const QString& name, const QString& operation)
{
    QVariantMap calls = qApp->property(CallsProperty(name).constData()).toMap();
    calls[operation] = calls.value(operation).toInt() + 1;
    qApp->setProperty(CallsProperty(name).constData(), calls);
}

inline int Calls(const QString& name, const QString& operation)
{
    return qApp->property(CallsProperty(name).constData()).toMap().value(operation).toInt();
}

} // namespace TestModuleScript
