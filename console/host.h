// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

#include <memory>
#include <optional>

/// The parts of the system that the console uses: the terminal, and the address of the local socket. Each
/// system has a file that implements them.
namespace host {

struct TerminalSize
{
    int columns = 80;
    int rows = 24;
};

/// Prepares the console for UTF-8 and terminal sequences where that is not the default.
void prepareConsole();

[[nodiscard]] bool isOutputTerminal();
[[nodiscard]] bool isInputTerminal();

/// Returns the present size of the output terminal; 80 by 24 if there is none.
[[nodiscard]] TerminalSize terminalSize();

/// Reads a line from the terminal without echo. Returns nothing if there is no terminal.
[[nodiscard]] std::optional<QString> readHidden(const QString &prompt);

/// Returns the name or path of the local socket of the service on this machine.
[[nodiscard]] QString localServiceName();

/// The keys of a full screen.
enum class Key { None, Quit, LineUp, LineDown, PageUp, PageDown, First, Last, Other };

/// Returns the key of a character.
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

/// Switches the terminal to a full screen with single key presses, and back when destroyed or when the
/// process is terminated.
class FullScreen
{
public:
    FullScreen();
    FullScreen(const FullScreen &) = delete;
    FullScreen &operator=(const FullScreen &) = delete;
    ~FullScreen();

    /// Returns the next key that was pressed: q, Ctrl-C, the arrows, the page keys, Home and End, or j, k,
    /// the space bar, b, g and G as in a pager.
    [[nodiscard]] Key takeKey();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace host
