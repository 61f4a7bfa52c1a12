// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/application.h"
#include "web/command_line.h"
#include "web/history_export.h"
#include "web/host.h"
#include "web/passwords.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

namespace {

constexpr int kExitFine = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

void print(const QString &text)
{
    std::fputs(text.toUtf8().constData(), stdout);
    std::fflush(stdout);
}

int fail(int code, const QString &text)
{
    web::host::reportFailure(text);
    return code;
}

/// Reads the first line of standard input; a terminal does not show it.
QString readPassword()
{
    const auto hidden = web::host::hideTyping();
    if (hidden)
        std::fputs("Password: ", stderr);
    QFile input;
    QByteArray line = input.open(stdin, QIODevice::ReadOnly) ? input.readLine() : QByteArray();
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return QString::fromUtf8(line);
}

int hashPassword()
{
    const QString password = readPassword();
    if (password.isEmpty())
        return fail(kExitUsage, QStringLiteral("the password is empty"));
    print(QString::fromLatin1(web::hashPassword(password)) + QLatin1Char('\n'));
    return kExitFine;
}

int checkConfiguration(const web::CommandLine &commandLine)
{
    const auto configuration = web::loadConfiguration(commandLine);
    if (!configuration)
        return fail(kExitFailure, configuration.failure().text);
    print(QStringLiteral("The configuration is valid: %1 port %2, %3 services, %4 users.\n")
              .arg(configuration->listen.address.toString())
              .arg(configuration->listen.port)
              .arg(configuration->services.size())
              .arg(configuration->users.size()));
    return kExitFine;
}

int exportHistory(const web::CommandLine &commandLine)
{
    const auto configuration = web::loadConfiguration(commandLine);
    if (!configuration)
        return fail(kExitFailure, configuration.failure().text);
    for (const web::ServiceAddress &service : configuration->services) {
        if (service.name != commandLine.exportedService)
            continue;
        const auto text = web::exportHistory(service);
        if (!text)
            return fail(kExitFailure, QStringLiteral("%1: %2").arg(service.name, text.failure().text));
        const bool isWritten =
            std::fwrite(text->constData(), 1, size_t(text->size()), stdout) == size_t(text->size()) &&
            std::fflush(stdout) == 0;
        return isWritten ? kExitFine : fail(kExitFailure, QStringLiteral("the output cannot be written"));
    }
    return fail(kExitUsage, QStringLiteral("there is no service '%1'").arg(commandLine.exportedService));
}

int serve(const web::CommandLine &commandLine)
{
    const auto stopWatch = web::host::watchStopRequests([] { QCoreApplication::quit(); });
    const auto configuration = web::loadConfiguration(commandLine);
    if (!configuration)
        return fail(kExitFailure, configuration.failure().text);
    web::Application application(*configuration, commandLine.stateFolder);
    if (const auto started = application.start(); !started)
        return fail(kExitFailure, started.failure().text);
    web::host::reportStarted(QStringLiteral("halvex-web serves %1").arg(application.url()));
    return QCoreApplication::exec();
}

int run(const web::CommandLine &commandLine)
{
    switch (commandLine.task) {
    case web::Task::Serve:
        return serve(commandLine);
    case web::Task::HashPassword:
        return hashPassword();
    case web::Task::CheckConfiguration:
        return checkConfiguration(commandLine);
    case web::Task::Export:
        return exportHistory(commandLine);
    case web::Task::Version:
        print(QStringLiteral("halvex-web " HALVEX_VERSION "\n"));
        return kExitFine;
    case web::Task::Help:
        print(web::helpText());
        return kExitFine;
    }
    return kExitUsage;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const auto commandLine = web::parseCommandLine(QCoreApplication::arguments().mid(1));
    if (!commandLine)
        return fail(kExitUsage, commandLine.failure().text);
    return run(*commandLine);
}
