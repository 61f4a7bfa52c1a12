// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtGlobal>

/// Lets the system queue as many connections to a listening TCP socket as it allows, until they are accepted.
/// QTcpServer asks for 50: when more arrive at once the system drops them, and each peer tries again after a
/// second. Has no effect where the system refuses.
void lengthenListenQueue(qintptr descriptor);
