// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/configuration.h"
#include "wire/result.h"

#include <QString>
#include <QStringList>

namespace web {

/// The action that the command line requests.
enum class Task { Serve, HashPassword, CheckConfiguration, Export, Version, Help };

struct CommandLine
{
    Task task = Task::Serve;
    QString exportedService; ///< for Task::Export
    QString configurationFile;
    bool isFileRequired = false; ///< an option names the file, so it has to exist
    QString stateFolder;
    std::optional<ListenAddress> listen;
    QVector<ServiceAddress> services; ///< if there are any, they replace the file's
};

/// Reads the options of the program, without its name.
[[nodiscard]] Result<CommandLine> parseCommandLine(const QStringList &arguments);

/// Returns the configuration that file and options make, checked. The failure names file, key and reason.
[[nodiscard]] Result<Configuration> loadConfiguration(const CommandLine &commandLine);

/// Returns the text of --help.
[[nodiscard]] QString helpText();

} // namespace web
