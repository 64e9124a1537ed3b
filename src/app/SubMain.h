// SPDX-License-Identifier: GPL-3.0-or-later
// The entry routine: log, language, edition, then the Project and the event loop.
#pragma once

// Runs the program; returns the process exit code.
int SubMain(int argc, char** argv);

// The start steps before the Project exists: creates g_cLogging, writes the start lines,
// reads the language offset and the edition tag. Separate so that tests can run them.
void StartProcess();

// Ends the log: the stop lines are written and g_cLogging is gone.
void EndProcess();
