// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/drive_requests.h"
#include "platform/linux/sg_io.h"
#include "rows.h"

#include <scsi/sg.h>

#include <algorithm>
#include <cstdarg>

namespace {

/// The kernel's answer to one SG_IO call.
struct Adapter
{
    unsigned short hostStatus = 0;
    const char *sense = ""; ///< hex; unless empty, the target's status is CHECK CONDITION
    int residue = 0;
    char fill = '\x5A'; ///< the data; 0: the buffer is not written
};

Adapter longAnswer;
Adapter shortAnswer;
QVector<int> commandSizes;

constexpr Adapter kGood{};
constexpr unsigned short kHostError = 0x07; // DID_ERROR
constexpr unsigned short kHostTimeOut = 0x03;
constexpr char kUnknownCommand[] = "700005000000000a00000000200000000000";

} // namespace

Q_DECLARE_METATYPE(Adapter)

/// Replaces the C library's function in this program.
extern "C" int ioctl(int, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    auto *const header = va_arg(arguments, sg_io_hdr *);
    va_end(arguments);
    if (request != SG_IO)
        return -1;
    commandSizes.append(header->cmd_len);
    const Adapter &adapter = header->cmd_len == 16 ? longAnswer : shortAnswer;
    const QByteArray sense = QByteArray::fromHex(adapter.sense);
    header->host_status = adapter.hostStatus;
    header->status = sense.isEmpty() ? 0 : 0x02;
    header->sb_len_wr = quint8(sense.size());
    std::copy(sense.cbegin(), sense.cend(), header->sbp);
    header->resid = adapter.residue;
    if (adapter.fill != 0)
        std::fill_n(static_cast<char *>(header->dxferp), header->dxfer_len, adapter.fill);
    return 0;
}

class TestSgIo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readData_data()
    {
        using namespace system_error;
        QTest::addColumn<Adapter>("first");
        QTest::addColumn<Adapter>("second");
        QTest::addColumn<quint32>("error");
        QTest::addColumn<int>("bytesReturned");
        QTest::addColumn<int>("commands");
        const int all = 44 + 512;
        row("no error", kGood, kGood, kNone, all, 1);
        row("recovered error with registers → success",
            Adapter{0, "7201001d0000000e090c000000000000000000000050"}, kGood, kNone, all, 1);
        row("abort with the error bit → registers only",
            Adapter{0, "720b00000000000e090c000400000000004f00c24051"}, kGood, kNone, 44, 1);
        row("hardware error with status 70 → failure",
            Adapter{0, "720400000000000e090c000000000000000000004070"}, kGood, kIoDevice, 0, 1);
        row("device fault without a key → failure",
            Adapter{0, "720000000000000e090c000000000000000000004070"}, kGood, kIoDevice, 0, 1);
        row("aborted command with status 50 → failure",
            Adapter{0, "720b00000000000e090c000000000000000000004050"}, kGood, kIoDevice, 0, 1);
        row("check condition without sense data → no data", Adapter{0, "00"}, kGood, kNone, 44, 1);
        row("whole residue, data present → success", Adapter{0, "", 512}, kGood, kNone, all, 1);
        row("negative residue → success", Adapter{0, "", -8}, kGood, kNone, all, 1);
        row("whole residue, nothing read → short", Adapter{0, "", 512, '\0'}, kGood, kNone, 44, 1);
        row("unknown 16-byte command → 12-byte command", Adapter{0, kUnknownCommand}, kGood, kNone, all, 2);
        row("host error → 12-byte command", Adapter{kHostError}, kGood, kNone, all, 2);
        row("host error twice → failure", Adapter{kHostError}, Adapter{kHostError}, kIoDevice, 0, 2);
        row("host error, then nothing read → short", Adapter{kHostError}, Adapter{0, "", 512, '\0'}, kNone,
            44, 2);
        row("both commands unknown → not supported", Adapter{0, kUnknownCommand}, Adapter{0, kUnknownCommand},
            kNotSupported, 0, 2);
        row("time-out → no second command", Adapter{kHostTimeOut}, kGood, kSemTimeout, 0, 1);
    }

    void readData()
    {
        QFETCH(Adapter, first);
        QFETCH(Adapter, second);
        QFETCH(int, bytesReturned);
        const ControlReply reply = send(first, second, "d001014fc2a0b000", 512);
        QTEST(reply.error, "error");
        QCOMPARE(int(reply.bytesReturned), bytesReturned);
        QTEST(int(commandSizes.size()), "commands");
        if (bytesReturned == 44 + 512)
            QCOMPARE(m_buffer.mid(44), QByteArray(512, '\x5A'));
    }

    /// CHECK POWER MODE: the returned sector count is the answer.
    void powerMode_data()
    {
        QTest::addColumn<Adapter>("adapter");
        QTest::addColumn<quint32>("error");
        QTest::addColumn<int>("sectorCount");
        row("sector count 0 → standby", Adapter{0, "7201001d0000000e090c000000000000000000000050"}, 0U, 0x00);
        row("sector count 255 → active", Adapter{0, "7201001d0000000e090c000000ff00000000000000 50"}, 0U,
            0xFF);
        row("active, fixed format", Adapter{0, "700001005000ff0a00000000001d00000000"}, 0U, 0xFF);
        row("no registers returned → not supported", kGood, system_error::kNotSupported, -1);
    }

    void powerMode()
    {
        QFETCH(Adapter, adapter);
        adapter.fill = 0;
        const ControlReply reply = send(adapter, kGood, "000000000000e500", 0);
        QTEST(reply.error, "error");
        QTEST(reply.ok() ? int(ByteView(m_buffer).u8(33)) : -1, "sectorCount");
    }

private:
    /// Exchanges an ATA command in one buffer, with the mark that callers set.
    ControlReply send(const Adapter &first, const Adapter &second, const char *registers, int length)
    {
        longAnswer = first;
        shortAnswer = second;
        commandSizes.clear();
        m_buffer = QByteArray::fromHex("28000200000000000002000000000000000000002c000000") +
                   QByteArray(8, '\0') + QByteArray::fromHex(registers) + QByteArray(4 + length, '\0');
        const MutableBytes buffer(m_buffer);
        buffer.setLe32(8, quint32(length));
        if (length > 0)
            buffer.setU8(44, 0xCF);
        return sg_io::ataPassThrough(-1, "/dev/sda", buffer.view(), buffer);
    }

    QByteArray m_buffer;
};

QTEST_APPLESS_MAIN(TestSgIo)
#include "tst_sg_io.moc"
