#!/usr/bin/env bash
# Kills the example with the durable queue and starts it again: every order is in its log, once and in order.
#
# Usage: check_durable.sh <program> <document>

set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$2" "$work"
cd "$work"

for _ in 1 2; do
  status=0
  bash -c '"$0" die' "$1" || status=$?
  [ "$status" = 137 ] || { echo "the program ends with $status"; exit 1; }
  "$1"
done >/dev/null 2>&1
{
  for _ in 1 2; do
    for number in 1 2 3 4 5; do echo "INFO orders till 7 - order $number"; done
    echo 'INFO orders  - started'
  done
} | diff -u - orders.log
[ -z "$(ls queue)" ] || { ls queue; exit 1; }
