#!/usr/bin/env bash
# Runs the stops of the example server's tour and looks at what each shows.
#
# Usage: check_tour.sh <root of the tree> <build folder with the examples>

set -euo pipefail
tour=$1/examples/server/run-demo.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
ln -s "$(readlink -f "$2/examples")" "$work/examples"
# A port that nobody listens on.
LOG_SERVER_PORT=$((20000 + $$ % 10000))
while (exec 3<>"/dev/tcp/127.0.0.1/$LOG_SERVER_PORT") 2>/dev/null; do LOG_SERVER_PORT=$((LOG_SERVER_PORT + 1)); done
export LOG_SERVER_PORT
failed=0

# Stop, and what it shows at least.
while IFS='|' read -r stop shown; do
  if [ "$stop" = log-server ] && ! command -v rsyslogd >/dev/null; then continue; fi
  if ! "$tour" "$work" "$stop" >"$work/shown" 2>&1 || ! grep -qE "$shown" "$work/shown"; then
    echo "the tour's stop ${stop:-without a name} does not show $shown:"
    cat "$work/shown"
    failed=1
  fi
done <<'STOPS'
|^[0-9-]+ [0-9:,]+ DEBUG \[[^]]+\] .* orders\.(worker|intake) - 
console|^[0-9:,]+ WARN  stock - only [0-9]+ x [a-z]+ left
time-rolled|^== the end of log/orders\.log\.[0-9T-]+\.1\.gz
queue|^[0-9-]+ [0-9:,]+ INFO  \[[^]]+\] shop - closing the shop$
json|^\{"@timestamp":.*"message":"closing the shop"
journal|closing the shop
log-server| info shop [0-9a-f]+/[0-9]+ -closing the shop
STOPS
! "$tour" "$work" no-such-stop >/dev/null 2>&1 || failed=1
exit "$failed"
