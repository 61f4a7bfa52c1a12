// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

/// The program's arguments without loss of characters. On Windows the run time converts them to the code
/// page, which lacks most characters; these come from the system's wide text.
class ProgramArguments
{
public:
    ProgramArguments(int argc, char **argv);

    [[nodiscard]] int count() const { return int(m_values.size()) - 1; }
    /// Returns the texts and a null after them; they last as long as this object.
    [[nodiscard]] char **values() { return m_values.data(); }

private:
    std::vector<QByteArray> m_texts;
    std::vector<char *> m_values;
};

/// Returns one of ProgramArguments::values() as text.
[[nodiscard]] QString decodeArgument(const char *argument);
