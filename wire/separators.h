// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// Separates the fields of a request, and follows the reply word of a list reply.
inline const QString kRequestSeparator = QStringLiteral("]![");
/// Separates the fields of one item of a payload.
inline const QString kFieldSeparator = QStringLiteral("~;");
/// Separates the items of a payload.
inline const QString kItemSeparator = QStringLiteral("]~[");
