// SPDX-License-Identifier: GPL-3.0-or-later
// The image list of the menus and toolbars: keys "ICO_..." to icons. Standard actions come
// from the desktop's icon theme (with the installed Tango theme as fallback), the program's
// own concepts from SVG pictures in the resources.
#pragma once

#include <QIcon>
#include <QString>

namespace IconList {

// Sets the fallback theme once, so that standard icons show on any desktop.
void Init();

// The icon of a key; "OLD" followed by the key is tried first, as older layouts name it. A
// missing image gives a null icon.
QIcon Icon(const QString& key);

} // namespace IconList
