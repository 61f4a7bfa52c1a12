// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/conversation.h"
#include "console/context.h"
#include "console/host.h"
#include "console/render/watch_screen.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <utility>

namespace {

using Drives = QVector<client::Drive>;
using Scans = QVector<client::ScanStatus>;

constexpr std::chrono::milliseconds kKeyInterval{50};
constexpr double kDefaultIntervalSeconds = 2;
constexpr double kShortestIntervalSeconds = 0.2;
constexpr double kLongestIntervalSeconds = 3600;
constexpr int kKeptTemperatures = 60;

/// Asks one service at intervals and keeps its latest replies. After a failure it tries again at the next
/// interval, without a limit.
class Poller : public QObject
{
public:
    Poller(const client::Endpoint &endpoint, std::chrono::milliseconds timeout,
           std::chrono::milliseconds interval)
        : m_conversation(endpoint, timeout)
    {
        m_state.endpoint = displayName(endpoint);
        m_state.problem = QStringLiteral("waiting for the first answer");
        m_timer.setSingleShot(true);
        m_timer.setInterval(interval);
        connect(&m_timer, &QTimer::timeout, this, &Poller::poll);
        poll();
    }

    [[nodiscard]] const render::WatchState &state() const { return m_state; }

    /// `listener` is called after each change of the state.
    void setListener(std::function<void()> listener) { m_listener = std::move(listener); }

private:
    void poll()
    {
        m_conversation.ask(client::requests::allDrives(), [this](const client::Result<Drives> &drives) {
            if (drives)
                takeDrives(*drives);
        });
        m_conversation.ask(client::requests::scans(), [this](const client::Result<Scans> &scans) {
            m_state.problem = scans ? QString() : scans.failure().text;
            if (scans) {
                m_state.greeting = m_conversation.greeting();
                m_state.scans = *scans;
                m_state.answered = QDateTime::currentDateTime();
            }
            // Other consoles can use the local socket during the interval; a failure needs a new connection.
            if (!scans || m_conversation.endpoint().isLocal())
                m_conversation.close();
            m_timer.start();
            m_listener();
        });
    }

    void takeDrives(const Drives &drives)
    {
        if (drives.size() != m_state.drives.size())
            m_state.temperatures.clear(); // after a detection a number may mean another drive
        m_state.drives = drives;
        m_state.temperatures.resize(drives.size());
        for (const client::Drive &drive : drives) {
            QVector<int> &values = m_state.temperatures[drive.number];
            if (drive.temperature)
                values.append(*drive.temperature);
            if (values.size() > kKeptTemperatures)
                values.removeFirst();
        }
    }

    client::Conversation m_conversation;
    QTimer m_timer;
    render::WatchState m_state;
    std::function<void()> m_listener = [] {};
};

/// Returns the number of drives that `key` scrolls by; a page shows `page` of `count`.
int stepOf(host::Key key, int page, int count)
{
    switch (key) {
    case host::Key::LineUp:
        return -1;
    case host::Key::LineDown:
        return 1;
    case host::Key::PageUp:
        return -page;
    case host::Key::PageDown:
        return page;
    case host::Key::First:
        return -count;
    case host::Key::Last:
        return count;
    case host::Key::None:
    case host::Key::Quit:
    case host::Key::Other:
        break;
    }
    return 0;
}

/// The screen and the keys.
class Watch
{
public:
    Watch(Output &output, Poller &poller)
        : m_output(output)
        , m_poller(poller)
    {
        poller.setListener([this] { draw(); });
        QObject::connect(&m_keys, &QTimer::timeout, &m_keys, [this] { look(); });
        m_keys.start(kKeyInterval);
        draw();
    }

    void run() { m_loop.exec(); }

private:
    /// Polls keys and the window's size, for which not every system has an event.
    void look()
    {
        const host::TerminalSize size = host::terminalSize();
        bool isStale = size.columns != m_size.columns || size.rows != m_size.rows;
        for (auto key = m_screen.takeKey(); key != host::Key::None; key = m_screen.takeKey()) {
            if (key == host::Key::Quit)
                m_loop.quit();
            scroll(key, render::watchCapacity(size.rows));
            isStale = true;
        }
        if (isStale)
            draw();
    }

    void scroll(host::Key key, int page)
    {
        const int count = int(m_poller.state().drives.size());
        m_firstRow = std::clamp(m_firstRow + stepOf(key, page, count), 0, std::max(0, count - page));
    }

    void draw()
    {
        m_size = host::terminalSize();
        m_output.fillScreen(render::watchScreen(m_poller.state(), m_size.rows, m_firstRow, outputStyle()));
    }

    Output &m_output;
    Poller &m_poller;
    host::FullScreen m_screen;
    host::TerminalSize m_size;
    QTimer m_keys;
    QEventLoop m_loop;
    int m_firstRow = 0;
};

void watch(Context &context)
{
    bool ok = true;
    const auto text = context.arguments().value(QStringLiteral("interval"));
    const double seconds = text ? text->toDouble(&ok) : kDefaultIntervalSeconds;
    if (!ok || seconds < kShortestIntervalSeconds || seconds > kLongestIntervalSeconds)
        context.refuse(QStringLiteral("--interval takes seconds from 0.2 to 3600"));
    if (!host::isOutputTerminal() || !host::isInputTerminal())
        context.refuse(QStringLiteral("watch needs a terminal; halvexctl status --json does not"));
    const Arguments &arguments = context.arguments();
    Poller poller(arguments.endpoints.first(), arguments.timeout,
                  std::chrono::milliseconds(qint64(seconds * 1000)));
    Watch(context.output(), poller).run();
}

} // namespace

QVector<Command> watchCommands()
{
    return {
        command("watch", "", 0, 0, watch, "Show all drives on a live screen until q is pressed.",
                "The trend is that of the temperatures since the start. Arrow and page keys scroll.",
                {option("interval", "SECONDS", "The interval between two updates (2).")}),
    };
}
