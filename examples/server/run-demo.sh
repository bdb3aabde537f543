#!/usr/bin/env bash
# Runs the example server of a build and shows what it logged.
#
#   run-demo.sh <build folder> [console|time-rolled|queue|json|journal|log-server]
#
# Without a stop of the tour it is the whole of log.xml; the documents of the stops are in tour/.

set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
stop=${2:-}
work=$build/demo${stop:+/$stop}
document=$here/log.xml
[ -z "$stop" ] || document=$here/tour/$stop.xml
[ -f "$document" ] || { echo "there is no such stop: $stop"; exit 2; }

rm -rf "$work"
mkdir -p "$work/run/log"
cd "$work/run" # recovery files are in ../logs

shop() {
  printf '== the server, configured by %s:\n\n' "${document#"$here"/}"
  "$build/examples/server/orders" "$document" "$here/orders.csv"
}
# The end of each of these files.
ends() {
  printf '\n== the files it wrote, in %s/log:\n\n' "$PWD"
  wc -lc log/*
  for file in "$@"; do
    printf '\n== the end of %s:\n\n' "$file"
    case $file in *.gz) zcat "$file" ;; *) cat "$file" ;; esac | tail -n 3
  done
}

case $stop in
  '')
    shop
    ends log/{audit.log,grinders.log,problems.log,problems.xml,problems.html,orders.log.1}
    ;;
  console) LOG_LEVEL=${LOG_LEVEL:-DEBUG} shop ;;
  time-rolled)
    shop
    ends log/orders.log "$(find log -name '*.gz' | sort | head -n 1)"
    ;;
  queue)
    shop
    ends log/orders.log
    ;;
  json)
    shop
    ends log/orders.json
    ;;
  journal)
    LOG4VRK_INTERNAL_LOG=stderr shop 2>internal.log
    if [ -s log/instead-of-the-journal.log ]; then
      printf '== there is no journal here, and the internal log says so:\n\n'
      grep -m 2 -E 'WARN|ERROR' internal.log
      ends log/instead-of-the-journal.log
    else
      printf '== the last entry, with its fields:\n\n'
      journalctl --sync || true # it takes its time
      journalctl -t shop -n 1 -o verbose
    fi
    ;;
  log-server)
    export LOG_SERVER_PORT=${LOG_SERVER_PORT:-2514}
    "$here/../log-server/run-log-server.sh" "$work/server" "$LOG_SERVER_PORT" >server.log 2>&1 &
    server=$!
    trap 'kill "$server" && wait "$server" || true' EXIT
    for _ in {1..100}; do # until it listens
      ! (exec 3<>"/dev/tcp/127.0.0.1/$LOG_SERVER_PORT") 2>/dev/null || break
      kill -0 "$server" || { cat server.log && exit 1; }
      sleep 0.1
    done
    shop
    printf '== the end of what the log server has stored:\n\n'
    wc -l "$work/server/events.log"
    tail -n 3 "$work/server/events.log"
    ;;
esac
