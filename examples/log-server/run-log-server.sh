#!/usr/bin/env bash
# Starts a log server for the TCP socket appender on this machine, in the foreground. Ctrl-C ends it.
#
#   run-log-server.sh [folder, ./log-server] [port, 2514]
#
# Events are lines of events.log in the folder. Needs rsyslog and its RELP input: apt-get install rsyslog rsyslog-relp

set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "${1:-log-server}/work"
folder=$(cd "${1:-log-server}" && pwd)
port=${2:-2514}

sed -e "s|@FOLDER@|$folder|g; s|@PORT@|$port|g" "$here/rsyslog.conf" >"$folder/rsyslog.conf"
rm -f "$folder/pid"
echo "Events of port $port go to $folder/events.log"
exec rsyslogd -n -f "$folder/rsyslog.conf" -i "$folder/pid"
