// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

/// The action that the first argument selects.
enum class ServiceOption { Run, Install, Uninstall, Version, Exec, Terminate, Pause, Resume, Command, Help };

/// Returns the option of a first argument: Run for an unknown one, and for null (no argument).
[[nodiscard]] ServiceOption serviceOption(const char *argument);

/// Returns whether a program with these arguments serves: as the service, or as a regular application.
[[nodiscard]] bool wouldServe(int argc, char **argv);

/// The usage text. Its one %s is the program's name.
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
