// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "files.h"
#include "monitor/alert_mail.h"
#include "monitor/smtp_sender.h"
#include "rows.h"

#include <QFile>
#include <QSettings>
#include <QSslCertificate>

#include <qt_windows.h>
#include <wincrypt.h>

namespace {

QString inFolder(const QString &name)
{
    return qEnvironmentVariable("HALVEX_MAIL_SERVERS") + '/' + name;
}

QByteArray contents(const QString &name)
{
    return contentOf(inFolder(name));
}

QList<QSslCertificate> certificateOf(const QString &name)
{
    return name.isEmpty() ? QList<QSslCertificate>() : QSslCertificate::fromPath(inFolder(name));
}

constexpr int kPatienceMs = 60000;

/// Adds a certificate to the machine's trusted root authorities, until the end.
class TrustedRoot
{
public:
    explicit TrustedRoot(const QSslCertificate &certificate)
    {
        const QByteArray der = certificate.toDer();
        CertAddEncodedCertificateToStore(m_store, X509_ASN_ENCODING,
                                         reinterpret_cast<const BYTE *>(der.constData()), DWORD(der.size()),
                                         CERT_STORE_ADD_REPLACE_EXISTING, &m_context);
        commit();
    }
    ~TrustedRoot()
    {
        if (m_context)
            CertDeleteCertificateFromStore(m_context);
        commit();
        CertCloseStore(m_store, 0);
    }
    Q_DISABLE_COPY(TrustedRoot)

    [[nodiscard]] bool isAdded() const { return m_context; }

private:
    /// Without it Wine stores changes when the store is closed.
    void commit() { CertControlStore(m_store, 0, CERT_STORE_CTRL_COMMIT, nullptr); }

    HCERTSTORE m_store =
        CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE, L"ROOT");
    PCCERT_CONTEXT m_context = nullptr;
};

} // namespace

/// Encrypted mail by the TLS library of Windows, to servers whose authority the machine trusts or not.
class TestWindowsMail : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void security_data()
    {
        QTest::addColumn<QString>("server");
        QTest::addColumn<bool>("isTlsFromStart");
        QTest::addColumn<QString>("authority"); // the one that the program accepts; empty: the machine's
        QTest::addColumn<QString>("error");     // empty: the mail arrives
        row("STARTTLS", "starttls", false, "", "");
        row("TLS from the start", "tls", true, "", "");
        row("STARTTLS, by the named authority", "starttls", false, "known.pem", "");
        row("authority that the machine trusts and the program does not", "tls", true, "unknown.pem",
            "issuer");
        row("expired certificate", "expired", false, "", "expired");
        row("expired certificate from the start", "expired-tls", true, "", "expired");
        row("certificate of another host", "other-host", false, "", "host name");
        row("unknown authority", "unknown-authority", false, "", "issuer");
    }

    void security()
    {
        QFETCH(QString, server);
        QFETCH(bool, isTlsFromStart);
        QFETCH(QString, authority);
        QFETCH(QString, error);
        const TrustedRoot root(certificateOf("known.pem").value(0));
        QVERIFY(root.isAdded());
        const QByteArray before = contents(server + ".received");
        smtp_sender sender(
            {isTlsFromStart ? SmtpSecurity::Tls : SmtpSecurity::StartTls, certificateOf(authority)});
        QString result;
        connect(&sender, &smtp_sender::smtpSenderOk, [&result] { result = "sent"; });
        connect(&sender, &smtp_sender::smtpSenderError,
                [&result](const MailRun &run) { result = run.error; });
        const QSettings servers(inFolder("servers.ini"), QSettings::IniFormat);
        sender.start(testMail({quint16(servers.value(server).toUInt()), true, "a@example.org",
                               "b@example.org", "127.0.0.1", "Hello", "user", "secret", "text"}));
        QTRY_VERIFY_WITH_TIMEOUT(!result.isEmpty(), kPatienceMs);

        const QByteArray received = contents(server + ".received").mid(before.size());
        if (error.isEmpty()) {
            QCOMPARE(result, "sent");
            QVERIFY2(received.contains("AUTH LOGIN") && received.contains("Subject: Hello"), received);
        } else {
            QVERIFY2(result.startsWith("TLS: ") && result.contains(error), qPrintable(result));
            QCOMPARE(received, QByteArray());
        }
    }
};

QTEST_GUILESS_MAIN(TestWindowsMail)
#include "tst_windows_mail.moc"
