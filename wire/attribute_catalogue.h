// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// The names and descriptions of the attributes. Consoles show the descriptions as rich text.
namespace attribute_catalogue {

[[nodiscard]] QString name(qint32 id);
[[nodiscard]] QString description(qint32 id);

} // namespace attribute_catalogue
