#!/usr/bin/env bash
# Runs the example programs without their documents: each says so, and why, whether or not the internal log is on.
#
# Usage: check_examples.sh <program>...

set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
touch file

for program in "$@"; do
  arguments=(missing.xml file)
  case $program in */hello | */access) arguments=() ;; */sales | */cinema) arguments=(missing.xml) ;; esac
  for log in '' stderr; do
    status=0
    LOG4VRK_INTERNAL_LOG=$log "$program" "${arguments[@]}" >/dev/null 2>errors || status=$?
    if [ "$status" != 1 ] || ! grep -q '\.xml was not applied$' errors ||
      ! grep -q '^[^:]*\.xml: .*No such file' errors ||
      { [ -n "$log" ] && ! grep -q '^log4vrk:ERROR .*\.xml: .*No such file' errors; }; then
      echo "$program ends with $status without its document, LOG4VRK_INTERNAL_LOG=$log, and says:"
      cat errors
      exit 1
    fi
  done
done
