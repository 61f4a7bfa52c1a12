// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/arguments.h"
#include "console/client/inventory.h"
#include "console/client/session.h"
#include "console/output.h"
#include "console/render/style.h"

#include <QString>

#include <functional>

enum ExitCode {
    kExitFine = 0,
    kExitUsage = 1,    ///< the command line is wrong, or the service refuses what it asks for
    kExitNoAnswer = 2, ///< no answer, or one that does not fit
    kExitWarning = 3,
    kExitCritical = 4,
};

/// What a command works with: the checked command line, the service it asks, and the output.
class Context
{
public:
    Context(Arguments arguments, Output &output);

    [[nodiscard]] const Arguments &arguments() const { return m_arguments; }
    [[nodiscard]] Output &output() { return m_output; }
    [[nodiscard]] client::Session &session() { return m_session; }
    [[nodiscard]] const render::Style &style() const { return m_style; }
    [[nodiscard]] bool wantsJson() const { return m_arguments.has(QStringLiteral("json")); }

    /// Connects and takes the greeting; with --wait as soon as the service is ready.
    [[nodiscard]] client::Result<client::Greeting> greet();

    /// What the service tells of one drive, once it has greeted.
    [[nodiscard]] client::Result<client::Drive> askDrive(qint32 index);

    /// The time that slow work of the service may take unless --timeout says otherwise.
    [[nodiscard]] std::chrono::milliseconds patience(std::chrono::milliseconds usual) const;

    /// Says why there is no answer; returns the exit code for it.
    [[nodiscard]] int fail(const client::Failure &failure);

    /// Says what is wrong with the command line; returns the exit code for it.
    [[nodiscard]] int refuse(const QString &text);

    /// The drive that positional argument `position` names; nothing when it names none.
    [[nodiscard]] std::optional<qint32> driveArgument(int position = 0) const;

    /// Complains about a positional argument that should name a drive.
    [[nodiscard]] int refuseDrive(int position = 0);

private:
    Arguments m_arguments;
    Output &m_output;
    client::Session m_session;
    render::Style m_style;
};

using CommandFunction = int (*)(Context &context);

/// The function of the command that the help calls `name`; null when there is none.
[[nodiscard]] CommandFunction commandFunction(const QString &name);

int runCompletion(Context &context);
int runCount(Context &context);
int runDetect(Context &context);
int runHosts(Context &context);
int runInfo(Context &context);
int runIntervals(Context &context);
int runLogin(Context &context);
int runMailTest(Context &context);
int runMan(Context &context);
int runRaw(Context &context);
int runRefresh(Context &context);
int runScanStart(Context &context);
int runScanStatus(Context &context);
int runScanStop(Context &context);
int runScheduleClear(Context &context);
int runScheduleSet(Context &context);
int runScheduleShow(Context &context);
int runSettingsSet(Context &context);
int runSettingsShow(Context &context);
int runSmart(Context &context);
int runStatus(Context &context);
int runTemperatures(Context &context);
int runUsers(Context &context);
int runVolumes(Context &context);
int runWatch(Context &context);
