// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// What the attributes are called. Consoles show the descriptions as rich text.
namespace attribute_catalogue {

[[nodiscard]] QString name(qint32 id);
[[nodiscard]] QString description(qint32 id);

} // namespace attribute_catalogue
