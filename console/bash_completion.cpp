// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/help.h"

#include "client/settings_table.h"

#include <QMap>

namespace help {

namespace {

/// %1 options that take a value, %2 those that take a file, %3 the first words, %4 a case for each group,
/// %5 the options of all commands, %6 a case for each command with options or words of its own, %7
/// settings that are on or off. bash splits words at "=" and ":", so --host=a:1 arrives as five words, and
/// the last three of them are one value.
const char kTemplate[] = R"(# bash completion for halvexctl
_halvexctl()
{
    local current=${COMP_WORDS[COMP_CWORD]} bare=() awaited='' word
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
            %1) awaited=$word ;;
            = | :) awaited=${awaited:-value} ;;
            -*) awaited='' ;;
            *)
                [[ $awaited ]] || bare+=("$word")
                awaited=''
                ;;
        esac
    done
    [[ $current == = ]] && awaited=${awaited:-value} current=''
    COMPREPLY=()
    case $awaited in
        '') ;;
        value)
            case ${bare[-1]-} in
                %7) mapfile -t COMPREPLY < <(compgen -W 'on off' -- "$current") ;;
            esac
            return
            ;;
        %2)
            compopt -o default
            return
            ;;
        *) return ;;
    esac
    local words='' options='%5'
    case ${#bare[@]},${bare[0]-} in
        0,*) words='%3' ;;
%4    esac
    case "${bare[*]}" in
%6    esac
    [[ $current == -* ]] && words=$options
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    [[ ${COMPREPLY[0]-} == *= ]] && compopt -o nospace
}
complete -F _halvexctl halvexctl)";

const QString kBlank = QStringLiteral(" ");

QStringList names(const QVector<Option> &options)
{
    QStringList words;
    for (const Option &option : options)
        words.append(QStringLiteral("--") + option.name);
    return words;
}

/// Returns a pattern of the options that take a value; with `valueNames`, only of these values.
QString valuedPattern(const QStringList &valueNames = {})
{
    QVector<Option> all = commonOptions();
    for (const Command &command : commands())
        all += command.options;
    QStringList patterns;
    for (const Option &option : all) {
        if (option.valueName.isEmpty() || !(valueNames.isEmpty() || valueNames.contains(option.valueName)))
            continue;
        patterns.append(QStringLiteral("--") + option.name);
        if (!option.letter.isEmpty())
            patterns.append(QStringLiteral("-") + option.letter);
    }
    patterns.removeDuplicates();
    return patterns.join(QStringLiteral(" | "));
}

/// Returns a pattern of the settings that are on or off.
QString switchPattern()
{
    QStringList names;
    for (const client::Setting &setting : client::settingsTable()) {
        if (setting.kind == client::Setting::Kind::Switch)
            names.append(setting.name);
    }
    return names.join(QStringLiteral(" | "));
}

/// Returns the words and options offered after `command`.
QString commandCase(const Command &command)
{
    if (command.options.isEmpty() && command.words.isEmpty())
        return {};
    QString result = QStringLiteral("        '%1'*)\n").arg(command.name);
    if (!command.options.isEmpty())
        result += QStringLiteral("            options+=' %1'\n").arg(names(command.options).join(kBlank));
    if (!command.words.isEmpty())
        result += QStringLiteral("            words='%1'\n").arg(command.words.join(kBlank));
    return result + QStringLiteral("            ;;\n");
}

} // namespace

QString bashCompletion()
{
    QStringList firstWords;
    QMap<QString, QStringList> groups;
    QString commandCases;
    for (const Command &command : commands()) {
        const QString first = command.name.section(QLatin1Char(' '), 0, 0);
        const QString second = command.name.section(QLatin1Char(' '), 1);
        firstWords.append(first);
        if (!second.isEmpty())
            groups[first].append(second);
        commandCases += commandCase(command);
    }
    firstWords.removeDuplicates();
    QString groupCases;
    for (auto group = groups.cbegin(); group != groups.cend(); ++group)
        groupCases +=
            QStringLiteral("        1,%1) words='%2' ;;\n").arg(group.key(), group.value().join(kBlank));
    return QString::fromUtf8(kTemplate).arg(
        valuedPattern(), valuedPattern({QStringLiteral("FILE"), QStringLiteral("NAME")}),
        firstWords.join(kBlank), groupCases, names(commonOptions()).join(kBlank), commandCases,
        switchPattern());
}

} // namespace help
