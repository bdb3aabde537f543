#!/usr/bin/env bash
# Compares what the library exports with the list beside this script, so that a change is seen in review: what is new
# there is a promise to programs, and what is gone breaks those that are linked already.
#
# To renew the list after a change that is meant:
#   nice ninja -C build/release log4vrk
#   tests/structure/check_symbols.sh build/release/log4vrk/tovlog4vrk.so --renew
#
# Usage: check_symbols.sh <library> [--renew]

set -euo pipefail
export LC_ALL=C
list=$(dirname "$0")/exported_symbols.txt

# Constructors and destructors are there more than once. The kind of a symbol is left out: it depends on the optimiser.
exported() { nm --dynamic --defined-only --demangle "$1" | cut -d' ' -f3- | sort -u; }

if [ "${2-}" = --renew ]; then
  exported "$1" >"$list"
else
  exported "$1" | diff -u "$list" - && exit 0
  echo "If that is meant: tests/structure/check_symbols.sh $1 --renew"
  exit 1
fi
