// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/finding.h"

#include <algorithm>

Finding *DriveAlerts::find(FindingKind kind, quint32 id)
{
    const auto found = std::find_if(findings.begin(), findings.end(),
                                    [kind, id](const Finding &finding) { return finding.isAbout(kind, id); });
    return found == findings.end() ? nullptr : &*found;
}

void DriveAlerts::remove(FindingKind kind, quint32 id)
{
    const auto isIt = [kind, id](const Finding &finding) { return finding.isAbout(kind, id); };
    findings.erase(std::remove_if(findings.begin(), findings.end(), isIt), findings.end());
}
