// SPDX-License-Identifier: GPL-3.0-or-later
#include "Settings.h"

#include "AppPaths.h"
#include "Numeric.h"
#include "ResStrings.h"

#include <array>

namespace Settings {

namespace {

constexpr Hive LM = Hive::LocalMachine;
constexpr Hive CU = Hive::CurrentUser;

constexpr char KeyIndizesOf[] = "Software\\HARVOLD\\Sorano\\Indizes\\%1";

// Defaults that depend on the running program (folders, texts) are nullptr here and
// filled in by DynamicDefault.
constexpr std::array<Definition, static_cast<size_t>(Id::Count_)> Table{{
    {Id::ApplicationName, KeySorano, "ApplicationName", Read::MachineOnly, LM, nullptr},
    {Id::SplashPicture, KeySorano, "SplashPicture", Read::MachineOnly, LM, nullptr},
    {Id::StartupPicture, KeySorano, "StartupPicture", Read::MachineOnly, LM, nullptr},
    {Id::VendorLogo, KeySorano, "VendorLogo", Read::MachineOnly, LM, nullptr},
    {Id::VendorURL, KeySorano, "VendorURL", Read::MachineOnly, LM, nullptr},
    {Id::ShowBatchWindow, KeySorano, "ShowBatchWindow", Read::MachineOnly, LM, "0"},

    {Id::LangOffset, KeySettings, "LangOffset", Read::MachineOnly, LM, "0"},
    {Id::WhoAmI, KeySettings, "whoami", Read::MachineOnly, LM, nullptr},
    {Id::LogPath, KeySettings, "LogPath", Read::MachineOnly, LM, nullptr},
    {Id::LogDaily, KeySettings, "LogDaily", Read::MachineOnly, LM, nullptr},
    {Id::LogMode, KeySettings, "LogMode", Read::MachineOnly, LM, "3"},
    {Id::LogAppend, KeySettings, "LogAppend", Read::MachineOnly, LM, nullptr},
    {Id::Profiles, KeySettings, "Profiles", Read::MachineOnly, LM, nullptr},
    {Id::CompanyName, KeySettings, "CompanyName", Read::Fallback, CU, nullptr},
    {Id::CompanyAddress, KeySettings, "CompanyAddress", Read::Fallback, CU, nullptr},
    {Id::ShowSplashScreen, KeySettings, "ShowSplashScreen", Read::Fallback, CU, "0"},
    {Id::SplashScreenTime, KeySettings, "SplashScreenTime", Read::Fallback, CU, "0"},
    {Id::ShowStartupWindow, KeySettings, "ShowStartupWindow", Read::Fallback, CU, "0"},
    {Id::ExtendedChannelSelection, KeySettings, "ExtendedChannelSelection", Read::Fallback, CU, "0"},
    {Id::OnCloseMeasuring, KeySettings, "OnCloseMeasuring", Read::UserOnly, CU, "2"},
    {Id::OnNewMeasuring, KeySettings, "OnNewMeasuring", Read::UserOnly, CU, "2"},
    {Id::ZoomArea, KeySettings, "ZoomArea", Read::UserOnly, CU, "0"},
    {Id::CursorCrossHairs, KeySettings, "CursorCrossHairs", Read::UserOnly, CU, "1"},
    {Id::CursorLine, KeySettings, "CursorLine", Read::UserOnly, CU, "1"},
    {Id::CrossHairs, KeySettings, "CrossHairs", Read::UserOnly, CU, "1"},
    {Id::ToolTips, KeySettings, "ToolTips", Read::UserOnly, CU, "1"},
    {Id::ClosePreviewAfterPrint, KeySettings, "ClosePreviewAfterPrint", Read::UserOnly, CU, "1"},
    {Id::NavSmallStep, KeySettings, "NavSmallStep", Read::UserOnly, CU, "1h"},
    {Id::NavMediumStep, KeySettings, "NavMediumStep", Read::UserOnly, CU, "1d"},
    {Id::NavBigStep, KeySettings, "NavBigStep", Read::UserOnly, CU, "1m"},
    {Id::TableFontName, KeySettings, "TableFontName", Read::UserOnly, CU, "Arial"},
    {Id::TableFontSize, KeySettings, "TableFontSize", Read::UserOnly, CU, "10"},

    {Id::WindowState, KeyMainWin, "WindowState", Read::UserOnly, CU, nullptr},
    {Id::WindowLeft, KeyMainWin, "Left", Read::UserOnly, CU, nullptr},
    {Id::WindowTop, KeyMainWin, "Top", Read::UserOnly, CU, nullptr},
    {Id::WindowWidth, KeyMainWin, "Width", Read::UserOnly, CU, nullptr},
    {Id::WindowHeight, KeyMainWin, "Height", Read::UserOnly, CU, nullptr},
    {Id::PreviewZoom, KeyMainWin, "prevzoom", Read::MachineOnly, LM, nullptr},
    {Id::BatchMode, KeyMainWin, "BatchMode", Read::MachineOnly, LM, nullptr},
    {Id::HiderTop, KeyMainWin, "HiderTop", Read::MachineOnly, LM, nullptr},
    {Id::HiderLeft, KeyMainWin, "HiderLeft", Read::MachineOnly, LM, nullptr},

    {Id::RecentCount, KeyRecentList, "Count", Read::UserOnly, CU, nullptr},
    {Id::RecentFile, KeyRecentList, "File_%1", Read::UserOnly, CU, nullptr},

    {Id::IndizesShow, KeyIndizesOf, "Show", Read::UserOnly, CU, "1"},
    {Id::IndizesFormatNumber, KeyIndizesOf, "FormatNumber", Read::UserOnly, CU, nullptr},
    {Id::IndizesFormatDate, KeyIndizesOf, "FormatDate", Read::UserOnly, CU, "(dd.mm.yyyy hh:nn)"},
    {Id::IndizesUseDate, KeyIndizesOf, "UseDate", Read::UserOnly, CU, "1"},

    {Id::ReportLeft, KeyReports, "Left", Read::Fallback, CU, nullptr},
    {Id::ReportRight, KeyReports, "Right", Read::Fallback, CU, nullptr},
    {Id::ReportTop, KeyReports, "Top", Read::Fallback, CU, nullptr},
    {Id::ReportBottom, KeyReports, "Bottom", Read::Fallback, CU, nullptr},
    {Id::ReportHeadHeight, KeyReports, "HeadHeight", Read::Fallback, CU, nullptr},
    {Id::ReportFootHeight, KeyReports, "FootHeight", Read::Fallback, CU, nullptr},
    {Id::ReportDrawLine, KeyReports, "DrawLine", Read::Fallback, CU, nullptr},
    {Id::ReportSelection, KeyReports, "Selection", Read::Fallback, CU,
     "0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;"},

    {Id::NewDataModules, KeyNewMeasuring, "DataModules", Read::UserOnly, CU, nullptr},
    {Id::NewIndizes, KeyNewMeasuring, "Indizes", Read::UserOnly, CU, nullptr},
    {Id::NewShowIndizes, KeyNewMeasuring, "ShowIndizes", Read::UserOnly, CU, "0"},
    {Id::NewCustomer, KeyNewMeasuring, "Customer_%1", Read::UserOnly, CU, nullptr},
    {Id::NewOptResolution, KeyNewMeasuring, "opt_Resolution", Read::UserOnly, CU, nullptr},
    {Id::NewResolutionCount, KeyNewMeasuring, "Resolution_Count", Read::UserOnly, CU, nullptr},
    {Id::NewResolutionUnit, KeyNewMeasuring, "Resolution_Unit", Read::UserOnly, CU, nullptr},
    {Id::NewMinCursor, KeyNewMeasuring, "mincursor", Read::UserOnly, CU, nullptr},
    {Id::NewMaxCursor, KeyNewMeasuring, "maxcursor", Read::UserOnly, CU, nullptr},
    {Id::NewAxisBorders, KeyNewMeasuring, "axisborders", Read::UserOnly, CU, nullptr},
    {Id::NewAxisBorder, KeyNewMeasuring, "axisborder_%1", Read::UserOnly, CU, nullptr},
    {Id::NewUseSingleAxis, KeyNewMeasuring, "usesingleaxis", Read::UserOnly, CU, nullptr},
    {Id::NewUseLgaDays, KeyNewMeasuring, "uselgadays", Read::UserOnly, CU, nullptr},
    {Id::NewLgaNumValues, KeyNewMeasuring, "lganumvalues", Read::UserOnly, CU, nullptr},
    {Id::NewLgaGallery, KeyNewMeasuring, "lga_gallery", Read::UserOnly, CU, nullptr},
    {Id::NewChkFixedLine, KeyNewMeasuring, "chkfixedline", Read::UserOnly, CU, nullptr},
    {Id::NewFixedLine, KeyNewMeasuring, "fixedline", Read::UserOnly, CU, nullptr},

    {Id::LastUsername, KeyIdentities, "Last Username", Read::UserOnly, CU, "DEFAULT"},

    {Id::LastFolder, KeySettings, "LastFolder", Read::UserOnly, CU, nullptr},
    {Id::ExportFilter, KeySettings, "ExportFilter", Read::UserOnly, CU, nullptr},
}};

constexpr bool TableIsInIdOrder()
{
    for (size_t i = 0; i < Table.size(); ++i)
        if (static_cast<size_t>(Table[i].id) != i)
            return false;
    return true;
}
static_assert(TableIsInIdOrder(), "the settings table must list every Id in declaration order");

QString Fill(const char* pattern, const QString& arg)
{
    QString text = QString::fromLatin1(pattern);
    return text.contains(QLatin1String("%1")) ? text.arg(arg) : text;
}

QString ReadFrom(Hive hive, const Definition& def, const QString& arg)
{
    RegistryKey key;
    return key.ReadValue(hive, Fill(def.key, arg), Fill(def.name, arg));
}

QString Stored(const Definition& def, const QString& arg)
{
    switch (def.read) {
    case Read::MachineOnly:
        return ReadFrom(Hive::LocalMachine, def, arg);
    case Read::UserOnly:
        return ReadFrom(Hive::CurrentUser, def, arg);
    case Read::Fallback: {
        const QString user = ReadFrom(Hive::CurrentUser, def, arg);
        return user.isEmpty() ? ReadFrom(Hive::LocalMachine, def, arg) : user;
    }
    }
    return QString();
}

QString DynamicDefault(Id id, const QString& arg)
{
    switch (id) {
    case Id::ApplicationName:
        return GetResString(200);
    case Id::LogPath:
        return AppPaths::DataFolder();
    case Id::Profiles:
        return AppPaths::DataFolder() + QLatin1String("/Profiles.dat");
    case Id::IndizesFormatNumber:
        if (arg == QLatin1String("Streuung"))
            return QStringLiteral("0.00 X²");
        if (arg == QLatin1String("Count"))
            return QStringLiteral("0 \"") + GetResString(356) + QLatin1Char('"');
        return QStringLiteral("0.00 X");
    default:
        return QString();
    }
}

// Values that are written back when the default had to be taken, so that the file shows
// what the program uses. The profile file is not among them: its default lies in the user's
// own folder, and the machine-wide file must not hand one user's path to every other.
bool WritesBackDefault(Id id, const QString& stored)
{
    switch (id) {
    case Id::TableFontName:
        return stored.isEmpty();
    case Id::TableFontSize:
        return stored.isEmpty() || LeadingNumber(stored) == 0.0;
    default:
        return false;
    }
}

} // namespace

const Definition& DefinitionOf(Id id)
{
    return Table[static_cast<size_t>(id)];
}

QString Value(Id id, const QString& arg)
{
    const Definition& def = DefinitionOf(id);
    const QString stored = Stored(def, arg);
    if (!stored.isEmpty() && !WritesBackDefault(id, stored))
        return stored;
    const QString fallback = def.defaultValue ? QString::fromUtf8(def.defaultValue) : DynamicDefault(id, arg);
    if (WritesBackDefault(id, stored))
        Write(id, fallback, arg);
    return fallback;
}

QString StoredValue(Id id, const QString& arg)
{
    return Stored(DefinitionOf(id), arg);
}

bool IsTrue(Id id, const QString& arg)
{
    return LeadingNumber(Value(id, arg)) != 0.0;
}

double Number(Id id, const QString& arg)
{
    return LeadingNumber(Value(id, arg));
}

std::optional<double> StrictNumber(Id id, const QString& arg)
{
    const QString text = Value(id, arg);
    if (!IsNumeric(text))
        return std::nullopt;
    return LeadingNumber(text);
}

void Write(Id id, const QString& data, const QString& arg)
{
    const Definition& def = DefinitionOf(id);
    RegistryKey key;
    key.WriteValue(def.writeHive, Fill(def.key, arg), Fill(def.name, arg), data);
}

} // namespace Settings
