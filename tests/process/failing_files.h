// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <atomic>

/// The fault that the preloaded library (failing_files.cpp) injects next. It lies in a file that
/// HALVEX_FAULT_PLAN names and that the test and the service map.
struct FaultPlan
{
    enum Kind {
        None,
        Kill,       ///< SIGKILL, in the middle of a write
        NoSpace,    ///< ENOSPC, in the middle of a write
        WriteError, ///< EIO, in the middle of a write
        SyncError,  ///< EIO of fsync()
        ReadError,  ///< EIO of read()
        HangSync,   ///< fsync() does not return until the plan changes
    };

    char file[32]; ///< part of the paths that it concerns; empty: all of the service's small files
    std::atomic<int> kind;
    std::atomic<int> skipped;  ///< operations that succeed before the fault
    std::atomic<int> injected; ///< faults so far
};
