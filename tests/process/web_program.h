// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "files.h"
#include "process/service_fixture.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QTcpSocket>

struct Response
{
    int status = 0; ///< 0: the connection ended without a status
    QByteArray header;
    QByteArray body;

    [[nodiscard]] QJsonDocument json() const { return QJsonDocument::fromJson(body); }
};

/// halvex-web as a process of its own with a private configuration and state.
class WebProgram
{
public:
    explicit WebProgram(const ServiceFixture &service)
        : m_state(service.path("web"))
        , m_file(service.path("web.json"))
    {
        m_configuration = {
            {"listen", "127.0.0.1:0"},
            {"pollSeconds", 5},
            {"services",
             QJsonArray{QJsonObject{{"name", "files"}, {"host", "127.0.0.1"}, {"port", service.port()}}}}};
    }

    ~WebProgram()
    {
        m_process.kill();
        m_process.waitForFinished(kPatienceMs);
    }
    WebProgram(const WebProgram &) = delete;
    WebProgram &operator=(const WebProgram &) = delete;

    /// Two users with the password "secret".
    void addUsers()
    {
        const QString hash =
            "pbkdf2-sha256:10000:MDEyMzQ1Njc4OWFiY2RlZg==:6umsHhz0yhb+YIJ/FUgCrsOB+tK+gGdB+tvI2KPIHns=";
        const auto user = [&hash](const char *name, const char *role) {
            return QJsonObject{{"name", name}, {"role", role}, {"password", hash}};
        };
        m_configuration.insert("users", QJsonArray{user("ann", "operator"), user("bob", "reader")});
    }

    [[nodiscard]] bool start()
    {
        writeFile(m_file, QJsonDocument(m_configuration).toJson());
        m_process.start(HALVEX_WEB_PROGRAM, {"--config", m_file, "--state", m_state});
        const QRegularExpression address("http://127\\.0\\.0\\.1:(\\d+)/");
        QString output;
        while (!address.match(output).hasMatch()) {
            if (!m_process.waitForReadyRead(kPatienceMs))
                return false;
            output += QString::fromUtf8(m_process.readAllStandardOutput());
        }
        m_port = quint16(address.match(output).captured(1).toUInt());
        return true;
    }

    /// Kills the program as a crash would.
    void crash()
    {
        m_process.kill();
        m_process.waitForFinished(kPatienceMs);
    }

    [[nodiscard]] int stop()
    {
        m_process.terminate();
        return m_process.waitForFinished(kPatienceMs) ? m_process.exitCode() : -1;
    }

    [[nodiscard]] quint16 port() const { return m_port; }

    /// Sends `bytes` and reads until the other end closes the connection.
    [[nodiscard]] Response exchange(const QByteArray &bytes) const
    {
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1", m_port);
        if (!socket.waitForConnected(kPatienceMs))
            return {};
        socket.write(bytes);
        QByteArray text;
        while (socket.state() == QAbstractSocket::ConnectedState && socket.waitForReadyRead(kPatienceMs))
            text += socket.readAll();
        text += socket.readAll();
        const int end = text.indexOf("\r\n\r\n");
        return {text.mid(9, 3).toInt(), text.left(end), text.mid(end + 4)};
    }

    [[nodiscard]] Response request(const QByteArray &method, const QByteArray &path,
                                   const QByteArray &body = {}) const
    {
        return exchange(
            method + ' ' + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\nCookie: " + m_cookie +
            "\r\nContent-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) +
            "\r\n\r\n" + body);
    }

    [[nodiscard]] bool logIn(const QByteArray &name)
    {
        const Response response =
            request("POST", "/login", "{\"name\": \"" + name + "\", \"password\": \"secret\"}");
        m_cookie = QRegularExpression("Set-Cookie: ([^;]+)")
                       .match(QString::fromLatin1(response.header))
                       .captured(1)
                       .toLatin1();
        return response.status == 200;
    }

    [[nodiscard]] QString state() const
    {
        return request("GET", "/api/v1/services").json().array().at(0)["state"].toString();
    }

private:
    const QString m_state;
    const QString m_file;
    QJsonObject m_configuration;
    QProcess m_process;
    QByteArray m_cookie;
    quint16 m_port = 0;
};
