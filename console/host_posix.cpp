// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/host.h"

#include "wire/local_service_name.h"

#include <QFile>
#include <QHash>
#include <QTextStream>

#include <array>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace host {

namespace {

constexpr char kEnterScreen[] = "\033[?1049h\033[?25l";
constexpr char kEscape = '\033';
constexpr char kLeaveScreen[] = "\033[?25h\033[?1049l";

/// Used by the signal handler to restore the terminal; it has no access to an object.
termios savedAttributes;

void writeAll(const char *text, size_t size)
{
    while (size > 0) {
        const ssize_t written = write(STDOUT_FILENO, text, size);
        if (written <= 0)
            return;
        text += written;
        size -= size_t(written);
    }
}

void leaveFullScreen()
{
    tcsetattr(STDIN_FILENO, TCSANOW, &savedAttributes);
    writeAll(kLeaveScreen, sizeof kLeaveScreen - 1);
}

/// Returns the key of a sequence after an escape (ECMA-48, VT220 and xterm).
Key keyOfSequence(const QByteArray &sequence)
{
    static const QHash<QByteArray, Key> kKeys{
        {"[A", Key::LineUp}, {"OA", Key::LineUp}, {"[B", Key::LineDown}, {"OB", Key::LineDown},
        {"[H", Key::First},  {"OH", Key::First},  {"[1~", Key::First},   {"[5~", Key::PageUp},
        {"[F", Key::Last},   {"OF", Key::Last},   {"[4~", Key::Last},    {"[6~", Key::PageDown},
    };
    return kKeys.value(sequence, Key::Other);
}

/// Returns the next character, or 0 if there is none.
char takeCharacter()
{
    char character = 0;
    return read(STDIN_FILENO, &character, 1) == 1 ? character : '\0';
}

void endProcess(int signalNumber)
{
    leaveFullScreen();
    std::signal(signalNumber, SIG_DFL);
    std::raise(signalNumber);
}

} // namespace

struct FullScreen::State
{
    std::array<void (*)(int), 2> handlers{};
};

void prepareConsole()
{}

bool isOutputTerminal()
{
    return isatty(STDOUT_FILENO) == 1;
}

bool isInputTerminal()
{
    return isatty(STDIN_FILENO) == 1;
}

TerminalSize terminalSize()
{
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return {};
    return {size.ws_col, size.ws_row};
}

std::optional<QString> readHidden(const QString &prompt)
{
    QFile terminal(QStringLiteral("/dev/tty"));
    if (!terminal.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
        return std::nullopt;
    termios attributes{};
    if (tcgetattr(terminal.handle(), &attributes) != 0)
        return std::nullopt;
    termios hidden = attributes;
    hidden.c_lflag &= ~tcflag_t(ECHO);
    terminal.write(prompt.toUtf8());
    tcsetattr(terminal.handle(), TCSAFLUSH, &hidden);
    QByteArray line = terminal.readLine();
    tcsetattr(terminal.handle(), TCSAFLUSH, &attributes);
    terminal.write("\n");
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return QString::fromUtf8(line);
}

QString localServiceName()
{
    const QString home = qEnvironmentVariable("HALVEX_HOME");
    const QString name = QLatin1String(kLocalServiceName);
    return home.isEmpty() ? name : home + QLatin1Char('/') + name;
}

FullScreen::FullScreen()
    : m_state(std::make_unique<State>())
{
    tcgetattr(STDIN_FILENO, &savedAttributes);
    m_state->handlers = {std::signal(SIGTERM, endProcess), std::signal(SIGHUP, endProcess)};
    termios raw = savedAttributes;
    raw.c_lflag &= ~tcflag_t(ICANON | ECHO | ISIG);
    raw.c_cc[VMIN] = 0;
    raw.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &raw);
    writeAll(kEnterScreen, sizeof kEnterScreen - 1);
}

FullScreen::~FullScreen()
{
    leaveFullScreen();
    std::signal(SIGTERM, m_state->handlers[0]);
    std::signal(SIGHUP, m_state->handlers[1]);
}

Key FullScreen::takeKey()
{
    const char character = takeCharacter();
    if (character != kEscape)
        return character == '\0' ? Key::None : keyOfCharacter(character);
    // A sequence arrives together with its escape; a lone escape is a key of its own.
    constexpr int kLongestSequence = 8;
    QByteArray sequence(1, takeCharacter());
    do
        sequence += takeCharacter();
    while (sequence.back() != '~' && std::isdigit(sequence.back()) != 0 &&
           sequence.size() < kLongestSequence);
    return keyOfSequence(sequence);
}

} // namespace host
