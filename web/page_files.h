// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/http_message.h"

#include <QStringList>

namespace web {

/// Returns the embedded file of the page at `segments`; index.html for none; 404 where there is none.
[[nodiscard]] HttpResponse pageFile(const HttpRequest &request, const QStringList &segments);

} // namespace web
