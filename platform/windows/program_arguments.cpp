// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/program_arguments.h"

#include <windows.h>

#include <shellapi.h>

ProgramArguments::ProgramArguments(int, char **)
{
    int count = 0;
    wchar_t **const texts = CommandLineToArgvW(GetCommandLineW(), &count);
    m_texts.reserve(std::size_t(count));
    for (int i = 0; texts && i < count; ++i) {
        m_texts.push_back(QString::fromWCharArray(texts[i]).toUtf8());
        m_values.push_back(m_texts.back().data());
    }
    LocalFree(texts);
    m_values.push_back(nullptr);
}

QString decodeArgument(const char *argument)
{
    return QString::fromUtf8(argument);
}
