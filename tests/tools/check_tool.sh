#!/usr/bin/env bash
# Runs log4vrk-check as people and machines do: exit statuses, both formats, what goes where, and what is around a
# document.
#
# Usage: check_tool.sh <log4vrk-check> <directory of the tests' libraries>

set -euo pipefail
tool=$1 libraries=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/run"
cd "$work/run"
unset LOG4VRK_INTERNAL_LOG
failed=0

# expect <status> <what standard output matches, a line each> <arguments of the tool>...
expect() {
  local status=0 wanted=$1 patterns=$2 pattern
  shift 2
  "$tool" "$@" >out 2>err || status=$?
  [ "$status" = "$wanted" ] || complain "log4vrk-check $*: $status, not $wanted"
  while IFS= read -r pattern; do
    [ -z "$pattern" ] || grep -qE -- "$pattern" out || complain "log4vrk-check $*: no line is $pattern"
  done <<<"$patterns"
}
complain() {
  echo "$1"
  cat out err
  failed=1
}

# document <name> <content>
document() { printf '<log4j:configuration>\n%s\n</log4j:configuration>\n' "$2" >"$1"; }
readonly FILE='<appender name="a" class="FileAppender"><param name="File" value="FILE"/>'
readonly APPENDER=$FILE'<layout class="LAYOUT"/></appender>'
readonly ROOT='<root><appender-ref ref="a"/></root>'
appender() { local text=${APPENDER/FILE/$1}; printf '%s' "${text/LAYOUT/${2-SimpleLayout}}"; }

document good.xml "$(appender "$work/run/a.log")$ROOT"
document warning.xml "$(appender "$work/run/a.log" NoLayout)$ROOT"
document error.xml "<root><appender-ref ref=\"b\"/></root>$(appender "$work/run/a.log")"
printf '<a>\n<b></a>' >broken.xml

expect 0 '^1 document: 0 errors, 0 warnings, 0 notes$' good.xml
[ "$(wc -l <out)" = 1 ] || { echo "a good document gets more than the summary:"; cat out; failed=1; }
expect 0 '^warning\.xml:2:[0-9]+: warning: appender \[a\]: class="NoLayout": .* \[layout-class-unknown\]$' warning.xml
expect 1 '1 warning' --strict warning.xml
expect 1 '^error\.xml:2:7: error: root: ref="b": .* \(did you mean "a"\?\) \[appender-missing\]$
^2 documents: 1 error' good.xml error.xml
expect 1 '^broken\.xml:2:[0-9]+: error: .* \[unreadable\]$' broken.xml
expect 2 'missing\.xml: error: .*No such file' missing.xml
expect 2 '' --no-such-option good.xml
expect 2 '' --explain a NOLEVEL good.xml
expect 2 ''
expect 0 '^usage: log4vrk-check' --help
sed "s|<log4j:configuration>|<log4j:configuration substitute='true'>|; s|$work|\${DIRECTORY}|" good.xml >variable.xml
expect 1 'value="\$\{DIRECTORY\}/run/a\.log": \$\{DIRECTORY\} is not set and has no default;' variable.xml
DIRECTORY=$work expect 0 "File=\"$work/run/a.log\"" --dump variable.xml
expect 0 "File=\"$work/run/a.log\"" --set "DIRECTORY=$work" --dump variable.xml
expect 2 '' --set DIRECTORY variable.xml
if (exec >/dev/full) 2>/dev/null; then
  "$tool" good.xml >/dev/full && { echo "a full disk is not noticed"; failed=1; }
fi

expect 1 '"line": 2, "column": 7, "severity": "error", "name": "appender-missing", "where": "root",' \
  --format json error.xml
if command -v python3 >/dev/null; then
  python3 -c 'import json, sys; assert [f["name"] for f in json.load(sys.stdin)].count("appender-missing") == 1' <out
fi

expect 0 '^x\.y at INFO$
^  level DEBUG, from root, as it is at first$
^  a, of root \(line 2\): FileAppender Append="true" File=.*
^    written, by SimpleLayout$
^root: level DEBUG, appenders a$
^  layout SimpleLayout$
^a: a sample message$' --explain x.y INFO --dump --sample good.xml
document levels.xml "$(appender "$work/run/a.log")<root><level value=\"WARN\"/><appender-ref ref=\"a\"/></root>"
expect 0 '^  level WARN, from root \(line 2\)$
^  dropped: below the level$' --explain x INFO levels.xml

document lines.xml "$(appender "$work/run/a.log")<root><level value=\"a&#10;b\"/><appender-ref ref=\"a\"/></root>"
expect 0 'value="a b": there is no such level; it is DEBUG \[level-unknown\]$' lines.xml
expect 0 '"text": "value=\\"a\\u000ab\\""' --format json lines.xml
document no-directory.xml "$(appender "$work/none/a.log")$ROOT"
expect 1 '\[directory-missing\]$' no-directory.xml
expect 0 '0 errors' --no-env no-directory.xml
document library.xml "$(appender "$work/run/a.log")$ROOT<renderer renderedClass=\"X\" renderingClass=\"EchoRenderer\"/>"
expect 1 'libEchoRenderer\.so: the library is not found.* \[renderer-library\]$' library.xml
LD_LIBRARY_PATH=$libraries expect 0 '0 errors' library.xml
document function.xml "$(appender "$work/run/a.log")$ROOT<renderer renderedClass=\"X\" renderingClass=\"NoFunction\"/>"
LD_LIBRARY_PATH=$libraries expect 1 'it has no getRenderer\(\)' function.xml
document factory.xml "$(appender "$work/run/a.log")$ROOT<categoryFactory class=\"x.CountingFactory\"/>
<logger name=\"l\" class=\"Own\"/>"
LD_LIBRARY_PATH=$libraries expect 0 '0 errors, 0 warnings' factory.xml
document host.xml '<appender name="a" class="TCPSocketAppender"><param name="RemoteHost" value="127.0.0.1"/>
<param name="Port" value="1"/></appender>'"$ROOT"
expect 0 '0 errors, 0 warnings' host.xml
expect 0 '127\.0\.0\.1:1: the log server does not answer: Connection refused \[server-silent\]$' --connect host.xml
document no-host.xml "$(sed 's/127.0.0.1/no..host/' host.xml | sed '1d;$d')"
expect 1 'error: appender \[a\]: no\.\.host: .* \[host-unknown\]$' no-host.xml
touch ../logs
expect 1 '\[recovery-not-writable\]$' host.xml
LOG4VRK_INTERNAL_LOG=$work/run/a.log expect 0 '\[file-is-internal-log\]$' good.xml
rm -f a.log
mkdir ../configuration && echo "0 $work/run/a.log" >../configuration/logdebug.ini
expect 0 'note: .* \[internal-log-on\]$
\[file-is-internal-log\]$' good.xml
[ ! -e a.log ] || { echo "a check made the file of an appender"; failed=1; }
exit "$failed"
