// SPDX-License-Identifier: GPL-3.0-or-later
// The runs of a batch and of the serial report from the menu: the wizard, the status window,
// the views prepared for the chosen logger and period, one print over all of them.
#include "BatchReport.h"

#include "BatchHost.h"
#include "BatchRun.h"
#include "Calendar.h"
#include "DateEdit.h"
#include "Measuring.h"
#include "ModuleBoxes.h"
#include "Numeric.h"
#include "ResStrings.h"
#include "frm_BatchStatus.h"
#include "frm_NewMeasuring.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMainWindow>
#include <QRadioButton>
#include <QShortcut>

namespace {

double NumberOf(const QLineEdit* box)
{
    return IsNumeric(box->text()) ? LeadingNumber(box->text()) : 0.0;
}

// What the wizard's pages decided, as the runs take it.
BatchRunSettings ReadWizard(frm_NewMeasuring& wizard)
{
    BatchRunSettings settings;
    settings.name = wizard.MeasuringName();
    settings.channels = wizard.Channels();
    settings.start = wizard.dat_Start()->Value();
    settings.end = wizard.dat_End()->Value();
    if (!wizard.opt_Resolution(0)->isChecked()) {
        settings.intervalCount = std::max(1, int(NumberOf(wizard.txt_Count())));
        settings.intervalUnit = Calendar::UnitCode(Calendar::Unit(std::clamp(wizard.cbo_Unit()->currentIndex(), 0, 6)));
    }
    for (int i = 0; i < 5; ++i)
        settings.customer[size_t(i)] = wizard.txt_Customer(i)->text();
    settings.minCursor = wizard.chk_MinCursor()->isChecked();
    settings.maxCursor = wizard.chk_MaxCursor()->isChecked();
    return settings;
}

SerialSettings ReadSerialPage(frm_NewMeasuring& wizard)
{
    SerialSettings serial;
    serial.perDay = !wizard.opt_LGADays(1)->isChecked();
    serial.valuesPerPage = int(NumberOf(wizard.txt_LGANumValues()));
    serial.manualAxes = wizard.opt_LGA_Axis(1)->isChecked();
    // Each axis has two boxes, the wizard's maximum above its minimum: the smaller is the
    // minimum, whichever box holds it.
    for (size_t axis = 0; axis < 2; ++axis) {
        const double first = NumberOf(wizard.txt_Border(int(2 * axis)));
        const double second = NumberOf(wizard.txt_Border(int(2 * axis + 1)));
        serial.borders[2 * axis] = std::min(first, second);
        serial.borders[2 * axis + 1] = std::max(first, second);
    }
    serial.twoAxes = wizard.opt_SingleAxis(1)->isChecked();
    serial.showFixedLine = wizard.ShowFixedLine();
    serial.fixedLineValue = wizard.FixedLineValue();
    serial.gallery = wizard.cboGallery()->currentData().toInt();
    return serial;
}

} // namespace

// The wizard of a run, with the application's modules and nothing chosen; nothing when the
// user cancels.
static std::unique_ptr<frm_NewMeasuring> AskRun(BatchHost& host, qint16 mode, const QString& name)
{
    auto wizard = std::make_unique<frm_NewMeasuring>(host.ViewHost(), host.MainWindow());
    auto* help = new QShortcut(QKeySequence::HelpContents, wizard.get());
    QObject::connect(help, &QShortcut::activated, wizard.get(), [&host] { host.ShowHelp(1042); });
    wizard->SetMode(mode);
    wizard->SetDataModules(host.Modules());
    wizard->SetMeasuringName(name);
    if (wizard->ShowMe())
        return nullptr;
    return wizard;
}

// The status window over the main window, with "<name> wird erzeugt, bitte haben Sie etwas Geduld...".
static std::unique_ptr<frm_BatchStatus> ShowStatus(BatchHost& host, const QString& name)
{
    auto status = std::make_unique<frm_BatchStatus>(host.MainWindow());
    status->StatusMessage(
        name + LocalText(" wird erzeugt, bitte haben Sie etwas Geduld...", " is being made, please wait..."));
    status->show();
    status->UpdateStatus();
    return status;
}

void BatchReport::PrintBatch()
{
    const qsizetype index = Selected();
    if (index < 0)
        return;
    const std::unique_ptr<frm_NewMeasuring> wizard = AskRun(m_cHost, 1, LocalText("Stapelreport", "Batch report"));
    if (!wizard)
        return;
    const BatchRunSettings settings = ReadWizard(*wizard);
    if (settings.channels.isEmpty())
        return;
    std::vector<BatchTemplate> templates;
    for (const BatchStore::Template& entry : m_cStore.Templates(index))
        templates.push_back({ m_cStore.TemplatePath(entry), entry.name });
    std::vector<Measuring*> views;
    {
        const std::unique_ptr<frm_BatchStatus> status = ShowStatus(m_cHost, settings.name);
        views = BatchRun::PrepareBatch(m_cHost, templates, settings, status.get());
    }
    if (!views.empty())
        m_cHost.PrintMeasurings(views);
    BatchRun::Close(m_cHost, views);
    m_cHost.UpdateToolStates();
}

void BatchReport::PrintSerial()
{
    const std::unique_ptr<frm_NewMeasuring> wizard = AskRun(m_cHost, 2, LocalText("Serienreport", "Serial report"));
    if (!wizard)
        return;
    const BatchRunSettings settings = ReadWizard(*wizard);
    const SerialSettings serial = ReadSerialPage(*wizard);
    if (settings.channels.isEmpty())
        return;
    const QString path = BatchRun::SerialTemplate(m_cStore.Folder(), std::min<qsizetype>(settings.channels.size(), 3));
    if (path.isEmpty()) {
        Tell(LocalText("Serienreport", "Serial report"),
            LocalText(
                "Die Vorlage LGA_%1.mtb wurde weder im Reportstapel-Ordner noch bei der Programminstallation gefunden.",
                "The template LGA_%1.mtb is neither in the batch folder nor where the program is installed.")
                .arg(std::min<qsizetype>(settings.channels.size(), 3)));
        return;
    }
    std::vector<Measuring*> views;
    {
        const std::unique_ptr<frm_BatchStatus> status = ShowStatus(m_cHost, settings.name);
        views = BatchRun::PrepareSerial(m_cHost, path, settings, serial, status.get());
    }
    if (!views.empty())
        m_cHost.PrintMeasurings(views);
    BatchRun::Close(m_cHost, views);
    m_cHost.UpdateToolStates();
}
