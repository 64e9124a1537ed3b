// SPDX-License-Identifier: GPL-3.0-or-later
#include "CsvDataModule.h"

#include "ModuleSettings.h"
#include "Numeric.h"
#include "RegistryKey.h"
#include "frm_CsvConfig.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

const QString FolderValue = QStringLiteral("Folder");

// Structure strings are split at "$": the character can't stand in a field.
QString Field(QString text)
{
    return text.replace('$', '_');
}

QString ChannelId(qint32 fileId, int number)
{
    return QString::number(fileId) + '#' + QString::number(number);
}

QString CleanFolder(const QString& folder)
{
    const QString trimmed = folder.trimmed();
    return trimmed.isEmpty() ? QString() : QDir::cleanPath(trimmed);
}

} // namespace

bool ParseCsvChannelId(const QString& id, qint32& fileId, int& number)
{
    const qsizetype hash = id.indexOf('#');
    if (hash <= 0 || hash == id.size() - 1)
        return false;
    const auto digitsOnly = [](QStringView text) {
        return std::all_of(text.begin(), text.end(), [](QChar c) { return c >= '0' && c <= '9'; });
    };
    const QStringView file = QStringView(id).left(hash);
    const QStringView column = QStringView(id).mid(hash + 1);
    if (!digitsOnly(file) || !digitsOnly(column))
        return false;
    bool fileOk = false;
    bool columnOk = false;
    const int parsedFile = file.toInt(&fileOk);
    const int parsedColumn = column.toInt(&columnOk);
    if (!fileOk || !columnOk || parsedFile < 1 || parsedColumn < 1)
        return false;
    fileId = parsedFile;
    number = parsedColumn;
    return true;
}

CsvDataModule::CsvDataModule(const DataModuleRegistration& registration, QObject* parent)
    : QObject(parent)
    , m_registration(registration)
{ }

CsvDataModule::~CsvDataModule() = default;

void CsvDataModule::SetMessageHandler(MessageHandlerInterface* handler)
{
    m_pMessageHandler = handler;
}

void CsvDataModule::Log(const QString& title, const QString& text, const QString& source, qint16 level) const
{
    if (m_pMessageHandler)
        m_pMessageHandler->WriteLog(title, text, source, level);
}

QString CsvDataModule::SettingsKey() const
{
    return ModuleSettings::Key(m_registration.name);
}

QString CsvDataModule::ConfiguredFolder() const
{
    return ModuleSettings::Read(m_registration.name, FolderValue);
}

QString CsvDataModule::Folder() const
{
    return CleanFolder(m_sParamFolder.isEmpty() ? ConfiguredFolder() : m_sParamFolder);
}

bool CsvDataModule::UseEnglish()
{
    return ModuleSettings::UseEnglish();
}

qint32 CsvDataModule::SelfCheck(qint32& status)
{
    // Nothing outside the module is needed to run; the folder is a matter of configuration.
    status = 1;
    return status;
}

qint32 CsvDataModule::Initialize(const QString& param, qint32& status)
{
    m_sParamFolder = param.trimmed();
    status = EnsureTree(false, QStringLiteral("CsvDataModule.Initialize"));
    return status;
}

qint32 CsvDataModule::EnsureTree(bool rescan, const QString& source)
{
    const QString folder = Folder();
    if (folder.isEmpty()) {
        m_sTreeFailure = "no folder is configured for the data module " + m_registration.name;
        Log("csv folder",
            "No folder is configured for the data module " + m_registration.name + "; choose one in its configuration.",
            source, 3);
        return NoFolder;
    }
    if (!QFileInfo(folder).isDir()) {
        m_sTreeFailure = "the folder " + QDir::toNativeSeparators(folder) + " does not exist";
        Log("csv folder",
            "The folder " + QDir::toNativeSeparators(folder) + " of the data module " + m_registration.name
                + " does not exist.",
            source, 3);
        return FolderMissing;
    }
    m_sTreeFailure.clear();
    if (rescan || !m_cTree.IsScanned() || m_cTree.Root() != folder) {
        m_cTree.Scan(folder, [this, &source](const QString& path, const QString& text) {
            const QFileInfo info(path);
            const QString key = path + '\n' + QString::number(info.size()) + '\n'
                + QString::number(info.fileTime(QFileDevice::FileModificationTime).toMSecsSinceEpoch()) + '\n' + text;
            if (m_cReported.contains(key))
                return;
            m_cReported.insert(key);
            Log("csv file", QDir::toNativeSeparators(path) + ": " + text, source, 2);
        });
        if (m_cTree.Entries().empty())
            Log("csv folder", "The folder " + QDir::toNativeSeparators(folder) + " holds no CSV files.", source, 2);
    }
    return 1;
}

CsvFileIndex* CsvDataModule::IndexFor(qint32 fileId, const QString& source)
{
    const CsvTreeEntry* entry = m_cTree.Find(fileId);
    if (!entry || !entry->isFile)
        return nullptr;
    const QString& path = entry->absolutePath;
    auto it = m_cIndexes.find(path);
    if (it != m_cIndexes.end() && !it->second.index->IsCurrent()) {
        m_cIndexes.erase(it);
        it = m_cIndexes.end();
    }
    if (it == m_cIndexes.end()) {
        if (m_cIndexes.size() >= MaxOpenFiles) {
            auto oldest = m_cIndexes.begin();
            for (auto i = m_cIndexes.begin(); i != m_cIndexes.end(); ++i)
                if (i->second.lastUse < oldest->second.lastUse)
                    oldest = i;
            m_cIndexes.erase(oldest);
        }
        CachedIndex cached;
        cached.index = std::make_unique<CsvFileIndex>(path);
        cached.index->Build(
            [this, &source](qint16 level, const QString& text) { Log("csv file", text, source, level); });
        it = m_cIndexes.emplace(path, std::move(cached)).first;
    }
    it->second.lastUse = ++m_lUseCounter;
    return it->second.index.get();
}

CsvFileIndex* CsvDataModule::IndexForChannel(const QString& channelId, int& number, const QString& source)
{
    qint32 fileId = 0;
    if (!ParseCsvChannelId(channelId, fileId, number) || EnsureTree(false, source) != 1)
        return nullptr;
    return IndexFor(fileId, source);
}

void CsvDataModule::GetFirstDate(const QString& channelId, double& date)
{
    int number = 0;
    const CsvFileIndex* index = IndexForChannel(channelId, number, QStringLiteral("CsvDataModule.GetFirstDate"));
    if (index && index->Rows() > 0)
        date = index->Times().front();
}

void CsvDataModule::GetLastDate(const QString& channelId, double& date)
{
    int number = 0;
    const CsvFileIndex* index = IndexForChannel(channelId, number, QStringLiteral("CsvDataModule.GetLastDate"));
    if (index && index->Rows() > 0)
        date = index->Times().back();
}

qint32 CsvDataModule::GetChannelOverview(ChannelCollection& channels, qint32& status)
{
    channels.Clear();
    status = EnsureTree(true, QStringLiteral("CsvDataModule.GetChannelOverview"));
    if (status != 1)
        return status;
    for (const CsvTreeEntry& entry : m_cTree.Entries()) {
        if (!entry.layout)
            continue;
        int number = 0;
        for (const Csv::ChannelHeader& header : entry.layout->channels) {
            auto channel = std::make_shared<DataMatrix>();
            channel->SetChannelID(ChannelId(entry.id, ++number));
            channel->SetChannelName(header.name);
            channel->SetUnit(header.unit);
            channel->SetDataType(header.dataType);
            channels.Add(channel, channel->ChannelID());
        }
    }
    return status;
}

qint32 CsvDataModule::GetChannelStructure(QStringList& categories, QStringList& channels, qint32& status)
{
    categories.clear();
    channels.clear();
    status = EnsureTree(false, QStringLiteral("CsvDataModule.GetChannelStructure"));
    if (status != 1)
        return status;
    for (const CsvTreeEntry& entry : m_cTree.Entries()) {
        categories.append(QString::number(entry.id) + '$' + Field(entry.name) + '$' + Field(entry.relativePath) + '$'
            + QString::number(entry.parentId) + '$'
            + (entry.isFile ? QStringLiteral("MEASURING") : QStringLiteral("FOLDER")));
        if (!entry.layout)
            continue;
        int number = 0;
        for (const Csv::ChannelHeader& header : entry.layout->channels) {
            ++number;
            channels.append(ChannelId(entry.id, number) + '$' + Field(header.name) + '$' + Field(header.unit) + '$'
                + QString::number(entry.id) + "$0$" + QString::number(number));
        }
    }
    return status;
}

qint32 CsvDataModule::GetData(
    const QString& channelList, ChannelCollection& channels, double from, double to, qint32& status)
{
    Q_UNUSED(channelList); // the collection holds the same channels, and is what gets filled
    const QString source = QStringLiteral("CsvDataModule.GetData");
    status = EnsureTree(false, source);
    // Why samples could not be read: the first failure of the call. A channel that was not read
    // gets no block, so that it can't be taken for one without samples in the window.
    QString failure = status == 1 ? QString() : "reading the samples failed: " + m_sTreeFailure;

    // The channels of one file are read in one walk over its lines.
    struct Wanted
    {
        std::vector<int> numbers;
        std::vector<MatrixBlock*> blocks;
        std::vector<DataMatrixPtr> channels;
    };
    QHash<qint32, Wanted> byFile;
    std::vector<qint32> fileOrder;
    for (qsizetype i = 0; i < channels.Count(); ++i) {
        const DataMatrixPtr channel = channels.Channel(i);
        if (!channel)
            continue;
        if (!failure.isEmpty()) {
            channel->SetDataBlock(nullptr);
            continue;
        }
        auto block = MatrixBlock::Create(0, 2);
        channel->SetDataBlock(block);
        qint32 fileId = 0;
        int number = 0;
        const CsvTreeEntry* entry
            = ParseCsvChannelId(channel->ChannelID(), fileId, number) ? m_cTree.Find(fileId) : nullptr;
        if (!entry || !entry->isFile) {
            Log("csv channel",
                "The data module " + m_registration.name + " has no channel " + channel->ChannelID() + ".", source, 2);
            continue;
        }
        auto it = byFile.find(fileId);
        if (it == byFile.end()) {
            it = byFile.insert(fileId, Wanted());
            fileOrder.push_back(fileId);
        }
        it->numbers.push_back(number);
        it->blocks.push_back(block.get());
        it->channels.push_back(channel);
    }

    double resolution = 0.0;
    for (const qint32 fileId : fileOrder) {
        CsvFileIndex* index = IndexFor(fileId, source);
        if (!index)
            continue;
        const Wanted& wanted = byFile[fileId];
        for (const int number : wanted.numbers)
            if (index->IsValid() && number > static_cast<int>(index->Layout().channels.size()))
                Log("csv channel",
                    QDir::toNativeSeparators(index->Path()) + " has no value column " + QString::number(number) + ".",
                    source, 2);
        const bool read = index->Error().isEmpty()
            && index->Read(wanted.numbers, from, to, wanted.blocks,
                [this, &source](qint16 level, const QString& text) { Log("csv file", text, source, level); });
        if (!read) {
            // The file vanished or can't be read: said in the log when it was found out.
            for (const DataMatrixPtr& channel : wanted.channels)
                channel->SetDataBlock(nullptr);
            if (failure.isEmpty())
                failure = "reading the samples of channel " + wanted.channels.front()->ChannelID()
                    + " failed: " + index->Error() + " (" + QDir::toNativeSeparators(index->Path()) + ")";
            status = ReadFailed;
            continue;
        }
        // Channels of different loggers may be mixed: the finest resolution serves them all.
        const double seconds = index->Resolution();
        if (seconds > 0.0 && (resolution == 0.0 || seconds < resolution))
            resolution = seconds;
    }
    QString text = QStringLiteral("CSV;") + QString::number(resolution, 'g', 12);
    if (!failure.isEmpty())
        text += ';' + failure;
    channels.AddText(text);
    return status;
}

void CsvDataModule::ShowConfig()
{
    frm_CsvConfig dialog(Folder(), UseEnglish());
    if (dialog.ShowMe())
        ApplyFolder(dialog.Folder());
}

bool CsvDataModule::ApplyFolder(const QString& folder)
{
    const QString before = Folder();
    RegistryKey key;
    if (key.WriteValue(Hive::CurrentUser, SettingsKey(), FolderValue, CleanFolder(folder)) != RegistryStatus::Ok)
        Log("error storing settings",
            "The folder of the data module " + m_registration.name + " could not be stored in the user's settings.",
            "CsvDataModule.ApplyFolder", 3);
    if (Folder() == before)
        return false;
    m_cTree = CsvTree();
    m_cIndexes.clear();
    if (m_pMessageHandler) {
        qint32 status = 0;
        m_pMessageHandler->SendMessage("CHANNELS_CHANGED", m_registration.address, status);
    }
    return true;
}
