// SPDX-License-Identifier: GPL-3.0-or-later
// The string table is compiled into the program as a tab-separated text file and
// read into a hash on first use; after that every lookup is one hash access.
#include "ResStrings.h"

#include "Globals.h"
#include "Logging.h"

#include <QFile>
#include <QHash>
#include <QStringView>

#include <limits>
#include <optional>

namespace {

const QString kTablePath = QStringLiteral(":/strings/resSorano.tsv");
const QString kLogSource = QStringLiteral("ResStrings");

// Resolves the escapes \n, \t and \\; any other backslash sequence makes the text invalid.
std::optional<QString> Unescape(QStringView raw)
{
    QString text;
    text.reserve(raw.size());
    for (qsizetype i = 0; i < raw.size(); ++i) {
        const QChar c = raw[i];
        if (c != u'\\') {
            text.append(c);
            continue;
        }
        if (++i == raw.size())
            return std::nullopt;
        switch (raw[i].unicode()) {
        case u'n':
            text.append(u'\n');
            break;
        case u't':
            text.append(u'\t');
            break;
        case u'\\':
            text.append(u'\\');
            break;
        default:
            return std::nullopt;
        }
    }
    return text;
}

void LogSkipped(int lineNo, const QString& reason)
{
    WriteLog(QStringLiteral("String table"), QStringLiteral("line %1 skipped: %2").arg(lineNo).arg(reason), kLogSource,
        LogLevel::Error);
}

// A line that does not parse is skipped and logged; the rest of the table stays usable,
// and a text lost that way shows as its number like any other missing one.
QHash<int, QString> LoadTable()
{
    QHash<int, QString> table;
    QFile file(kTablePath);
    if (!file.open(QIODevice::ReadOnly)) {
        WriteLog(QStringLiteral("String table"),
            QStringLiteral("cannot open %1: %2").arg(kTablePath, file.errorString()), kLogSource, LogLevel::Error);
        return table;
    }

    const QString content = QString::fromUtf8(file.readAll());
    const QList<QStringView> lines = QStringView(content).split(u'\n');
    table.reserve(lines.size());
    int lineNo = 0;
    for (QStringView line : lines) {
        ++lineNo;
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (line.trimmed().isEmpty() || line.startsWith(u'#'))
            continue;

        const qsizetype tab = line.indexOf(u'\t');
        if (tab < 0) {
            LogSkipped(lineNo, QStringLiteral("no tab between id and text"));
            continue;
        }
        bool ok = false;
        const int id = line.first(tab).toInt(&ok);
        if (!ok || id < 0) {
            LogSkipped(lineNo, QStringLiteral("invalid id"));
            continue;
        }
        const std::optional<QString> text = Unescape(line.sliced(tab + 1));
        if (!text) {
            LogSkipped(lineNo, QStringLiteral("invalid escape sequence"));
            continue;
        }
        if (text->isEmpty()) {
            LogSkipped(lineNo, QStringLiteral("empty text"));
            continue;
        }
        if (table.contains(id)) {
            LogSkipped(lineNo, QStringLiteral("id %1 defined twice").arg(id));
            continue;
        }
        table.insert(id, *text);
    }
    table.squeeze();
    return table;
}

// Loaded once; the static's initialisation is thread-safe.
const QHash<int, QString>& Table()
{
    static const QHash<int, QString> table = LoadTable();
    return table;
}

} // namespace

QString LocalText(const char* german, const char* english)
{
    return QString::fromUtf8(g_lLangOffset >= 1000 ? english : german);
}

QString GetResString(int id)
{
    // Sum in 64 bits so that an absurd offset cannot overflow into a valid id.
    const qint64 key = qint64(id) + qint64(g_lLangOffset);
    if (key >= 0 && key <= std::numeric_limits<int>::max()) {
        const QHash<int, QString>& table = Table();
        const auto it = table.constFind(int(key));
        if (it != table.cend())
            return it.value();
    }
    return QString::number(id);
}

QString ResStringRaw(int id)
{
    return Table().value(id);
}

int ResStringCount()
{
    return int(Table().size());
}

QLocale LanguageLocale()
{
    return g_lLangOffset >= 1000 ? QLocale(QLocale::English, QLocale::UnitedKingdom)
                                 : QLocale(QLocale::German, QLocale::Germany);
}
