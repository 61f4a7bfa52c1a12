// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/host.h"

#include "wire/local_service_name.h"

#include <cstdio>
#include <windows.h>

namespace host {

namespace {

HANDLE output()
{
    return GetStdHandle(STD_OUTPUT_HANDLE);
}

HANDLE input()
{
    return GetStdHandle(STD_INPUT_HANDLE);
}

bool isConsole(HANDLE handle)
{
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != 0;
}

void writeText(const wchar_t *text, size_t size)
{
    DWORD written = 0;
    WriteConsoleW(output(), text, DWORD(size), &written, nullptr);
}

Key keyOfCode(WORD code)
{
    switch (code) {
    case VK_UP:
        return Key::LineUp;
    case VK_DOWN:
        return Key::LineDown;
    case VK_PRIOR:
        return Key::PageUp;
    case VK_NEXT:
        return Key::PageDown;
    case VK_HOME:
        return Key::First;
    case VK_END:
        return Key::Last;
    default:
        return Key::Other;
    }
}

} // namespace

struct FullScreen::State
{
    DWORD inputMode = 0;
};

void prepareConsole()
{
    SetConsoleOutputCP(CP_UTF8);
    // Colours and bars need terminal sequences, which older systems enable only on request.
    DWORD mode = 0;
    if (GetConsoleMode(output(), &mode) != 0)
        SetConsoleMode(output(), mode | ENABLE_PROCESSED_OUTPUT | 0x0004 /* virtual terminal */);
}

bool isOutputTerminal()
{
    return isConsole(output());
}

bool isInputTerminal()
{
    return isConsole(input());
}

TerminalSize terminalSize()
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(output(), &info) == 0)
        return {};
    return {info.srWindow.Right - info.srWindow.Left + 1, info.srWindow.Bottom - info.srWindow.Top + 1};
}

std::optional<QString> readHidden(const QString &prompt)
{
    DWORD mode = 0;
    if (GetConsoleMode(input(), &mode) == 0)
        return std::nullopt;
    const std::wstring wide = prompt.toStdWString();
    writeText(wide.data(), wide.size());
    SetConsoleMode(input(), (mode | ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT) & ~DWORD(ENABLE_ECHO_INPUT));
    wchar_t line[1024];
    DWORD size = 0;
    const bool isRead = ReadConsoleW(input(), line, DWORD(std::size(line)), &size, nullptr) != 0;
    SetConsoleMode(input(), mode);
    writeText(L"\r\n", 2);
    if (!isRead)
        return std::nullopt;
    while (size > 0 && (line[size - 1] == L'\n' || line[size - 1] == L'\r'))
        --size;
    return QString::fromWCharArray(line, int(size));
}

QString localServiceName()
{
    return QLatin1String(kLocalServiceName);
}

FullScreen::FullScreen()
    : m_state(std::make_unique<State>())
{
    GetConsoleMode(input(), &m_state->inputMode);
    SetConsoleMode(input(), m_state->inputMode &
                                ~DWORD(ENABLE_LINE_INPUT | ENABLE_ECHO_INPUT | ENABLE_PROCESSED_INPUT));
    writeText(L"\033[?1049h\033[?25l", 14);
}

FullScreen::~FullScreen()
{
    writeText(L"\033[?25h\033[?1049l", 14);
    SetConsoleMode(input(), m_state->inputMode);
}

Key FullScreen::takeKey()
{
    INPUT_RECORD record{};
    DWORD count = 0;
    while (PeekConsoleInputW(input(), &record, 1, &count) != 0 && count == 1) {
        ReadConsoleInputW(input(), &record, 1, &count);
        if (record.EventType != KEY_EVENT || record.Event.KeyEvent.bKeyDown == 0)
            continue;
        const char character = record.Event.KeyEvent.uChar.AsciiChar;
        return character != 0 ? keyOfCharacter(character) : keyOfCode(record.Event.KeyEvent.wVirtualKeyCode);
    }
    return Key::None;
}

} // namespace host
