// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// Between the fields of a request, and after the reply word of a list reply.
inline const QString kRequestSeparator = QStringLiteral("]![");
/// Between the fields of one item of a payload.
inline const QString kFieldSeparator = QStringLiteral("~;");
/// Between the items of a payload.
inline const QString kItemSeparator = QStringLiteral("]~[");
