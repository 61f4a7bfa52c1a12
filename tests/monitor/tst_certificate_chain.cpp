// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/certificate_chain.h"
#include "rows.h"

namespace {

const char kMailAuthority[] = "-----BEGIN CERTIFICATE-----\n"
                              "MIIBrDCCAVOgAwIBAgIUc3/OPJxFa1IQ6haYiT6njsyVCc8wCgYIKoZIzj0EAwIw\n"
                              "KzEQMA4GA1UECgwHRXhhbXBsZTEXMBUGA1UEAwwOTWFpbCBBdXRob3JpdHkwIBcN\n"
                              "MjYxMTIzMjMyNzIxWhgPMjEyNjEwMzAyMzI3MjFaMCsxEDAOBgNVBAoMB0V4YW1w\n"
                              "bGUxFzAVBgNVBAMMDk1haWwgQXV0aG9yaXR5MFkwEwYHKoZIzj0CAQYIKoZIzj0D\n"
                              "AQcDQgAEdAR3v6Jsy3tlBuQQMGqddtJI7CKBP4fE6DAuqqEICvA6WPIYy76YadQX\n"
                              "et5owtsaS5Ou2sLAgGlXRmYSDXcHnaNTMFEwHQYDVR0OBBYEFCz+NeH6aK5EILpn\n"
                              "VOl0ljdJnlKrMB8GA1UdIwQYMBaAFCz+NeH6aK5EILpnVOl0ljdJnlKrMA8GA1Ud\n"
                              "EwEB/wQFMAMBAf8wCgYIKoZIzj0EAwIDRwAwRAIgEx9S93lDcG71c7i8uIY1qYbT\n"
                              "JJW2DXnrPfN/MGl2NRgCIFEkKMqYkoq8KXqvmCrBEFlaocMZVTtHVDtv2PtBoKJ8\n"
                              "-----END CERTIFICATE-----\n";

/// Issued by the mail authority.
const char kServer[] = "-----BEGIN CERTIFICATE-----\n"
                       "MIIBQzCB6QIUcArcbDrhxTrF89Bo4fQrkUnIdzIwCgYIKoZIzj0EAwIwKzEQMA4G\n"
                       "A1UECgwHRXhhbXBsZTEXMBUGA1UEAwwOTWFpbCBBdXRob3JpdHkwIBcNMjYxMTIz\n"
                       "MjMyNzIxWhgPMjEyNjEwMzAyMzI3MjFaMBsxGTAXBgNVBAMMEG1haWwuZXhhbXBs\n"
                       "ZS5vcmcwWTATBgcqhkjOPQIBBggqhkjOPQMBBwNCAATSsHc1M+I8AP0kyJKNgIni\n"
                       "6G69uetx6+qRqgSdZv8KhVddad5+hSogsUIV2tKDIxIB6JBk9tXUSUvoMSn8GjkI\n"
                       "MAoGCCqGSM49BAMCA0kAMEYCIQC3dseSSDORzAt63VAf5K4aVbPDTm+2NiOhD+WB\n"
                       "lh3NWgIhAJsbkLHLYrYqJDfJ5F71e23CBQgRl25ZeEe4oLwcEF7z\n"
                       "-----END CERTIFICATE-----\n";

const char kOtherAuthority[] = "-----BEGIN CERTIFICATE-----\n"
                               "MIIBrzCCAVWgAwIBAgIUYzc91wTVOEC0xlsA/87L+u+qB84wCgYIKoZIzj0EAwIw\n"
                               "LDEQMA4GA1UECgwHRXhhbXBsZTEYMBYGA1UEAwwPT3RoZXIgQXV0aG9yaXR5MCAX\n"
                               "DTI2MTEyMzIzMjcyMVoYDzIxMjYxMDMwMjMyNzIxWjAsMRAwDgYDVQQKDAdFeGFt\n"
                               "cGxlMRgwFgYDVQQDDA9PdGhlciBBdXRob3JpdHkwWTATBgcqhkjOPQIBBggqhkjO\n"
                               "PQMBBwNCAAQGPeS4dGZ8ndGHgWHyfp6HEs7Aq5RO1fHw4T2zfsHq9TX8osWKSzGJ\n"
                               "WTvEAKVxAa+2rtspmkSo93YdCAEFmFD0o1MwUTAdBgNVHQ4EFgQUL7PraDgpkwLi\n"
                               "nPBDtf2HZbKaAR0wHwYDVR0jBBgwFoAUL7PraDgpkwLinPBDtf2HZbKaAR0wDwYD\n"
                               "VR0TAQH/BAUwAwEB/zAKBggqhkjOPQQDAgNIADBFAiAEbUxgc8p2EBC8GPjLRc8p\n"
                               "sIFhj2GC2PHcTZFiHW0jxQIhAPaqwd1oiBheHEbbhO0SN/A97DnU3jprgI6//FXS\n"
                               "p7dz\n"
                               "-----END CERTIFICATE-----\n";

using Certificates = QList<QSslCertificate>;

Certificates certificates(std::initializer_list<const char *> texts)
{
    Certificates result;
    for (const char *text : texts)
        result << QSslCertificate(QByteArray(text));
    return result;
}

} // namespace

class TestCertificateChain : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void issuedByOneOf_data()
    {
        QTest::addColumn<Certificates>("authorities");
        QTest::addColumn<Certificates>("chain");
        QTest::addColumn<bool>("isIssued");
        row("server alone, whose issuer is accepted", certificates({kMailAuthority}), certificates({kServer}),
            true);
        row("whole chain of another authority", certificates({kOtherAuthority}),
            certificates({kServer, kMailAuthority}), false);
        row("one of two authorities", certificates({kOtherAuthority, kMailAuthority}),
            certificates({kServer}), true);
        row("the certificate itself is accepted", certificates({kServer}), certificates({kServer}), true);
        row("empty chain", certificates({kMailAuthority}), Certificates(), false);
    }

    void issuedByOneOf()
    {
        QFETCH(Certificates, authorities);
        QFETCH(Certificates, chain);
        QTEST(isIssuedByOneOf(authorities, chain), "isIssued");
    }
};

QTEST_APPLESS_MAIN(TestCertificateChain)
#include "tst_certificate_chain.moc"
