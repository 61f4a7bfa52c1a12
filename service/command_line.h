// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

/// What the first argument asks the service host to do.
enum class ServiceOption { Run, Install, Uninstall, Version, Exec, Terminate, Pause, Resume, Command, Help };

/// The option a first argument stands for; anything unknown, and null for none, is Run.
[[nodiscard]] ServiceOption serviceOption(const char *argument);

/// Whether a program started with these arguments would serve, as the service or as a regular application.
[[nodiscard]] bool wouldServe(int argc, char **argv);

/// The usage text; its one %s is the first program argument.
inline constexpr char kUsageText[] =
    "\n%s -[i|u|e|t|p|r|c|v|h]\n"
    "\t-i(nstall) [account] [password]\t: Install the service, optionally using given account and password\n"
    "\t-u(ninstall)\t: Uninstall the service.\n"
    "\t-e(xec)\t\t: Run as a regular application. Useful for debugging.\n"
    "\t-t(erminate)\t: Stop the service.\n"
    "\t-p(ause)\t: Pause the service.\n"
    "\t-r(esume)\t: Resume a paused service.\n"
    "\t-c(ommand) num\t: Send command code num to the service.\n"
    "\t-v(ersion)\t: Print version and status information.\n"
    "\t-h(elp)   \t: Show this help\n"
    "\tNo arguments\t: Start the service.\n";
