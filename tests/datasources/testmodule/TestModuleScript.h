// SPDX-License-Identifier: GPL-3.0-or-later
// How tests steer the test data module: each module object reads its script, by the name it was
// registered with, from a property of the application object (which plug-in and test share), and
// counts its calls there.
#pragma once

#include <QCoreApplication>
#include <QStringList>
#include <QVariantMap>

namespace TestModuleScript {

// Script entries; a missing entry takes the default named here.
inline constexpr char SelfCheck[] = "selfCheck";             ///< int returned by SelfCheck, 1
inline constexpr char InitFailures[] = "initFailures";       ///< Initialize returns -7 this many times first, 0
inline constexpr char StructureStatus[] = "structureStatus"; ///< int, 1
inline constexpr char Overview[] = "overview";               ///< channel ids, {"1001", "1002"}
inline constexpr char Categories[] = "categories";           ///< category strings, {"1$Site$$0"}
inline constexpr char Channels[] = "channels";               ///< channel strings, one per default channel
inline constexpr char HasConfig[] = "hasConfig";             ///< bool, true
inline constexpr char AnnounceOnConfig[] = "announceOnConfig"; ///< ShowConfig sends CHANNELS_CHANGED, false
// Names of operations that throw instead of answering: "Create", "SelfCheck", "Initialize",
// "GetChannelOverview", "GetChannelStructure", "HasConfig", "ShowConfig", "SetMessageHandler".
inline constexpr char Throws[] = "throws";

inline QByteArray Property(const char* kind, const QString& name)
{
    return kind + name.toUtf8();
}

inline QVariantMap Script(const QString& name)
{
    return qApp->property(Property("soranoTestModule/", name).constData()).toMap();
}

inline int Calls(const QString& name, const QString& operation)
{
    return qApp->property(Property("soranoTestModuleCalls/", name).constData()).toMap().value(operation).toInt();
}

inline void SetScript(const QString& name, const QVariantMap& script)
{
    qApp->setProperty(Property("soranoTestModule/", name).constData(), script);
    qApp->setProperty(Property("soranoTestModuleCalls/", name).constData(), QVariantMap());
}

inline void CountCall(const QString& name, const QString& operation)
{
    QVariantMap calls = qApp->property(Property("soranoTestModuleCalls/", name).constData()).toMap();
    calls[operation] = calls.value(operation).toInt() + 1;
    qApp->setProperty(Property("soranoTestModuleCalls/", name).constData(), calls);
}

} // namespace TestModuleScript
