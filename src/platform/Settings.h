// SPDX-License-Identifier: GPL-3.0-or-later
// Every value of the settings tree with its root, read pattern and default, in one table.
#pragma once

#include "RegistryKey.h"

#include <QString>

#include <optional>

namespace Settings {

// Key paths of the settings tree.
inline constexpr char KeySorano[] = "Software\\HARVOLD\\Sorano";
inline constexpr char KeySettings[] = "Software\\HARVOLD\\Sorano\\Settings";
inline constexpr char KeyMainWin[] = "Software\\HARVOLD\\Sorano\\MainWin";
inline constexpr char KeyRecentList[] = "Software\\HARVOLD\\Sorano\\RecentList";
inline constexpr char KeyNewMeasuring[] = "Software\\HARVOLD\\Sorano\\NewMeasuring";
inline constexpr char KeyIndizes[] = "Software\\HARVOLD\\Sorano\\Indizes";
inline constexpr char KeyReports[] = "Software\\HARVOLD\\Sorano\\Reports";
inline constexpr char KeyAddIns[] = "Software\\HARVOLD\\Sorano\\AddIns";
inline constexpr char KeyDataModules[] = "Software\\HARVOLD\\DataModules";
inline constexpr char KeyQuandelKeys[] = "Software\\HARVOLD\\QUANDEL\\Keys";
inline constexpr char KeyIdentities[] = "Identities\\";

enum class Read {
    Fallback,    ///< per-user value, else machine-wide value, else the default
    MachineOnly, ///< the machine-wide value alone
    UserOnly     ///< the per-user value alone
};

enum class Id {
    // installation branding
    ApplicationName, SplashPicture, StartupPicture, VendorLogo, VendorURL, ShowBatchWindow,
    // main settings
    LangOffset, WhoAmI, LogPath, LogDaily, LogMode, LogAppend, Profiles,
    CompanyName, CompanyAddress, ShowSplashScreen, SplashScreenTime, ShowStartupWindow,
    ExtendedChannelSelection, OnCloseMeasuring, OnNewMeasuring, ZoomArea, CursorCrossHairs,
    CursorLine, CrossHairs, ToolTips, ClosePreviewAfterPrint, NavSmallStep, NavMediumStep,
    NavBigStep, TableFontName, TableFontSize,
    // main window
    WindowState, WindowLeft, WindowTop, WindowWidth, WindowHeight, PreviewZoom, BatchMode,
    HiderTop, HiderLeft,
    // recent files; RecentFile takes the number 1..Count
    RecentCount, RecentFile,
    // display of one statistic; these take the statistic's name ("Maximum", "Count", ...)
    IndizesShow, IndizesFormatNumber, IndizesFormatDate, IndizesUseDate,
    // reports
    ReportLeft, ReportRight, ReportTop, ReportBottom, ReportHeadHeight, ReportFootHeight,
    ReportDrawLine, ReportSelection,
    // what the new-measuring wizard remembers; Customer and AxisBorder take their index
    NewDataModules, NewIndizes, NewShowIndizes, NewCustomer, NewOptResolution,
    NewResolutionCount, NewResolutionUnit, NewMinCursor, NewMaxCursor, NewAxisBorders,
    NewAxisBorder, NewUseSingleAxis, NewUseLgaDays, NewLgaNumValues, NewLgaGallery,
    NewChkFixedLine, NewFixedLine,
    // outside the product's tree: names the bar layout file
    LastUsername,
    // where the file dialogs start, and the picture format the export proposes
    LastFolder, ExportFilter,
    Count_
};

struct Definition {
    Id id;
    const char* key;          ///< key path; "%1" is filled by the argument of Indizes values
    const char* name;         ///< value name; "%1" is filled by an index argument
    Read read;
    Hive writeHive;           ///< where the program writes the value
    const char* defaultValue; ///< nullptr: no default, the caller keeps what it has
};

const Definition& DefinitionOf(Id id);

// The value as its read pattern finds it, or its default when that is empty.
// `arg` fills the statistic name of Indizes values or the index of numbered values.
QString Value(Id id, const QString& arg = QString());

// The value as its read pattern finds it, empty when it is missing or empty: no default.
QString StoredValue(Id id, const QString& arg = QString());

// True when the value's leading number is not 0 ("1abc" is true, "abc" false).
bool IsTrue(Id id, const QString& arg = QString());

// The leading number of the value (0 when it has none).
double Number(Id id, const QString& arg = QString());

// The value as a number only when the whole text is numeric.
std::optional<double> StrictNumber(Id id, const QString& arg = QString());

// Writes the value into the root the program writes it to.
void Write(Id id, const QString& data, const QString& arg = QString());

} // namespace Settings
