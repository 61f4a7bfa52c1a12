// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/arguments.h"
#include "console/context.h"
#include "console/host.h"
#include "console/output.h"

#include <QCoreApplication>

namespace {

int run(const Arguments &arguments, Output &output)
{
    if (arguments.has(QStringLiteral("quiet")))
        output.setQuiet();
    try {
        Context context(arguments, output);
        arguments.command->run(context);
    } catch (const CommandFailure &failure) {
        if (!failure.text.isEmpty())
            output.printError(failure.text);
        return failure.exitCode;
    }
    return kExitFine;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    host::prepareConsole();
    Output output;
    const auto parsed = parseArguments(QCoreApplication::arguments().mid(1), host::localServiceName());
    if (const auto *arguments = std::get_if<Arguments>(&parsed))
        return run(*arguments, output);
    if (const auto *answer = std::get_if<Answer>(&parsed)) {
        output.print(answer->text);
        return kExitFine;
    }
    if (const auto *error = std::get_if<UsageError>(&parsed))
        output.printError(error->text);
    return kExitUsage;
}
