// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/process_group.h"

#include <windows.h>

std::unique_ptr<QProcess> makeProcessGroup()
{
    auto process = std::make_unique<QProcess>();
    process->setCreateProcessArgumentsModifier([](QProcess::CreateProcessArguments *arguments) {
        arguments->flags |= CREATE_NEW_PROCESS_GROUP | CREATE_NO_WINDOW;
    });
    return process;
}

void killProcessGroup(QProcess &process)
{
    process.kill();
}
