// SPDX-License-Identifier: GPL-3.0-or-later
// Hands the dialogs that edit a view to the view document, which can't know them itself.
#pragma once

class Project;

// The new-view wizard works with the project's modules and profiles.
void InstallViewDialogs(Project& project);
