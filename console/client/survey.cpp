// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/survey.h"

#include "console/client/connection.h"
#include "console/client/session.h"

#include <QEventLoop>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace client {

namespace {

/// One service's part: the greeting, then the list of drives.
class Inquiry : public QObject
{
public:
    Inquiry(const Endpoint &endpoint, std::chrono::milliseconds timeout, std::function<void()> finished)
        : m_connection(endpoint)
        , m_timeout(timeout)
        , m_finished(std::move(finished))
    {
        m_answer.endpoint = endpoint;
        connect(&m_connection, &Connection::lineArrived, this, &Inquiry::take);
        connect(&m_connection, &Connection::failed, this, &Inquiry::end);
        m_connection.open(timeout);
    }

    [[nodiscard]] const SurveyAnswer &answer() const { return m_answer; }

private:
    void take(const QString &line)
    {
        if (m_answer.greeting)
            takeDrives(line);
        else
            takeGreeting(line);
    }

    void takeGreeting(const QString &line)
    {
        const Result<Greeting> greeting = greetingOf(line);
        if (!greeting) {
            end(greeting.failure());
            return;
        }
        m_answer.greeting = *greeting;
        m_connection.ask(QStringLiteral("ALLDEVINFO"), m_timeout);
    }

    void takeDrives(const QString &line)
    {
        m_answer.drives = parseAllDrives(line);
        end(m_answer.drives ? Failure() : refusal(line).value_or(notUnderstood(line)));
    }

    void end(const Failure &failure)
    {
        m_answer.failure = failure;
        m_connection.disconnect(this); // a service that closes later changes nothing
        m_connection.close();
        m_finished();
    }

    Connection m_connection;
    std::chrono::milliseconds m_timeout;
    std::function<void()> m_finished;
    SurveyAnswer m_answer;
};

} // namespace

QVector<SurveyAnswer> askAll(const QVector<Endpoint> &endpoints, std::chrono::milliseconds timeout)
{
    QEventLoop loop;
    int pending = int(endpoints.size());
    std::vector<std::unique_ptr<Inquiry>> inquiries;
    for (const Endpoint &endpoint : endpoints) {
        inquiries.push_back(std::make_unique<Inquiry>(endpoint, timeout, [&] {
            if (--pending == 0)
                loop.quit();
        }));
    }
    if (pending > 0)
        loop.exec();
    QVector<SurveyAnswer> answers;
    for (const auto &inquiry : inquiries)
        answers.append(inquiry->answer());
    return answers;
}

} // namespace client
