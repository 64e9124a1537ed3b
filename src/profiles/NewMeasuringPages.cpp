// SPDX-License-Identifier: GPL-3.0-or-later
#include "NewMeasuringPages.h"

namespace NewMeasuringPages {

int FinishPage(int mode)
{
    return mode == 2 ? PageChart : PagePeriod;
}

Move Skip(const Situation& situation, int from, int target)
{
    Move move { target, false };
    int& page = move.target;
    const bool singleModule = situation.moduleCount == 1;
    if (target > from) {
        // Mode 0 has no customer page; the batch modes have neither profiles nor statistics.
        if (situation.mode == 0) {
            if (page == PageCustomer)
                page = PagePeriod;
        } else if (page == PageIndizes) {
            page = PageCustomer;
        } else if (page == PageProfile) {
            page = PageChannels;
        }
        // One module needs no choice, except in mode 2, which shows its page all the same.
        if (singleModule && page == PageModules) {
            move.fillUsedModules = true;
            if (situation.mode == 0)
                page = PageProfile;
            else if (situation.mode == 1)
                page = PageChannels;
        }
        if (!situation.hasProfiles && page == PageProfile)
            page = PageChannels;
    } else if (target < from) {
        if (!situation.hasProfiles && page == PageProfile)
            page = PageModules;
        // Mode 2 goes back to the profile page although it skips it going forward.
        if (page == PageProfile && situation.mode == 1)
            page = PageModules;
        if (singleModule && page == PageModules)
            move.fillUsedModules = true;
        if (page == PageIndizes && situation.mode != 0)
            page = PageChannels;
        if (page == PageCustomer && situation.mode == 0)
            page = PageIndizes;
    }
    return move;
}

QString IndizesString(const QStringList& ids)
{
    QString text = QStringLiteral("|");
    for (const QString& id : ids)
        text += id + QLatin1Char('|');
    return text;
}

bool IndizesContains(const QString& indizes, const QString& id)
{
    return indizes.contains(QLatin1Char('|') + id + QLatin1Char('|'));
}

} // namespace NewMeasuringPages
