# shellcheck shell=bash
# Functions of the package tests that check and report. To be sourced by bash.

checks=0 failures=0

check() { # check WHAT COMMAND...: what holds when the command succeeds
    local what=$1 output
    shift
    ((++checks))
    if output=$("$@" 2>&1); then
        printf 'ok: %s\n' "$what"
    else
        ((++failures))
        printf 'FAILED: %s\n%s\n' "$what" "$output"
    fi
}

prints() { # prints PATTERN COMMAND...: whether a line that the command prints matches
    local pattern=$1 output
    shift
    output=$("$@" 2>&1)
    grep -E -- "$pattern" <<<"$output" || { printf '%s\n' "$output"; false; }
}

sum_up() {
    printf '%d checks, %d failed\n' "$checks" "$failures"
    ((failures == 0))
}
