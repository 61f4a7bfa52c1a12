// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(lcWeb)
