// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

#include <memory>
#include <optional>

/// What the console needs of the system it runs on: the terminal, and where the service's local socket is.
/// One file for each system answers.
namespace host {

struct TerminalSize
{
    int columns = 80;
    int rows = 24;
};

/// Makes the console take UTF-8, where it would not by itself.
void prepareConsole();

[[nodiscard]] bool isOutputTerminal();
[[nodiscard]] bool isInputTerminal();

/// The output terminal's size now; 80 by 24 when there is none.
[[nodiscard]] TerminalSize terminalSize();

/// Asks for a line that is not shown while it is typed. Nothing when there is no terminal to ask at.
[[nodiscard]] std::optional<QString> readHidden(const QString &prompt);

/// The name or path of the socket of the service on this machine.
[[nodiscard]] QString localServiceName();

/// What a person at a full screen may press.
enum class Key { None, Quit, LineUp, LineDown, PageUp, PageDown, First, Last, Other };

/// The key that writes `character`.
[[nodiscard]] constexpr Key keyOfCharacter(char character)
{
    constexpr char kInterrupt = 3; // Ctrl-C
    switch (character) {
    case 'q':
    case kInterrupt:
        return Key::Quit;
    case 'k':
        return Key::LineUp;
    case 'j':
        return Key::LineDown;
    case 'b':
        return Key::PageUp;
    case ' ':
        return Key::PageDown;
    case 'g':
        return Key::First;
    case 'G':
        return Key::Last;
    default:
        return Key::Other;
    }
}

/// The terminal as a full screen with single key presses, until destroyed; also when the process is
/// terminated.
class FullScreen
{
public:
    FullScreen();
    FullScreen(const FullScreen &) = delete;
    FullScreen &operator=(const FullScreen &) = delete;
    ~FullScreen();

    /// A key that waits to be read: q, Ctrl-C, the arrows, the page keys, Home and End, or j, k, the space
    /// bar, b, g and G for who knows them from a pager.
    [[nodiscard]] Key takeKey();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace host
