#!/usr/bin/env bash
# Runs the example server of a build and shows what it logged.
#
#   run-demo.sh <build folder>

set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
work=$build/demo

rm -rf "$work"
mkdir -p "$work/log"
cd "$work"

printf '== the server, configured by examples/server/log.xml, on the console:\n\n'
"$build/examples/server/orders" "$here/log.xml" "$here/orders.csv"

printf '\n== the files it wrote, in %s/log:\n\n' "$work"
wc -lc log/*
for file in audit.log grinders.log problems.log problems.xml problems.html orders.log.1; do
  printf '\n== the end of log/%s:\n\n' "$file"
  tail -n 5 "log/$file"
done
