#!/usr/bin/env bash
# The stores of examples/relay with a real PostgreSQL and a real Redis: while the centre is killed, each has every event
# that the centre's file has, once. Exit status 77 where the servers are missing.
#
# Usage: check_stores.sh <examples/relay> <log4vrk-forward>

set -euo pipefail
example=$1 forward=$2
pg=$(find /usr/lib/postgresql -maxdepth 2 -name bin 2>/dev/null | sort -V | tail -n 1 || true)
: "${pg:=/usr/lib/postgresql/*/bin}"
modules=$(find /usr/lib/*-linux-gnu*/rsyslog -maxdepth 0 2>/dev/null | head -n 1 || true)
for need in "$pg/initdb:postgresql" /usr/bin/redis-server:redis-server "$modules/ompgsql.so:rsyslog-pgsql" \
  "$modules/omhiredis.so:rsyslog-hiredis" "$modules/imrelp.so:rsyslog-relp"; do
  [ -e "${need%:*}" ] || { echo "SKIPPED: ${need%:*} is not installed (Debian package ${need##*:})"; exit 77; }
done

work=$(mktemp -d)
pids=()
finish() {
  local pid
  for pid in "${pids[@]}"; do
    kill -9 "$pid" 2>/dev/null || true
    wait "$pid" 2>/dev/null || true
  done
  rm -rf "$work"
}
trap finish EXIT
# PostgreSQL does not run as root.
user=() && [ "$(id -u)" != 0 ] || user=(setpriv --reuid postgres --regid postgres --clear-groups)
mkdir -m 777 "$work/pg" && chmod 755 "$work"
# Two ports that nobody listens on.
base=$((12000 + $$ % 10000 * 2))
listens() { (exec 3<>"/dev/tcp/127.0.0.1/$1") 2>/dev/null; }
while listens "$base" || listens $((base + 1)); do base=$((base + 2)); done
"${user[@]}" "$pg/initdb" -D "$work/pg/data" -U rsyslog -A trust >/dev/null
"${user[@]}" "$pg/postgres" -D "$work/pg/data" -k "$work/pg" -c listen_addresses= >"$work/pg.log" 2>&1 &
pids+=($!)
redis-server --bind 127.0.0.1 --port "$base" --save '' --dir "$work" >/dev/null &
pids+=($!)
sql() { psql -h "$work/pg" -U rsyslog -Atq "$@"; }
# until <seconds> <command>
until_() {
  local end=$((SECONDS + $1))
  shift
  until "$@" >/dev/null 2>&1; do
    [ "$SECONDS" -lt "$end" ] || { echo "in vain: $*"; exit 1; }
    sleep 0.05
  done
}
until_ 20 sql -d postgres -c 'create database events'
sed -n 's/^#   //p' "$example/stores/postgresql.conf" | sql -d events
until_ 20 redis-cli -p "$base" ping

mkdir -p "$work/example" "$work/centre/stores"
cp -r "$example/." "$work/example"
sed -i 's/^    #call/    call/' "$work/example/centre.conf"
sed "s|@localhost/events|@%2F${work#/}/pg/events|; s|\(//rsyslog@[^/]*\)/\([^\"]*\)/pg/|\1%2F\2%2Fpg/|" \
  "$example/stores/postgresql.conf" >"$work/centre/stores/postgresql.conf"
sed "s/6379/$base/" "$example/stores/redis.conf" >"$work/centre/stores/redis.conf"
start() {
  "$work/example/run.sh" centre "$work/centre" $((base + 1)) 2>>"$work/errors" &
  centre=$!
}

events=600
for i in $(seq $events); do
  printf '<14>1 2026-11-22T12:00:00Z host shop 1 - [log4vrk@32473 stream="5b3ab8f7" sequence="%d"] %s %d\n' \
    "$i" "it's 5 % \"o\\k\"" "$i"
done >"$work/input"
start
"$forward" 127.0.0.1 $((base + 1)) <"$work/input" >/dev/null 2>&1 &
pids+=($!)
lines() { [ "$(wc -l <"$work/centre/events.log")" -ge "$1" ]; }
for part in 1 2 3; do
  until_ 30 lines $((events * part / 4))
  kill -9 "$centre"
  wait "$centre" 2>/dev/null || true
  start
done
pids+=("$centre")
stored() {
  [ "$(sql -d events -c 'select count(*) from events')" = $events ] && [ "$(redis-cli -p "$base" dbsize)" = $events ]
}
until_ 30 stored
[ "$(sql -d events -c 'select message from events where sequence = 17')" = "it's 5 % \"o\\k\" 17" ]
[ "$(redis-cli -p "$base" get event:5b3ab8f7:17)" = "$(grep -m 1 '"sequence":17,' "$work/centre/events.log")" ]
echo "$events events, $(($(wc -l <"$work/centre/events.log") - events)) repeated in the file"
