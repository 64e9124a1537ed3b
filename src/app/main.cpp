// SPDX-License-Identifier: GPL-3.0-or-later
#include "SubMain.h"

int main(int argc, char** argv)
{
    return SubMain(argc, argv);
}
