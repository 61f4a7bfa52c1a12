// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/alerts.h"
#include "client/conversation.h"
#include "client/greeting.h"
#include "client/history.h"
#include "client/inventory.h"
#include "client/line_reader.h"
#include "client/scans.h"
#include "console/render/bars.h"
#include "console/render/chart.h"
#include "console/render/text.h"
#include "console/render/watch_screen.h"
#include "console/scan_progress.h"
#include "fuzz/fuzz_input.h"

namespace {

constexpr int kColumns = 80;
constexpr int kRows = 24;

QVector<QByteArray> linesOf(const QByteArray &bytes, int cut)
{
    client::LineReader reader;
    QVector<QByteArray> lines;
    for (const QByteArray &part : {bytes.left(cut), bytes.mid(cut)}) {
        reader.append(part);
        while (const auto line = reader.takeLine())
            lines.append(*line);
    }
    return lines;
}

/// Checks that a parsed reply can be printed within the screen.
void show(const QString &reply)
{
    render::WatchState state;
    state.drives = client::parseAllDrives(reply).value_or(QVector<client::Drive>());
    state.scans = client::parseScanStatus(reply).value_or(QVector<client::ScanStatus>());
    for (const client::Drive &drive : state.drives)
        state.temperatures.append({0, drive.temperature.value_or(0)});
    for (const QString &line : render::watchScreen(state, kRows, 0, {false, true, kColumns}))
        require(render::columns(line) <= kColumns);
    for (const client::ScanStatus &scan : state.scans) {
        require(render::surfaceMap(scan, 1000, kColumns, {}).size() == kColumns);
        (void)secondsLeft(scan, 1000, 1e-9);
    }
    if (const auto history = client::parseHistory(reply))
        (void)render::temperatureChart(history->records, kColumns, kRows);
}

} // namespace

/// Lists the documents of the alarms, whatever their members are.
void listAlerts(const QString &reply)
{
    const auto list = [](const client::Columns<QJsonObject> &columns, const QVector<QJsonObject> &rows) {
        for (const QJsonObject &row : rows) {
            for (const auto &column : columns)
                (void)column.cellOfRow(row);
        }
    };
    if (const auto alerts = client::requests::alerts().parse(reply)) {
        list(client::findingColumns(), alerts->findings);
        list(client::channelColumns(), alerts->channels);
    }
    list(client::alertTestColumns(),
         client::requests::testAlerts().parse(reply).value_or(QVector<QJsonObject>()));
    (void)client::requests::acknowledge({}, {}, {}).parse(reply);
    (void)client::requests::forget({}).parse(reply);
}

/// Input: a line in pieces, and the bytes as the text of a reply. No parser may fail.
void fuzz(const QByteArray &bytes)
{
    const QVector<QByteArray> lines = linesOf(bytes, 0);
    require(linesOf(bytes, bytes.size() / 2) == lines);
    for (const QByteArray &line : lines)
        (void)client::plainText(line);

    const QString reply = QString::fromUtf8(bytes);
    (void)client::refusal(reply);
    (void)client::parseGreeting(reply);
    (void)client::parseDrive(reply, 0);
    (void)client::parseAllVolumes(reply);
    (void)client::parseAttributes(reply, 0);
    (void)client::parseAllAttributes(reply);
    (void)client::parseSchedule(reply);
    (void)client::parseUser(reply, 0);
    (void)client::parseRights(reply);
    (void)client::parseVersion(reply);
    (void)client::parseIntervals(reply);
    (void)client::parseMailOutcome(reply);
    (void)client::parseServiceTime(reply);
    listAlerts(reply);
    show(reply);
}
