// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

namespace web::metrics {

/// Returns the name of an attribute as the S.M.A.R.T. dashboards and rules that are in common use spell it,
/// such as Reallocated_Sector_Ct; Unknown_Attribute for others.
[[nodiscard]] QString attributeName(quint32 id);

/// Returns the status flags of an attribute as six letters, "-" for a flag that is not set: "PO--CK".
[[nodiscard]] QString shortFlags(quint32 flags);
/// Returns them as words: "prefailure,updated_online,event_count,auto_keep".
[[nodiscard]] QString longFlags(quint32 flags);

} // namespace web::metrics
