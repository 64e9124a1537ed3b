// SPDX-License-Identifier: GPL-3.0-or-later
// Texts of the new-measuring wizard that the string table has no place for: the batch modes'
// captions and help texts, and the pages of customer data, period and the serial report's
// chart. German, with English twins chosen like the string table's by the language offset.
#pragma once

#include "Globals.h"

#include <QString>

namespace WizardTexts {

enum Id {
    BatchCaption,
    ProjectName,
    BatchHelp0,
    BatchHelp3,
    CustomerHelp,
    PeriodHelp,
    ChartHelp,
    MinCursor,
    MaxCursor,
    MeasuringResolution,
    Normalised,
    From,
    To,
    AxisAuto,
    AxisManual,
    YAxis1,
    YAxis2,
    Maximum,
    Minimum,
    SingleAxis,
    TwoAxes,
    OnePerDay,
    FixedCount,
    FixedLine,
    Lines,
    Bars,
    Steps
};

inline QString Text(Id id)
{
    struct Pair
    {
        const char* german;
        const char* english;
    };
    static constexpr Pair texts[] = {
        { "Neue Messung für Stapelreport auswählen", "Choose a new measuring for the batch report" },
        { "Projektname", "Project name" },
        { "Dieser Assistent unterstützt Sie bei der Erzeugung eines neuen Stapelreports.\n\n"
          "Bitte geben Sie den Projektnamen für den neuen Report ein.",
            "This wizard helps you to create a new batch report.\n\nPlease enter the project name of the new report." },
        { "Bitte wählen Sie die Messung aus, für die der Report erstellt werden soll.",
            "Please choose the measuring the report is to be made for." },
        { "Bitte geben Sie die Kundendaten ein.\n\nDiese erscheinen auf dem Ausdruck der Messung.",
            "Please enter the customer's data.\n\nThey appear on the printout of the measuring." },
        { "Bitte wählen Sie den Zeitraum aus, der verwendet werden soll.\nVorgabe ist der gesamte "
          "Messungszeitraum.\n\nDie Datenauflösung kann für die angegebenen Einheiten frei gewählt werden.",
            "Please choose the period to be used.\nThe default is the whole measuring.\n\nThe resolution of the "
            "data can be chosen freely in the units given." },
        { "Der Ausdruck kann zwei Kanäle anzeigen.\nDer Vorgabewert wird als konstante Linie an der Y-Achse "
          "dargestellt.\nDie Skalierung der Y-Achse kann manuell festgelegt werden, so dass auf allen Grafiken "
          "der gleiche Datenausschnitt erscheint.",
            "The printout can show two channels.\nThe fixed value is drawn as a constant line on the Y axis.\nThe "
            "Y axis can be scaled by hand, so that every chart shows the same section of the data." },
        { "Cursor auf niedrigsten Wert setzen", "Place a cursor on the lowest value" },
        { "Cursor auf höchsten Wert setzen", "Place a cursor on the highest value" },
        { "Messungs-Auflösung", "Resolution of the measuring" },
        { "Normiert:", "Fixed:" },
        { "Von:", "From:" },
        { "Bis:", "To:" },
        { "Achsen automatisch skalieren", "Scale the axes automatically" },
        { "Achsengrenzen manuell festlegen:", "Set the axis limits by hand:" },
        { "1. Y-Achse (links)", "1st Y axis (left)" },
        { "2. Y-Achse (rechts)", "2nd Y axis (right)" },
        { "Maximum:", "Maximum:" },
        { "Minimum:", "Minimum:" },
        { "eine Y-Achse für Kanäle gleicher Messgröße verwenden", "one Y axis for channels of the same quantity" },
        { "zwei Y-Achsen verwenden", "use two Y axes" },
        { "Eine Grafik pro Tag ausgeben", "One chart per day" },
        { "Pro Grafik eine feste Anzahl von Werten ausgeben:", "A fixed number of values per chart:" },
        { "Vorgabewert anzeigen:", "Show the fixed value:" },
        { "Linien", "Lines" },
        { "Balken", "Bars" },
        { "Stufen", "Steps" },
    };
    const Pair& pair = texts[id];
    return QString::fromUtf8(g_lLangOffset != 0 ? pair.english : pair.german);
}

// The label of customer box 0 to 4.
inline QString Customer(int index)
{
    static constexpr const char* german[]
        = { "Firma:", "Ansprechpartner:", "Straße/Postfach:", "PLZ/Ort:", "Bemerkung:" };
    static constexpr const char* english[]
        = { "Company:", "Contact:", "Street/P.O. box:", "Postcode/town:", "Remark:" };
    if (index < 0 || index > 4)
        return QString();
    return QString::fromUtf8(g_lLangOffset != 0 ? english[index] : german[index]);
}

} // namespace WizardTexts
