// SPDX-License-Identifier: GPL-3.0-or-later
// The files of the report batches.
#include "BatchStore.h"

#include "AppPaths.h"
#include "Logging.h"
#include "SafeSave.h"

#include <QByteArrayView>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace {

const QString RootTag = QStringLiteral("Selected");
const QString BtcRoot = QStringLiteral("Stapelreportdefinition");
const QString DefinitionFile = QStringLiteral("Batches.def");
const QString LoadSource = QStringLiteral("BatchStore.Load");
const QString SaveSource = QStringLiteral("BatchStore.Save");
const QString TemplateSource = QStringLiteral("BatchStore.Templates");

// An element name longer than this would make a .btc name that file systems refuse.
constexpr qsizetype MaxElementBytes = 200;
constexpr qsizetype MaxTemplateStem = 100;

// The XML tree reads no '~' in element names, so the store keeps ':' in its tree, which no batch
// name holds, and swaps the two in the tags of the file's text. Comments and CDATA sections are
// left alone.
QByteArray SwapInTags(QByteArray text, char from, char to)
{
    const qsizetype size = text.size();
    qsizetype at = 0;
    while ((at = text.indexOf('<', at)) >= 0) {
        const QByteArrayView rest = QByteArrayView(text).sliced(at);
        if (rest.startsWith("<!--") || rest.startsWith("<![CDATA[")) {
            const bool comment = rest.startsWith("<!--");
            const qsizetype end = text.indexOf(comment ? "-->" : "]]>", at + 4);
            if (end < 0)
                break;
            at = end + 3;
            continue;
        }
        ++at;
        if (at < size && text[at] == '/')
            ++at;
        for (; at < size; ++at) {
            const char c = text[at];
            if (static_cast<unsigned char>(c) <= ' ' || c == '>' || c == '/' || c == '=' || c == '<' || c == '?'
                || c == '!')
                break;
            if (c == from)
                text[at] = to;
        }
    }
    return text;
}

QString InternalTag(const QString& element)
{
    return QString(element).replace(u'~', u':');
}

QString ElementOf(const XmlNode& node)
{
    return node.Tag().replace(u':', u'~');
}

bool ValidElement(const QString& element)
{
    if (element.isEmpty() || element.toUtf8().size() > MaxElementBytes)
        return false;
    if (!element[0].isLetter() && element[0] != u'_')
        return false;
    return std::all_of(element.cbegin(), element.cend(),
        [](QChar c) { return c.isLetterOrNumber() || c == u'_' || c == u'-' || c == u'.' || c == u'~'; });
}

// The file name behind the last separator: old batches stored full paths.
QString FileNameOf(const QString& stored)
{
    const qsizetype cut = std::max(stored.lastIndexOf(u'\\'), stored.lastIndexOf(u'/'));
    return cut < 0 ? stored : stored.mid(cut + 1);
}

bool PlainFileName(const QString& file)
{
    return !file.isEmpty() && file != QLatin1String(".") && file != QLatin1String("..") && !file.contains(u'/')
        && !file.contains(u'\\') && !file.contains(QChar(0));
}

// Only template views are ever deleted, whatever a .btc names.
bool Deletable(const QString& file)
{
    return PlainFileName(file) && file.endsWith(QLatin1String(".mtb"), Qt::CaseInsensitive);
}

// A text as it reads again after the next save, so that keys and lists stay as they are: the XML
// tree writes a carriage return as it is, which reading makes a line feed, and it drops a text of
// white space alone.
QString Stable(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
    const bool blank
        = std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c == u' ' || c == u'\t' || c == u'\n'; });
    return blank ? QString() : text;
}

QString TextOf(const XmlNode& node, const QString& tag)
{
    return Stable(node.ChildContent(tag));
}

void SetChild(XmlNode parent, const QString& tag, const QString& text)
{
    if (XmlNode child = parent.ChildByTag(tag))
        child.SetContent(text);
    else
        parent.NewChild(tag, text);
}

template<typename Visit> void ForEachReport(XmlDocument& doc, Visit visit)
{
    const XmlNode reports = doc.RootNode().ChildByTag(QStringLiteral("reports"));
    for (pugi::xml_node child = reports.Raw().child("report"); child; child = child.next_sibling("report"))
        visit(XmlNode(child));
}

// "<stem>_<n>.<extension>" with the first n from there on that names no file of the folder and
// none of those taken.
QString FreeFile(
    const QString& folder, const QString& stem, qsizetype n, const QString& extension, const QSet<QString>& taken = {})
{
    for (;; ++n) {
        const QString file = stem + u'_' + QString::number(n) + (extension.isEmpty() ? QString() : u'.' + extension);
        if (!taken.contains(file) && !QFileInfo::exists(folder + u'/' + file))
            return file;
    }
}

} // namespace

BatchStore::BatchStore(const QString& folder)
    : m_sFolder(folder)
{
    QDir().mkpath(m_sFolder);
    m_cDefinition.CreateRoot(RootTag);
}

QString BatchStore::DefaultFolder()
{
    return AppPaths::DataFolder() + QStringLiteral("/batch");
}

QString BatchStore::DefinitionPath() const
{
    return m_sFolder + u'/' + DefinitionFile;
}

QString BatchStore::BtcPath(const QString& element) const
{
    return m_sFolder + u'/' + element + QStringLiteral(".btc");
}

void BatchStore::Load()
{
    m_vBatches.clear();
    m_bDamaged = false;
    m_cDefinition.CreateRoot(RootTag);
    const QString path = DefinitionPath();
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink())
        return; // the usual first start

    QString fault;
    if (!info.isFile()) {
        fault = path + QStringLiteral(" is no file");
    } else {
        QFile file(path);
        QByteArray bytes;
        if (file.open(QIODevice::ReadOnly))
            bytes = file.readAll();
        if (file.error() != QFileDevice::NoError)
            fault = QStringLiteral("Cannot read ") + path + QStringLiteral(": ") + file.errorString();
        else if (!m_cDefinition.LoadString(SwapInTags(bytes, '~', ':')))
            fault = m_cDefinition.LastError().replace(QStringLiteral("XML text"), path);
        else if (const XmlNode root = m_cDefinition.RootNode();
                 root.Tag().compare(RootTag, Qt::CaseInsensitive) != 0 && root.ChildCount() > 0)
            fault = path + QStringLiteral(" has the root element <") + root.Tag() + QStringLiteral(">, not <Selected>");
    }
    if (!fault.isEmpty()) {
        WriteLog(QStringLiteral("batch list unreadable"),
            fault + QStringLiteral("; no batches were read, and the file is kept."), LoadSource, LogLevel::Error);
        m_bDamaged = true;
        m_cDefinition.CreateRoot(RootTag);
        return;
    }
    if (XmlNode root = m_cDefinition.RootNode(); root.Tag().compare(RootTag, Qt::CaseInsensitive) != 0)
        root.SetTag(RootTag); // an empty list of another name
    Index();
    const qsizetype skipped = m_cDefinition.RootNode().ChildCount() - Count();
    if (skipped > 0)
        WriteLog(QStringLiteral("batch entries skipped"),
            QString::number(skipped)
                + QStringLiteral(" entries of %1 are no batch names or name a batch twice; they stay in the file.")
                      .arg(path),
            LoadSource, LogLevel::Error);
}

void BatchStore::Index()
{
    m_vBatches.clear();
    QSet<QString> seen;
    const XmlNode root = m_cDefinition.RootNode();
    for (pugi::xml_node child = root.Raw().first_child(); child; child = child.next_sibling()) {
        if (child.type() != pugi::node_element)
            continue;
        const XmlNode node(child);
        const QString element = ElementOf(node);
        if (ValidElement(element) && !seen.contains(element.toCaseFolded())) {
            seen.insert(element.toCaseFolded());
            m_vBatches.push_back(node);
        }
    }
}

QString BatchStore::Element(qsizetype index) const
{
    return index >= 0 && index < Count() ? ElementOf(m_vBatches[static_cast<size_t>(index)]) : QString();
}

QString BatchStore::Name(qsizetype index) const
{
    return ShownName(Element(index));
}

QString BatchStore::Memo(qsizetype index) const
{
    return index >= 0 && index < Count() ? Stable(m_vBatches[static_cast<size_t>(index)].Content()) : QString();
}

qsizetype BatchStore::IndexOf(const QString& name) const
{
    const QString element = ElementName(name);
    for (qsizetype i = 0; i < Count(); ++i)
        if (Element(i).compare(element, Qt::CaseInsensitive) == 0)
            return i;
    return -1;
}

qsizetype BatchStore::StoredSelection() const
{
    if (Count() == 0)
        return -1;
    bool ok = false;
    // The batches are children of the root, which a const document does not hand out.
    const qlonglong stored = m_vBatches.front().Parent().Content().trimmed().toLongLong(&ok);
    return ok && stored >= 0 && stored < Count() ? static_cast<qsizetype>(stored) : 0;
}

bool BatchStore::SetSelected(qsizetype index)
{
    if (index < 0 || index >= Count())
        return false;
    const QByteArray before = m_cDefinition.ToString();
    m_cDefinition.RootNode().SetContent(QString::number(index));
    return SaveDefinition(before);
}

QString BatchStore::ElementName(const QString& shownName)
{
    return QString(shownName).replace(u' ', u'~');
}

QString BatchStore::ShownName(const QString& elementName)
{
    return QString(elementName).replace(u'~', u' ');
}

bool BatchStore::IsValidName(const QString& name)
{
    return ValidElement(ElementName(name));
}

QString BatchStore::CopyName(const QString& name)
{
    return QStringLiteral("Kopie von ") + name;
}

bool BatchStore::SaveDefinition(const QByteArray& before)
{
    const QString path = DefinitionPath();
    QString fault;
    if (m_bDamaged && QFileInfo(path).isFile()) {
        QString aside = path + QStringLiteral(".damaged");
        for (int n = 1; QFileInfo::exists(aside) || QFileInfo(aside).isSymLink(); ++n)
            aside = path + QStringLiteral(".damaged") + QString::number(n);
        if (QFile::copy(path, aside))
            WriteLog(QStringLiteral("batch list kept"),
                QStringLiteral("The unreadable %1 is kept as %2 before it is replaced.").arg(path, aside), SaveSource,
                LogLevel::Error);
        else
            fault = QStringLiteral("the unreadable file could not be kept as ") + aside;
    }
    if (fault.isEmpty()) {
        const QByteArray bytes = SwapInTags(m_cDefinition.ToString(), ':', '~');
        SafeSave file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
            fault = file.errorString();
    }
    if (fault.isEmpty()) {
        m_bDamaged = false;
        return true;
    }
    WriteLog(QStringLiteral("batch list not saved"),
        QStringLiteral("Cannot write %1: %2; the batches stay as they were.").arg(path, fault), SaveSource,
        LogLevel::Error);
    if (!m_cDefinition.LoadString(before))
        m_cDefinition.CreateRoot(RootTag);
    Index();
    return false;
}

BatchStore::BtcState BatchStore::LoadBtc(qsizetype index, XmlDocument& doc) const
{
    const QString path = BtcPath(Element(index));
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink())
        return BtcState::Missing;
    QString fault;
    if (!info.isFile())
        fault = path + QStringLiteral(" is no file");
    else if (!doc.LoadFile(path))
        fault = doc.LastError();
    else if (doc.RootNode().Tag() != BtcRoot)
        fault = path + QStringLiteral(" has the root element <") + doc.RootNode().Tag()
            + QStringLiteral(">, not <Stapelreportdefinition>");
    if (fault.isEmpty())
        return BtcState::Loaded;
    WriteLog(QStringLiteral("batch unreadable"),
        fault + QStringLiteral("; the batch shows no templates, and the file is kept."), TemplateSource,
        LogLevel::Error);
    return BtcState::Damaged;
}

bool BatchStore::SaveBtc(const XmlDocument& doc, const QString& element) const
{
    if (doc.SaveFile(BtcPath(element)))
        return true;
    WriteLog(QStringLiteral("batch not saved"), doc.LastError() + QStringLiteral("; the file is left as it was."),
        SaveSource, LogLevel::Error);
    return false;
}

QSet<QString> BatchStore::FilesOfOtherBatches(const QString& exceptElement) const
{
    QSet<QString> files;
    for (qsizetype i = 0; i < Count(); ++i) {
        if (Element(i) == exceptElement)
            continue;
        XmlDocument doc;
        if (LoadBtc(i, doc) == BtcState::Loaded)
            ForEachReport(doc,
                [&files](const XmlNode& report) { files.insert(FileNameOf(TextOf(report, QStringLiteral("file")))); });
    }
    return files;
}

bool BatchStore::Editable(qsizetype index, const QString& name, qsizetype except) const
{
    if (index < -1 || index >= Count() || !IsValidName(name))
        return false;
    const qsizetype same = IndexOf(name);
    return same < 0 || same == except;
}

qsizetype BatchStore::Insert(const QString& element, const QString& memo)
{
    XmlNode root = m_cDefinition.RootNode();
    m_vBatches.push_back(root.NewChild(InternalTag(element), memo));
    const qsizetype index = Count() - 1;
    root.SetContent(QString::number(index));
    return index;
}

qsizetype BatchStore::Add(const QString& name, const QString& memo)
{
    if (!Editable(-1, name, -1))
        return -1;
    const QString element = ElementName(name);
    const QString btc = BtcPath(element);
    // A .btc left by a batch whose entry was lost is taken over, not replaced.
    const bool made = !QFileInfo::exists(btc) && !QFileInfo(btc).isSymLink();
    if (made) {
        XmlDocument doc;
        doc.CreateRoot(BtcRoot);
        if (!SaveBtc(doc, element))
            return -1;
    }
    const QByteArray before = m_cDefinition.ToString();
    const qsizetype index = Insert(element, memo);
    if (SaveDefinition(before))
        return index;
    if (made)
        QFile::remove(btc);
    return -1;
}

qsizetype BatchStore::Copy(qsizetype index, const QString& name, const QString& memo)
{
    if (index < 0 || !Editable(index, name, -1))
        return -1;
    const QString oldName = Name(index);
    const QString oldElement = Element(index);
    const QString newName = ShownName(ElementName(name));
    const QString element = ElementName(name);
    const QString btc = BtcPath(element);
    if (QFileInfo::exists(btc) || QFileInfo(btc).isSymLink())
        return -1; // a .btc of no listed batch: kept for whoever owns it

    XmlDocument doc;
    switch (LoadBtc(index, doc)) {
    case BtcState::Damaged:
        return -1;
    case BtcState::Missing:
        doc.CreateRoot(BtcRoot);
        break;
    case BtcState::Loaded:
        break;
    }

    QStringList copied;
    QSet<QString> taken;
    const auto undo = [this, &copied] {
        for (const QString& file : copied)
            QFile::remove(TemplatePath(file));
    };
    bool failed = false;
    ForEachReport(doc, [&](XmlNode report) {
        const QString file = FileNameOf(TextOf(report, QStringLiteral("file")));
        if (failed || !PlainFileName(file) || !QFileInfo(TemplatePath(file)).isFile())
            return; // dropped when the copy is first read
        QString target = QString(file).replace(oldName, newName);
        if (target == file)
            target = QString(file).replace(oldElement, element);
        if (target == file || !PlainFileName(target) || taken.contains(target)
            || QFileInfo::exists(TemplatePath(target))) {
            const QFileInfo info(file);
            const QString stem = info.completeBaseName().remove(QRegularExpression(QStringLiteral("_\\d+$")));
            target = FreeFile(m_sFolder, stem, 1, info.suffix(), taken);
        }
        if (!QFile::copy(TemplatePath(file), TemplatePath(target))) {
            failed = true;
            return;
        }
        copied << target;
        taken.insert(target);
        SetChild(report, QStringLiteral("file"), target);
        SetChild(report, QStringLiteral("id"), target);
    });
    if (failed || !SaveBtc(doc, element)) {
        undo();
        return -1;
    }
    const QByteArray before = m_cDefinition.ToString();
    const qsizetype added = Insert(element, memo);
    if (SaveDefinition(before))
        return added;
    undo();
    QFile::remove(btc);
    return -1;
}

bool BatchStore::SetProperties(qsizetype index, const QString& name, const QString& memo)
{
    if (index < 0 || !Editable(index, name, index))
        return false;
    const QString oldElement = Element(index);
    const QString element = ElementName(name);
    const QString oldPath = BtcPath(oldElement);
    const QString newPath = BtcPath(element);
    bool renamed = false;
    if (element != oldElement && QFileInfo::exists(oldPath)) {
        const bool sameFile = QFileInfo(oldPath).canonicalFilePath() == QFileInfo(newPath).canonicalFilePath();
        if ((QFileInfo::exists(newPath) || QFileInfo(newPath).isSymLink()) && !sameFile)
            return false; // a .btc of no listed batch is in the way
        if (!QFile::rename(oldPath, newPath))
            return false;
        renamed = true;
    }
    const QByteArray before = m_cDefinition.ToString();
    XmlNode& node = m_vBatches[static_cast<size_t>(index)];
    node.SetTag(InternalTag(element));
    node.SetContent(memo);
    if (SaveDefinition(before))
        return true;
    if (renamed)
        QFile::rename(newPath, oldPath);
    return false;
}

bool BatchStore::Remove(qsizetype index)
{
    if (index < 0 || index >= Count())
        return false;
    const QString element = Element(index);
    QStringList files;
    XmlDocument doc;
    if (LoadBtc(index, doc) == BtcState::Loaded)
        ForEachReport(
            doc, [&files](const XmlNode& report) { files << FileNameOf(TextOf(report, QStringLiteral("file"))); });

    const QByteArray before = m_cDefinition.ToString();
    qsizetype selected = StoredSelection();
    m_vBatches[static_cast<size_t>(index)].Remove();
    m_vBatches.erase(m_vBatches.begin() + index);
    if (selected > index || selected >= Count())
        --selected;
    m_cDefinition.RootNode().SetContent(QString::number(std::max<qsizetype>(selected, 0)));
    if (!SaveDefinition(before))
        return false;

    const QSet<QString> kept = FilesOfOtherBatches(element);
    for (const QString& file : files)
        if (Deletable(file) && !kept.contains(file))
            QFile::remove(TemplatePath(file));
    QFile::remove(BtcPath(element));
    return true;
}

std::vector<BatchStore::Template> BatchStore::Templates(qsizetype index)
{
    std::vector<Template> list;
    XmlDocument doc;
    if (index < 0 || index >= Count() || LoadBtc(index, doc) != BtcState::Loaded)
        return list;
    bool changed = false;
    std::vector<XmlNode> missing;
    QSet<QString> ids;
    ForEachReport(doc, [&](XmlNode report) {
        Template entry { TextOf(report, QStringLiteral("id")), TextOf(report, QStringLiteral("name")),
            TextOf(report, QStringLiteral("file")) };
        if (const QString file = FileNameOf(entry.file); file != entry.file) {
            entry.file = entry.id = file;
            SetChild(report, QStringLiteral("file"), file);
            SetChild(report, QStringLiteral("id"), file);
            changed = true;
        }
        if (!PlainFileName(entry.file) || !QFileInfo(TemplatePath(entry.file)).isFile()) {
            missing.push_back(report);
            return;
        }
        if (ids.contains(entry.id))
            return; // one key, one template
        ids.insert(entry.id);
        list.push_back(std::move(entry));
    });
    for (XmlNode& node : missing)
        node.Remove();
    if (changed || !missing.empty())
        SaveBtc(doc, Element(index));
    return list;
}

QString BatchStore::TemplatePath(const Template& entry) const
{
    return TemplatePath(entry.file);
}

QString BatchStore::TemplatePath(const QString& file) const
{
    return m_sFolder + u'/' + file;
}

QString BatchStore::NewTemplateFile(qsizetype index, const QString& viewName) const
{
    if (index < 0 || index >= Count())
        return {};
    qsizetype count = 0;
    XmlDocument doc;
    if (LoadBtc(index, doc) == BtcState::Loaded)
        ForEachReport(doc, [&count](const XmlNode&) { ++count; });
    QString stem = viewName.left(MaxTemplateStem);
    for (QChar& c : stem)
        if (c == u'/' || c == u'\\' || c.unicode() < 0x20)
            c = u'_';
    return FreeFile(m_sFolder, stem, count, QStringLiteral("mtb"));
}

bool BatchStore::AddTemplate(qsizetype index, const Template& entry)
{
    if (index < 0 || index >= Count() || entry.id.isEmpty() || !PlainFileName(entry.file))
        return false;
    XmlDocument doc;
    switch (LoadBtc(index, doc)) {
    case BtcState::Damaged:
        return false;
    case BtcState::Missing:
        doc.CreateRoot(BtcRoot);
        break;
    case BtcState::Loaded:
        break;
    }
    bool known = false;
    ForEachReport(
        doc, [&](const XmlNode& report) { known = known || TextOf(report, QStringLiteral("id")) == entry.id; });
    if (known)
        return false;
    XmlNode reports = doc.RootNode().ChildByTag(QStringLiteral("reports"));
    if (!reports)
        reports = doc.RootNode().NewChild(QStringLiteral("reports"));
    XmlNode report = reports.NewChild(QStringLiteral("report"));
    report.NewChild(QStringLiteral("id"), entry.id);
    report.NewChild(QStringLiteral("name"), entry.name);
    report.NewChild(QStringLiteral("file"), entry.file);
    return SaveBtc(doc, Element(index));
}

template<typename Change> bool BatchStore::ChangeTemplate(qsizetype index, const QString& id, Change change)
{
    XmlDocument doc;
    if (index < 0 || index >= Count() || LoadBtc(index, doc) != BtcState::Loaded)
        return false;
    XmlNode found;
    ForEachReport(doc, [&](const XmlNode& report) {
        if (!found && TextOf(report, QStringLiteral("id")) == id)
            found = report;
    });
    if (!found)
        return false;
    change(doc, found);
    return SaveBtc(doc, Element(index));
}

bool BatchStore::RemoveTemplate(qsizetype index, const QString& id)
{
    QString file;
    bool shared = false;
    const bool removed = ChangeTemplate(index, id, [&](XmlDocument& doc, XmlNode& report) {
        file = FileNameOf(TextOf(report, QStringLiteral("file")));
        report.Remove();
        ForEachReport(doc, [&](const XmlNode& other) {
            shared = shared || FileNameOf(TextOf(other, QStringLiteral("file"))) == file;
        });
    });
    if (removed && !shared && Deletable(file) && !FilesOfOtherBatches(Element(index)).contains(file))
        QFile::remove(TemplatePath(file));
    return removed;
}

bool BatchStore::RenameTemplate(qsizetype index, const QString& id, const QString& name)
{
    return ChangeTemplate(
        index, id, [&name](XmlDocument&, XmlNode& report) { SetChild(report, QStringLiteral("name"), name); });
}

bool BatchStore::SetTemplateFile(qsizetype index, const QString& id, const QString& file)
{
    return PlainFileName(file) && ChangeTemplate(index, id, [&file](XmlDocument&, XmlNode& report) {
        SetChild(report, QStringLiteral("file"), file);
    });
}
