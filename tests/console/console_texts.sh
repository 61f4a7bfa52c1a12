#!/bin/bash
# The manual page and the completion that the build wrote: console_texts.sh MANUAL-PAGE COMPLETION

set -uo pipefail
failures=0

complain() {
    printf 'FAIL: %s\n' "$*"
    failures=$((failures + 1))
}

# A page without a date is meant: it would change with every build.
lint=$(mandoc -T lint -W warning "$1" | grep -v 'missing date')
[[ -z $lint ]] || complain "the manual page: $lint"
# Text that a user copies from the page must be unchanged: no typographic dashes and quotes.
page=$(mandoc -T utf8 -O width=200 "$1" | sed 's/.\x08//g')
for typed in "--hosts-file FILE" "'once 2026-11-15 03:30'" 'source <(halvexctl completion)' '\u{...}'; do
    [[ $page == *"$typed"* ]] || complain "the manual page does not show $typed"
done

source "$2"
compopt() { how=$*; } # the builtin works only while a line is being completed

# offers OFFERED HOW WORD...: checks what is offered for the last of these words, and the arguments of compopt.
offers() {
    local offered=$1 expected_how=$2 how=''
    shift 2
    COMP_WORDS=(halvexctl "$@")
    COMP_CWORD=$#
    _halvexctl
    [[ "${COMPREPLY[*]}" == "$offered" && $how == "$expected_how" ]] ||
        complain "'$*' is offered '${COMPREPLY[*]}' ($how), not '$offered' ($expected_how)"
}

offers 'status smart scan schedule settings' '' s
offers '--json' '' status --j
offers 'status start stop' '' scan s
offers '--follow' '' scan status --f
offers '--check' '' -q status --ch
offers 'status' '' -p 5000 stat
offers 'status' '' --host = somewhere : 5000 stat
offers 'show set' '' schedule s
offers '' '' smart s
offers 'wTemp= warnExtTask=' '-o nospace' settings set w
offers 'smtpPort= smtpPass=' '-o nospace' mail-test smtpP
offers '' '' mail-test por
offers 'daily' '' schedule set 1 d
offers 'on off' '' settings set emailNotify =
offers 'off' '' settings set emailNotify = of
offers '' '' settings set wTemp = ''
offers '' '' --timeout ''
offers '' '-o default' hosts --hosts-file ''

((failures == 0))
