#!/usr/bin/env bash
# Starts a relay or a centre on this machine, in the foreground. Ctrl-C ends it.
#
#   run.sh centre FOLDER PORT
#   run.sh relay|relay-queue FOLDER PORT HOST-OF-THE-CENTRE PORT-OF-THE-CENTRE
#
# In the environment: ADDRESS to listen on, 127.0.0.1; QUEUE, where relay-queue keeps its queue, FOLDER/queue;
# LOG4VRK_FORWARD, where log4vrk-forward is when it is not in the PATH.
#
# Needs rsyslog and its RELP modules: apt-get install rsyslog rsyslog-relp

set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
role=${1:?centre, relay or relay-queue}
mkdir -p "${2:?folder}/queue" "${QUEUE:-$2/queue}"
folder=$(cd "$2" && pwd)
queue=$(cd "${QUEUE:-$folder/queue}" && pwd)
forward=${LOG4VRK_FORWARD:-$(command -v log4vrk-forward || true)}
[ "$role" = centre ] || [ -x "$forward" ] || { echo "$0: there is no log4vrk-forward" >&2; exit 1; }

sed -e "s|@FOLDER@|$folder|g; s|@ADDRESS@|${ADDRESS:-127.0.0.1}|g; s|@PORT@|${3:?port}|g; s|@HOST@|${4:-}|g" \
  -e "s|@QUEUE@|$queue|g; s|@TO@|${5:-}|g; s|@FORWARD@|$forward|g" "$here/$role.conf" >"$folder/$role.conf"
rm -f "$folder/pid" # of one that was killed
exec rsyslogd -n -f "$folder/$role.conf" -i "$folder/pid"
