// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "windows/service_installation.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

namespace {

/// Returns the body of the response to a GET of `path`; empty if there is none.
QByteArray get(quint16 port, const QByteArray &path)
{
    QTcpSocket socket;
    socket.connectToHost("127.0.0.1", port);
    socket.write("GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
    QByteArray text;
    while (socket.waitForReadyRead(kPatienceMs))
        text += socket.readAll();
    return text.mid(text.indexOf("\r\n\r\n") + 4);
}

QString stateOfService(quint16 port)
{
    return QJsonDocument::fromJson(get(port, "/api/v1/services")).array().at(0)["state"].toString();
}

} // namespace

/// halvex-web at the terminal and in the hands of the service manager, for the service on a simulated
/// machine.
class TestWindowsWeb : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAService()
    {
        ServiceInstallation service;
        QVERIFY(service.install());
        QVERIFY(service.serve());
        QProcess web;
        web.start(HALVEX_WEB_PROGRAM,
                  {"--listen", "127.0.0.1:0", "--state", m_folder.filePath("state"), "--service",
                   "own=127.0.0.1:" + service.key().value("Port").toString()});
        const QRegularExpression address("http://127\\.0\\.0\\.1:(\\d+)/");
        QString output;
        while (!address.match(output).hasMatch()) {
            QVERIFY2(web.waitForReadyRead(kPatienceMs), qPrintable(web.readAllStandardError()));
            output += QString::fromUtf8(web.readAllStandardOutput());
        }
        const auto port = quint16(address.match(output).captured(1).toUInt());
        QTRY_COMPARE_WITH_TIMEOUT(stateOfService(port), "ready", kPatienceMs);
        const QJsonDocument status = QJsonDocument::fromJson(get(port, "/api/v1/services/own/status"));
        QVERIFY(!status["drives"].toArray().isEmpty());
        QVERIFY(get(port, "/").contains("<html"));
        QVERIFY(get(port, "/metrics").contains("process_resident_memory_bytes "));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_folder.filePath("state/history.db")), kPatienceMs);
        web.kill();
        QVERIFY(web.waitForFinished(kPatienceMs));
    }

    void servesUnderTheManager()
    {
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        const quint16 port = probe.serverPort();
        probe.close();
        install("--listen 127.0.0.1:" + QString::number(port));
        QVERIFY(m_manager.start(kName, {}).ok());
        QTRY_COMPARE_WITH_TIMEOUT(get(port, "/-/healthy"), QByteArray("ok\n"), kPatienceMs);
        QVERIFY(waitFor(ServiceState::Running));
        m_manager.control(kName, service_control::kStop);
        QVERIFY(waitFor(ServiceState::Stopped));
    }

    void cleanup()
    {
        m_manager.control(kName, service_control::kStop);
        if (m_manager.isInstalled(kName) && waitFor(ServiceState::Stopped))
            m_manager.uninstall(kName);
    }

private:
    void install(const QString &options)
    {
        ServiceDefinition definition;
        definition.name = kName;
        definition.programPath =
            QString("\"%1\" %2 --state \"%3\"")
                .arg(QDir::toNativeSeparators(QFileInfo(HALVEX_WEB_PROGRAM).absoluteFilePath()), options,
                     m_folder.filePath("own state"));
        definition.account = "NT AUTHORITY\\LocalService";
        QVERIFY(m_manager.install(definition).ok());
    }
    [[nodiscard]] bool waitFor(ServiceState state)
    {
        return QTest::qWaitFor([&] { return m_manager.state(kName) == state; }, kPatienceMs);
    }

    const QString kName = "Halvex Web";
    QTemporaryDir m_folder;
    WindowsServiceManager m_manager;
};

QTEST_GUILESS_MAIN(TestWindowsWeb)

#include "tst_windows_web.moc"
