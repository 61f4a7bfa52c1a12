// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/program_arguments.h"

ProgramArguments::ProgramArguments(int argc, char **argv)
    : m_values(argv, argv + argc)
{
    m_values.push_back(nullptr);
}

QString decodeArgument(const char *argument)
{
    return QString::fromLocal8Bit(argument);
}
