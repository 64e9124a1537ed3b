// SPDX-License-Identifier: GPL-3.0-or-later
// Reads arbitrary bytes as the batch list and as the .btc of one batch beside a sound one, and
// edits what was read: nothing may crash, every batch the list held must stay, and the sound
// batch must keep its template.
#include "BatchStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>

namespace {

void Check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

// An empty batch folder, the same one on every run; in memory where the system has a place for it,
// since every run writes several files.
QString FreshFolder()
{
    static const QTemporaryDir dir(QFileInfo(QStringLiteral("/dev/shm")).isWritable()
            ? QStringLiteral("/dev/shm/batch_load_fuzzer-XXXXXX")
            : QDir::tempPath() + QStringLiteral("/batch_load_fuzzer-XXXXXX"));
    const QString folder = dir.path() + QStringLiteral("/batch");
    QDir(folder).removeRecursively();
    return folder;
}

void Write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    Check(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

QByteArray Read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList Batches(const BatchStore& store)
{
    QStringList batches;
    for (qsizetype i = 0; i < store.Count(); ++i)
        batches << store.Element(i) + u'|' + store.Memo(i);
    return batches;
}

QStringList Entries(BatchStore& store, qsizetype index)
{
    QStringList entries;
    for (const BatchStore::Template& entry : store.Templates(index)) {
        Check(!entry.file.contains(u'/') && !entry.file.contains(u'\\'));
        Check(QFileInfo(store.TemplatePath(entry)).isFile());
        entries << entry.id + u'|' + entry.name + u'|' + entry.file;
    }
    return entries;
}

void AsList(const QByteArray& input)
{
    const QString folder = FreshFolder();
    BatchStore store(folder);
    Write(store.DefinitionPath(), input);
    store.Load();
    const QStringList before = Batches(store);
    const qsizetype selected = store.StoredSelection();
    Check(store.Count() == 0 ? selected == -1 : selected >= 0 && selected < store.Count());
    for (qsizetype i = 0; i < store.Count() && i < 3; ++i)
        Check(store.Templates(i).empty()); // no .btc exists

    const bool known = store.IndexOf(QStringLiteral("Gut Stapel")) >= 0;
    const qsizetype added = store.Add(QStringLiteral("Gut Stapel"), QStringLiteral("sicher"));
    Check(known ? added == -1 : added == store.Count() - 1);

    BatchStore again(folder);
    again.Load();
    Check(Batches(again) == (known ? before : before + QStringList { QStringLiteral("Gut~Stapel|sicher") }));
    const QString aside = store.DefinitionPath() + QStringLiteral(".damaged");
    Check(!QFileInfo::exists(aside) || Read(aside) == input);
}

void AsBtc(const QByteArray& input)
{
    const QString folder = FreshFolder();
    BatchStore store(folder);
    Check(store.Add(QStringLiteral("Fremd"), QString()) == 0);
    Check(store.Add(QStringLiteral("Gut"), QStringLiteral("sicher")) == 1);
    Write(store.TemplatePath(QStringLiteral("Gut_0.mtb")), "Vorlage");
    Check(store.AddTemplate(1, { QStringLiteral("Gut_0.mtb"), QStringLiteral("Gut"), QStringLiteral("Gut_0.mtb") }));
    const QStringList sound = Entries(store, 1);
    Write(folder + QStringLiteral("/Fremd.btc"), input);

    const QStringList read = Entries(store, 0);
    Check(Entries(store, 0) == read); // reading again finds what the first reading left
    const QString file = store.NewTemplateFile(0, QStringLiteral("Neu"));
    Check(!QFileInfo::exists(store.TemplatePath(file)));
    Write(store.TemplatePath(file), "neu");
    store.AddTemplate(0, { file, QStringLiteral("Neu"), file });
    if (!read.isEmpty()) {
        store.RenameTemplate(0, read.front().section(u'|', 0, 0), QStringLiteral("umbenannt"));
        store.RemoveTemplate(0, read.back().section(u'|', 0, 0));
    }
    store.Copy(0, QStringLiteral("Fremd Kopie"), QString());
    Check(store.Remove(0));

    BatchStore again(folder);
    again.Load();
    const qsizetype gut = again.IndexOf(QStringLiteral("Gut"));
    Check(gut >= 0 && again.Memo(gut) == QStringLiteral("sicher"));
    Check(Entries(again, gut) == sound);
    Check(Read(again.TemplatePath(QStringLiteral("Gut_0.mtb"))) == "Vorlage");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    AsList(input);
    AsBtc(input);
    return 0;
}
