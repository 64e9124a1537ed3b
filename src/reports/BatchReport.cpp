// SPDX-License-Identifier: GPL-3.0-or-later
// The report batches' commands, their tools and the batch window. The runs of a batch and of
// the serial report are in BatchReportRun.cpp.
#include "BatchReport.h"

#include "BatchHost.h"
#include "Measuring.h"
#include "ResStrings.h"
#include "Settings.h"
#include "SoranoFileHandler.h"
#include "ToolRegistry.h"
#include "frm_Batch.h"
#include "frm_BatchProps.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QListWidget>
#include <QMainWindow>
#include <QMessageBox>
#include <QSignalBlocker>

#include <algorithm>
#include <array>

namespace {

const QString MenuBand = QStringLiteral("mnuBatch");
const QString ToolBand = QStringLiteral("tlbBatch");

struct ToolDef
{
    const char* name;
    const char* german; // nullptr: a separator
    const char* english;
    const char* icon;
};

// The menu and its toolbar, in their order.
constexpr std::array<ToolDef, 14> Tools { {
    { "mnuShowBatch", "Reportstapel anzeigen", "Show report batches", "ICO_SHOWBATCH" },
    { "DB01", nullptr, nullptr, "" },
    { "mnuPrintLGA", "Serienreport ...", "Serial report ...", "ICO_MEASURING" },
    { "DB04", nullptr, nullptr, "" },
    { "mnuNewBatch", "Neuen Reportstapel erzeugen", "Create a new report batch", "ICO_NEWBATCH" },
    { "mnuCopyBatch", "Reportstapel kopieren", "Copy report batch", "ICO_COPY" },
    { "mnuBatchProps", "Reportstapel Eigenschaften", "Report batch properties", "ICO_BATCHPROPS" },
    { "mnuDeleteBatch", "Reportstapel löschen", "Delete report batch", "ICO_DELETE" },
    { "DB02", nullptr, nullptr, "" },
    { "mnuPrintBatch", "Reportstapel drucken", "Print report batch", "ICO_PRINTBATCH" },
    { "DB03", nullptr, nullptr, "" },
    { "mnuNewDoc", "Messung einfügen", "Insert measuring", "ICO_NEWDOC" },
    { "mnuDeleteDoc", "Messung entfernen", "Remove measuring", "ICO_DELETEDOC" },
    { "mnuOpenDoc", "Vorlage öffnen", "Open template", "ICO_OPEN" },
} };

QString Caption(std::size_t index)
{
    return LocalText(Tools[index].german, Tools[index].english);
}

QString BandCaption()
{
    return LocalText("Reportstapel", "Report batches");
}

// mnuShowBatch's caption while the window is shown.
QString HideCaption()
{
    return LocalText("Reportstapel ausblenden", "Hide report batches");
}

BatchReport::QuestionHandler& QuestionHook()
{
    static BatchReport::QuestionHandler hook;
    return hook;
}

BatchReport::MessageHandler& MessageHook()
{
    static BatchReport::MessageHandler hook;
    return hook;
}

// The same file, whether or not it exists yet.
bool SamePath(const QString& a, const QString& b)
{
    const QFileInfo first(a);
    const QFileInfo second(b);
    if (first.exists() && second.exists())
        return first.canonicalFilePath() == second.canonicalFilePath();
    return QDir::cleanPath(first.absoluteFilePath()) == QDir::cleanPath(second.absoluteFilePath());
}

} // namespace

BatchReport::BatchReport(BatchHost& host, const QString& folder)
    : m_cHost(host)
    , m_cStore(folder)
{ }

BatchReport::~BatchReport()
{
    // The main window owns the dock; it must not call back into a batch object that is gone.
    if (m_cWindow)
        m_cWindow->disconnect(this);
}

void BatchReport::SetQuestionHandler(QuestionHandler handler)
{
    QuestionHook() = std::move(handler);
}

void BatchReport::SetMessageHandler(MessageHandler handler)
{
    MessageHook() = std::move(handler);
}

bool BatchReport::Ask(const QString& title, const QString& text) const
{
    if (QuestionHook())
        return QuestionHook()(title, text);
    return QMessageBox::question(m_cHost.MainWindow(), title, text, QMessageBox::Yes | QMessageBox::No)
        == QMessageBox::Yes;
}

void BatchReport::Tell(const QString& title, const QString& text) const
{
    if (MessageHook()) {
        MessageHook()(title, text);
        return;
    }
    QWidget* parent = QApplication::activeModalWidget();
    QMessageBox::warning(parent ? parent : m_cHost.MainWindow(), title, text);
}

void BatchReport::Init()
{
    // The tools are made again whenever the bar was rebuilt; the window and the list once.
    AddTools();
    if (!m_bInitDone) {
        m_bInitDone = true;
        MakeWindow();
        Reload();
        if (Settings::Number(Settings::Id::ShowBatchWindow) == 1)
            ShowWindow(true);
    }
    UpdateTools();
}

void BatchReport::AddTools()
{
    ToolRegistry& bar = m_cHost.Bar();
    bar.AddBand(
        MenuBand, ToolRegistry::Popup, LocalText("&Reportstapel", "&Report batches"), QStringLiteral("mnuMain"));
    bar.AddBand(ToolBand, ToolRegistry::Toolbar, BandCaption());
    const QString category = BandCaption();
    for (std::size_t i = 0; i < Tools.size(); ++i) {
        const ToolDef& tool = Tools[i];
        const QString name = QLatin1String(tool.name);
        if (!bar.ToolsOf(MenuBand).contains(name))
            bar.AddTool(MenuBand, name, tool.german ? ToolRegistry::ButtonTool : ToolRegistry::SeparatorTool,
                tool.german ? Caption(i) : QString(), category, QString(), QLatin1String(tool.icon), ToolBand);
    }
}

void BatchReport::MakeWindow()
{
    QMainWindow* main = m_cHost.MainWindow();
    m_cWindow = new frm_Batch(main);
    connect(m_cWindow, &QObject::destroyed, this, [this] { m_cWindow = nullptr; });
    if (main)
        main->addDockWidget(Qt::RightDockWidgetArea, m_cWindow);
    m_cWindow->hide();

    connect(m_cWindow, &frm_Batch::BatchChosen, this, [this](int index) { OnBatchChosen(index); });
    connect(m_cWindow, &frm_Batch::ReportRenamed, this, &BatchReport::ReportNameChanged);
    connect(m_cWindow, &frm_Batch::ReportOpened, this, [this](const QString&) { OpenDocument(); });
    connect(m_cWindow, &frm_Batch::ReportSelectionChanged, this, &BatchReport::UpdateTools);
    connect(m_cWindow, &QDockWidget::visibilityChanged, this, &BatchReport::UpdateTools);
    connect(m_cWindow, &frm_Batch::MenuRequested, this, [this] {
        UpdateTools();
        m_cHost.Bar().CallMenu(MenuBand);
    });
}

void BatchReport::Reload()
{
    m_cStore.Load();
    const qsizetype selected = m_cStore.StoredSelection();
    FillBatchList(selected);
    BatchSelected(selected);
}

void BatchReport::FillBatchList(qsizetype selected)
{
    if (!m_cWindow)
        return;
    QComboBox* combo = m_cWindow->cbo_Batches();
    const QSignalBlocker quiet(combo);
    combo->clear();
    for (qsizetype i = 0; i < m_cStore.Count(); ++i)
        combo->addItem(m_cStore.Name(i));
    combo->setCurrentIndex(static_cast<int>(selected));
}

void BatchReport::OnBatchChosen(qsizetype index)
{
    if (index >= 0 && index != m_cStore.StoredSelection())
        m_cStore.SetSelected(index);
    BatchSelected(index);
}

qsizetype BatchReport::Selected() const
{
    return m_iSelected >= 0 && m_iSelected < m_cStore.Count() ? m_iSelected : -1;
}

void BatchReport::BatchSelected(qsizetype index)
{
    m_iSelected = index >= 0 && index < m_cStore.Count() ? index : -1;
    if (m_cWindow && m_cWindow->cbo_Batches()->currentIndex() != m_iSelected) {
        const QSignalBlocker quiet(m_cWindow->cbo_Batches());
        m_cWindow->cbo_Batches()->setCurrentIndex(static_cast<int>(m_iSelected));
    }
    FillReportList();
    UpdateTools();
}

void BatchReport::FillReportList()
{
    if (!m_cWindow)
        return;
    m_cWindow->ClearReports();
    const qsizetype selected = Selected();
    if (selected < 0)
        return;
    QListWidgetItem* first = nullptr;
    for (const BatchStore::Template& entry : m_cStore.Templates(selected)) {
        QListWidgetItem* item = m_cWindow->AddReport(entry.id, entry.name);
        if (!first)
            first = item;
    }
    if (first)
        m_cWindow->lvw_Reports()->setCurrentItem(first);
}

bool BatchReport::WindowVisible() const
{
    return m_cWindow && !m_cWindow->isHidden();
}

void BatchReport::ShowWindow(bool show)
{
    if (!m_cWindow)
        return;
    m_cWindow->setVisible(show);
    if (show)
        m_cWindow->raise();
    UpdateTools();
}

void BatchReport::UpdateTools()
{
    ToolRegistry& bar = m_cHost.Bar();
    const auto set = [&bar](const char* name, bool enabled) {
        if (QAction* action = bar.Tool(QLatin1String(name)))
            action->setEnabled(enabled);
    };
    const bool visible = WindowVisible();
    if (QAction* show = bar.Tool(QStringLiteral("mnuShowBatch"))) {
        show->setText(visible ? HideCaption() : Caption(0));
        show->setToolTip(show->text());
    }

    const qsizetype selected = Selected();
    const QListWidget* list = m_cWindow ? m_cWindow->lvw_Reports() : nullptr;
    const bool hasItems = list && list->count() > 0;
    const bool itemSelected = hasItems && !m_cWindow->SelectedKey().isEmpty();
    set("mnuShowBatch", true);
    set("mnuPrintLGA", true);
    set("mnuNewBatch", visible);
    for (const char* name : { "mnuBatchProps", "mnuDeleteBatch", "mnuCopyBatch" })
        set(name, selected >= 0);
    set("mnuNewDoc", selected >= 0 && m_cHost.ActiveMeasuring());
    set("mnuPrintBatch", selected >= 0 && hasItems);
    set("mnuDeleteDoc", selected >= 0 && itemSelected);
    set("mnuOpenDoc", selected >= 0 && itemSelected);
}

bool BatchReport::ToolClick(const QString& tool)
{
    const auto is = [&tool](const char* name) { return tool == QLatin1String(name); };
    if (is("mnuShowBatch"))
        ShowWindow(!WindowVisible());
    else if (is("mnuPrintLGA"))
        PrintSerial();
    else if (is("mnuNewBatch"))
        EditBatch(true, false);
    else if (is("mnuCopyBatch"))
        EditBatch(false, true);
    else if (is("mnuBatchProps"))
        EditBatch(false, false);
    else if (is("mnuDeleteBatch"))
        DeleteBatch();
    else if (is("mnuPrintBatch"))
        PrintBatch();
    else if (is("mnuNewDoc"))
        NewDocument();
    else if (is("mnuDeleteDoc"))
        DeleteDocument();
    else if (is("mnuOpenDoc"))
        OpenDocument();
    else
        return false;
    return true;
}

QString BatchReport::NameFault(const QString& name, qsizetype except) const
{
    if (!BatchStore::IsValidName(name))
        return LocalText("Der Name \"%1\" kann nicht verwendet werden.\nEin Reportstapel muss mit einem Buchstaben "
                         "beginnen und darf nur Buchstaben, Ziffern, Leerzeichen und die Zeichen _ - . ~ enthalten.",
            "The name \"%1\" cannot be used.\nA report batch must start with a letter and may hold only "
            "letters, digits, blanks and the characters _ - . ~.")
            .arg(name);
    const qsizetype same = m_cStore.IndexOf(name);
    if (same >= 0 && same != except)
        return LocalText("Es gibt bereits einen Reportstapel \"%1\".\nBitte wählen Sie einen anderen Namen.",
            "There is a report batch \"%1\" already.\nPlease choose another name.")
            .arg(m_cStore.Name(same));
    return {};
}

void BatchReport::EditBatch(bool isNew, bool copy)
{
    const qsizetype selected = Selected();
    if (!isNew && selected < 0)
        return;
    QString name;
    QString memo;
    if (!isNew) {
        name = copy ? BatchStore::CopyName(m_cStore.Name(selected)) : m_cStore.Name(selected);
        memo = m_cStore.Memo(selected);
    }
    // Properties may keep the batch's own name; a new batch or a copy must name a new one.
    const qsizetype except = isNew || copy ? -1 : selected;
    frm_BatchProps dialog(m_cHost.MainWindow());
    dialog.SetValidator([this, except](const QString& entered) { return NameFault(entered, except); });
    dialog.SetMessageHandler([this](const QString& title, const QString& text) { Tell(title, text); });
    if (!dialog.ShowMe(name, memo))
        return;

    qsizetype shown = selected;
    bool saved = false;
    if (isNew || copy) {
        const qsizetype added = isNew ? m_cStore.Add(name, memo) : m_cStore.Copy(selected, name, memo);
        saved = added >= 0;
        if (saved)
            shown = added;
    } else {
        saved = m_cStore.SetProperties(selected, name, memo);
    }
    if (!saved)
        Tell(BandCaption(),
            LocalText("Der Reportstapel \"%1\" konnte nicht gespeichert werden.",
                "The report batch \"%1\" could not be saved.")
                .arg(name));
    FillBatchList(shown);
    BatchSelected(shown);
}

void BatchReport::DeleteBatch()
{
    const qsizetype selected = Selected();
    if (selected < 0)
        return;
    if (!Ask(LocalText("Löschen bestätigen", "Confirm deletion"),
            LocalText(
                "Wollen Sie den Reportstapel tatsächlich löschen?", "Do you really want to delete the report batch?")
                + QLatin1Char('\n')
                + LocalText("Dieser Vorgang kann nicht mehr rückgängig gemacht werden!", "This cannot be undone!")))
        return;
    if (!m_cStore.Remove(selected))
        return;
    // The batch that followed it, or the one before the last.
    const qsizetype neighbour = std::min(selected, m_cStore.Count() - 1);
    if (neighbour >= 0 && neighbour != m_cStore.StoredSelection())
        m_cStore.SetSelected(neighbour);
    FillBatchList(neighbour);
    BatchSelected(neighbour);
}

void BatchReport::NewDocument()
{
    const qsizetype selected = Selected();
    Measuring* view = m_cHost.ActiveMeasuring();
    if (selected < 0 || !view)
        return;
    const QString file = m_cStore.NewTemplateFile(selected, view->Name());
    if (file.isEmpty())
        return;
    // Written beside the view, whose own file name and changed state stay as they are.
    const QString path = m_cStore.TemplatePath(file);
    if (SoranoFileHandler::Save(path, view->ToFile()) != SoranoFileHandler::SaveResult::Ok)
        return;
    if (!m_cStore.AddTemplate(selected, { file, view->Name(), file })) {
        QFile::remove(path);
        return;
    }
    if (m_cWindow)
        m_cWindow->lvw_Reports()->setCurrentItem(m_cWindow->AddReport(file, view->Name()));
    UpdateTools();
}

void BatchReport::DeleteDocument()
{
    const qsizetype selected = Selected();
    const QString key = m_cWindow ? m_cWindow->SelectedKey() : QString();
    if (selected < 0 || key.isEmpty())
        return;
    if (!Ask(LocalText("Vorlage löschen", "Delete template"),
            LocalText("Wollen Sie die ausgewählte Vorlage wirklich löschen?",
                "Do you really want to delete the selected template?")))
        return;
    if (!m_cStore.RemoveTemplate(selected, key))
        return;
    QListWidget* list = m_cWindow->lvw_Reports();
    for (int row = 0; row < list->count(); ++row)
        if (list->item(row)->data(Qt::UserRole).toString() == key)
            delete list->takeItem(row--);
    UpdateTools();
}

void BatchReport::OpenDocument()
{
    const qsizetype selected = Selected();
    const QString key = m_cWindow ? m_cWindow->SelectedKey() : QString();
    if (selected < 0 || key.isEmpty())
        return;
    for (const BatchStore::Template& entry : m_cStore.Templates(selected)) {
        if (entry.id != key)
            continue;
        const QString path = m_cStore.TemplatePath(entry);
        if (QFileInfo(path).isFile())
            m_cHost.OpenMeasuring(path);
        return;
    }
}

void BatchReport::ReportNameChanged(const QString& key, const QString& newName)
{
    const qsizetype selected = Selected();
    if (selected < 0 || !m_cStore.RenameTemplate(selected, key, newName))
        return;
    if (m_cWindow)
        m_cWindow->SetReportName(key, newName);
}

void BatchReport::FileChanged(const QString& oldPath, const QString& newPath)
{
    const qsizetype selected = Selected();
    if (selected < 0 || oldPath.isEmpty() || newPath.isEmpty() || SamePath(oldPath, newPath))
        return;
    const QFileInfo target(newPath);
    if (!SamePath(target.absolutePath(), m_cStore.Folder()))
        return;
    for (const BatchStore::Template& entry : m_cStore.Templates(selected))
        if (SamePath(m_cStore.TemplatePath(entry), oldPath))
            m_cStore.SetTemplateFile(selected, entry.id, target.fileName());
}

void BatchReport::Terminate()
{
    Settings::Write(Settings::Id::ShowBatchWindow, WindowVisible() ? QStringLiteral("1") : QStringLiteral("0"));
    if (m_cWindow)
        m_cWindow->close();
}
