// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/arguments.h"
#include "console/commands/command.h"
#include "console/host.h"
#include "console/output.h"

#include <QCoreApplication>

namespace {

int run(const Arguments &arguments, Output &output)
{
    if (arguments.has(QStringLiteral("quiet")))
        output.setQuiet();
    Context context(arguments, output);
    const CommandFunction function = commandFunction(arguments.command.name);
    Q_ASSERT(function);
    return function(context);
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
        output.complain(error->text);
    return kExitUsage;
}
