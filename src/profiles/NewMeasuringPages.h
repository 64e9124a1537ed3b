// SPDX-License-Identifier: GPL-3.0-or-later
// The page rules of the new-measuring wizard without its widgets: which page follows which in
// the three modes, and the statistic list as the wizard stores it.
#pragma once

#include <QString>
#include <QStringList>

namespace NewMeasuringPages {

enum Page { PageName = 0, PageModules, PageProfile, PageChannels, PageIndizes, PageCustomer, PagePeriod, PageChart };

// The number of panels; GotoPage accepts it as a target, which is how Finish in mode 2 ends.
inline constexpr int PanelCount = 8;

// The page whose Forward button reads "Finish": 6 in modes 0 and 1, 7 in mode 2.
int FinishPage(int mode);

// What the skip rules need to know of the wizard at the time of the move.
struct Situation
{
    int mode = 0;
    qsizetype moduleCount = 0; // modules offered on page 1
    bool hasProfiles = false; // the application knows at least one profile
};

struct Move
{
    int target = 0;
    // The single module is to be taken into an empty list of used modules.
    bool fillUsedModules = false;
};

// The page that a move from `from` to `target` really shows, by the skip rules forward
// (target above from) or back (target below from), applied in their order.
Move Skip(const Situation& situation, int from, int target);

// "|id|id|...|": a bar first and after every id; no ids give "|".
QString IndizesString(const QStringList& ids);
// Whether the id stands as "|id|" in the stored list.
bool IndizesContains(const QString& indizes, const QString& id);

} // namespace NewMeasuringPages
