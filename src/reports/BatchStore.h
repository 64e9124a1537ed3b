// SPDX-License-Identifier: GPL-3.0-or-later
// The files of the report batches: the list Batches.def, one <name>.btc per batch with its
// templates, and the template views (.mtb) beside them in the batch folder.
#pragma once

#include "XmlTree.h"

#include <QSet>
#include <QString>
#include <QtGlobal>

#include <vector>

// Batches.def holds one element per batch below the root "Selected": its name is the batch's
// name with every blank written as '~', its text the memo; the root's text is the index of the
// selected batch. <element name>.btc lists the templates of one batch.
//
// Every change is saved at once and atomically; a change that cannot be saved leaves the store
// and its files as they were and reports failure. Damaged or foreign files are never
// overwritten: Batches.def is copied aside before the first save that replaces it, and a damaged
// .btc refuses changes to its batch. A template file still named by another batch is not deleted.
class BatchStore
{
public:
    struct Template
    {
        QString id; // the key within its batch: at first the file name
        QString name; // shown name
        QString file; // file name in the batch folder
    };

    // The batch folder; it is made when missing, a failure being ignored.
    explicit BatchStore(const QString& folder);
    // The batch folder below the application data folder.
    static QString DefaultFolder();
    QString Folder() const { return m_sFolder; }
    QString DefinitionPath() const;

    // Reads Batches.def. A missing file gives no batches; a damaged or foreign one gives no
    // batches and one log line, and stays as it is. Elements that are no batch name, and a second
    // element of a name already read, are left in the file but not listed.
    void Load();

    qsizetype Count() const { return static_cast<qsizetype>(m_vBatches.size()); }
    QString Name(qsizetype index) const; // '~' shown as blanks
    QString Element(qsizetype index) const; // as stored, with '~'
    QString Memo(qsizetype index) const;
    // The batch the name means: blanks and '~' are one, and so are upper and lower case, since
    // such names share their .btc on many file systems; -1 when there is none.
    qsizetype IndexOf(const QString& name) const;

    // The stored selection when it is an index of a batch, else 0; -1 without batches.
    qsizetype StoredSelection() const;
    // Remembers the selection in Batches.def; false for no batch or when it cannot be saved.
    bool SetSelected(qsizetype index);

    // Blanks written as '~'.
    static QString ElementName(const QString& shownName);
    // '~' shown as blanks.
    static QString ShownName(const QString& elementName);
    // Whether the name can be a batch: as an element it must start with a letter or '_' and
    // hold letters, digits, '_', '-', '.' and '~' (blanks) only, so that both the element and
    // the file name read back.
    static bool IsValidName(const QString& name);
    // The proposal for the name of a copy.
    static QString CopyName(const QString& name);

    // A new batch, selected, with an empty .btc; its index, or -1 for a name that is not valid or
    // names a batch already, or when a file cannot be saved. A .btc of that name that no listed
    // batch owns (its entry was lost) is taken over as it is.
    qsizetype Add(const QString& name, const QString& memo);
    // A new batch, selected, holding copies of the templates of that one: the old batch name in
    // a template's file name is replaced by the new one, and a template whose file name does not
    // hold it gets a free name of its own. -1 as for Add, for no such batch, a damaged .btc, a
    // template that cannot be copied, or a .btc of the new name that no listed batch owns.
    qsizetype Copy(qsizetype index, const QString& name, const QString& memo);
    // New name and memo; the .btc is renamed with the name. False as for Copy.
    bool SetProperties(qsizetype index, const QString& name, const QString& memo);
    // Deletes the batch's templates, its .btc and its entry; the selection moves to the
    // neighbour. False when Batches.def cannot be saved: then nothing is deleted.
    bool Remove(qsizetype index);

    // The templates of a batch whose files exist, in list order. Full paths of old batches are
    // cut to the file name, entries whose file is missing are dropped, and the .btc is then
    // saved. A damaged or foreign .btc gives none and is logged.
    std::vector<Template> Templates(qsizetype index);
    QString TemplatePath(const Template& entry) const;
    QString TemplatePath(const QString& file) const;
    // A free template file name "<viewName>_<n>.mtb", n counting up from the batch's number of
    // templates; separators in the view name become '_'. Empty for no such batch.
    QString NewTemplateFile(qsizetype index, const QString& viewName) const;
    // Appends a template whose file the caller has written; false for an id the batch has, a
    // file that is no plain file name, a damaged .btc or a failed save.
    bool AddTemplate(qsizetype index, const Template& entry);
    // Removes the template and deletes its file unless another template names it.
    bool RemoveTemplate(qsizetype index, const QString& id);
    bool RenameTemplate(qsizetype index, const QString& id, const QString& name);
    bool SetTemplateFile(qsizetype index, const QString& id, const QString& file);

private:
    enum class BtcState { Loaded, Missing, Damaged };

    QString BtcPath(const QString& element) const;
    void Index();
    bool SaveDefinition(const QByteArray& before);
    BtcState LoadBtc(qsizetype index, XmlDocument& doc) const;
    bool SaveBtc(const XmlDocument& doc, const QString& element) const;
    QSet<QString> FilesOfOtherBatches(const QString& exceptElement) const;
    bool Editable(qsizetype index, const QString& name, qsizetype except) const;
    qsizetype Insert(const QString& element, const QString& memo);
    template<typename Change> bool ChangeTemplate(qsizetype index, const QString& id, Change change);

    QString m_sFolder;
    XmlDocument m_cDefinition; // element names with ':' for '~', which the XML tree cannot read
    std::vector<XmlNode> m_vBatches;
    bool m_bDamaged = false; // Batches.def could not be read: keep it before replacing it
};
