// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/connection.h"
#include "console/client/session.h"
#include "console/commands/command.h"
#include "console/host.h"
#include "console/render/watch_screen.h"

#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <utility>

namespace {

constexpr std::chrono::milliseconds kKeyInterval{50};
constexpr double kDefaultIntervalSeconds = 2;
constexpr double kShortestIntervalSeconds = 0.2;
constexpr double kLongestIntervalSeconds = 3600;
constexpr int kKeptTemperatures = 60;

/// Asks one service again and again and keeps its latest answers. A service that fails is asked anew after
/// the interval, for ever: who watches wants to see it come back.
class Poller : public QObject
{
public:
    Poller(const client::Endpoint &endpoint, std::chrono::milliseconds timeout,
           std::chrono::milliseconds interval)
        : m_connection(endpoint)
        , m_timeout(timeout)
    {
        m_state.endpoint = displayName(endpoint);
        m_state.problem = QStringLiteral("asked, not answered yet");
        m_pause.setSingleShot(true);
        m_pause.setInterval(interval);
        connect(&m_pause, &QTimer::timeout, this, &Poller::proceed);
        connect(&m_connection, &client::Connection::lineArrived, this, &Poller::take);
        connect(&m_connection, &client::Connection::failed, this, &Poller::startOver);
        proceed();
    }

    [[nodiscard]] const render::WatchState &state() const { return m_state; }

    /// Called after each change of the state.
    void setListener(std::function<void()> listener) { m_listener = std::move(listener); }

private:
    enum class Step { Greeting, Drives, Scans };

    void proceed()
    {
        switch (m_step) {
        case Step::Greeting:
            m_connection.open(m_timeout);
            break;
        case Step::Drives:
            m_connection.ask(QStringLiteral("ALLDEVINFO"), m_timeout);
            break;
        case Step::Scans:
            m_connection.ask(QStringLiteral("GSTATSCAN"), m_timeout);
            break;
        }
    }

    void take(const QString &line)
    {
        switch (m_step) {
        case Step::Greeting:
            takeGreeting(line);
            break;
        case Step::Drives:
            takeDrives(line);
            break;
        case Step::Scans:
            takeScans(line);
            break;
        }
    }

    void takeGreeting(const QString &line)
    {
        const auto greeting = client::greetingOf(line);
        if (!greeting) {
            startOver(greeting.failure());
            return;
        }
        m_state.greeting = *greeting;
        m_step = Step::Drives;
        proceed();
    }

    void takeDrives(const QString &line)
    {
        const auto drives = client::parseAllDrives(line);
        if (!drives) {
            startOver(client::refusal(line).value_or(client::notUnderstood(line)));
            return;
        }
        if (drives->size() != m_state.drives.size())
            m_state.temperatures.clear(); // detected anew: a number may mean another drive now
        m_state.drives = *drives;
        m_state.temperatures.resize(drives->size());
        for (int i = 0; i < drives->size(); ++i) {
            if (!drives->at(i).hasTemperature)
                continue;
            m_state.temperatures[i].append(drives->at(i).temperature);
            if (m_state.temperatures.at(i).size() > kKeptTemperatures)
                m_state.temperatures[i].removeFirst();
        }
        m_step = Step::Scans;
        proceed();
    }

    void takeScans(const QString &line)
    {
        const auto scans = client::parseScanStatus(line);
        if (!scans) {
            startOver(client::refusal(line).value_or(client::notUnderstood(line)));
            return;
        }
        m_state.scans = *scans;
        m_state.problem.clear();
        m_state.answered = QDateTime::currentDateTime();
        m_step = Step::Drives;
        if (m_connection.endpoint().isLocal()) { // leaves the only local connection to others meanwhile
            m_connection.close();
            m_step = Step::Greeting;
        }
        m_pause.start();
        m_listener();
    }

    void startOver(const client::Failure &failure)
    {
        m_connection.close();
        m_state.problem = failure.text;
        m_step = Step::Greeting;
        m_pause.start();
        m_listener();
    }

    client::Connection m_connection;
    std::chrono::milliseconds m_timeout;
    QTimer m_pause;
    Step m_step = Step::Greeting;
    render::WatchState m_state;
    std::function<void()> m_listener = [] {};
};

/// By how many drives `key` scrolls, where a page shows `page` of `count`.
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
    /// Keys and the window's size, which no event tells of on all systems alike.
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

} // namespace

int runWatch(Context &context)
{
    bool ok = true;
    const auto text = context.arguments().value(QStringLiteral("interval"));
    const double seconds = text ? text->toDouble(&ok) : kDefaultIntervalSeconds;
    if (!ok || seconds < kShortestIntervalSeconds || seconds > kLongestIntervalSeconds)
        return context.refuse(QStringLiteral("--interval takes seconds from 0.2 to 3600"));
    if (!host::isOutputTerminal() || !host::isInputTerminal())
        return context.refuse(QStringLiteral("watch needs a terminal; halvexctl status --json does not"));
    Poller poller(context.session().endpoint(), context.arguments().timeout,
                  std::chrono::milliseconds(qint64(seconds * 1000)));
    Watch watch(context.output(), poller);
    watch.run();
    return kExitFine;
}
