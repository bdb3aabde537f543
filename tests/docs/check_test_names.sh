#!/usr/bin/env bash
# Checks that the tests which documents name exist: each `Suite.Test`, each suite that a cell of a table names alone or
# after a semicolon, and each soak of a `./dev soak name`.
#
# Usage: check_test_names.sh <root of the tree>

set -euo pipefail
export LC_ALL=C
cd "$1"

readonly DOCUMENTS=(docs/reliability.md docs/log-server.md docs/durable-queue.md docs/time-rolling.md
  docs/many-machines.md)
readonly HELD_BY='[A-Z][A-Za-z0-9]*'
failed=0
checked=0

# "Suite.Test" of every test of the sources; a long name may be on the next line.
tests=$(find tests soak -name '*.cpp' -exec cat {} + | tr '\n' ' ' |
  grep -oE "\bTEST(_F|_P)?\( *$HELD_BY, *[A-Za-z0-9]+ *\)" |
  sed -E 's/^TEST(_F|_P)?\( *([A-Za-z0-9]+), *([A-Za-z0-9]+) *\)/\2.\3/')

# expect <document> <what> <pattern, a whole line of $tests>
expect() {
  checked=$((checked + 1))
  grep -qE "^$3\$" <<<"$tests" && return
  echo "$1: there is no $2"
  failed=1
}

for document in "${DOCUMENTS[@]}"; do
  for name in $(grep -oE "\`$HELD_BY\.$HELD_BY\`" "$document" | tr -d '\`' | sort -u); do
    expect "$document" "test $name" "${name/./\\.}"
  done
  # Suites are in the last column, so that classes may be named elsewhere.
  for suite in $(grep -E '^\|.*\|$' "$document" | sed -E 's/^.*\|([^|]*)\|$/\1/' | grep -oE "(^|;) *\`$HELD_BY\`" |
    grep -oE "$HELD_BY" | sort -u); do
    expect "$document" "suite $suite" "$suite\\..*"
  done
  for soak in $(grep -oE '`\./dev soak [a-z ]+`' "$document" | tr -d '\`' | cut -d ' ' -f 3- | sort -u); do
    expect "$document" "soak $soak" "Soak\\.$soak"
  done
done

echo "names checked: $checked"
[ "$checked" -gt 0 ] || failed=1
exit "$failed"
