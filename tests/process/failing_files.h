// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <atomic>

/// The next fault that the preloaded library (failing_files.cpp) injects. The test and the service map it
/// from the file that HALVEX_FAULT_PLAN names.
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

    char file[32]; ///< part of the affected paths; empty: all of the service's small files
    std::atomic<int> kind;
    std::atomic<int> skipped;  ///< operations that succeed before the fault
    std::atomic<int> injected; ///< faults so far
};
