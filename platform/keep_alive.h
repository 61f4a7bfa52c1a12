// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtGlobal>

/// Lets the system probe the idle peer of a connected TCP socket, so that a connection whose peer has
/// vanished fails after about two minutes. Has no effect where the system refuses.
void enableKeepAlive(qintptr descriptor);
