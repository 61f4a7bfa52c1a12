// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/commands/command.h"
#include "console/help.h"

int runMan(Context &context)
{
    context.output().print(help::manPage());
    return kExitFine;
}

int runCompletion(Context &context)
{
    context.output().print(help::bashCompletion());
    return kExitFine;
}
