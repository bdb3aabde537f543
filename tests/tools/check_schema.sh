#!/usr/bin/env bash
# Holds the schema of the document against the documents of the examples, and against documents that are wrong.
#
# Usage: check_schema.sh <root of the tree>

set -euo pipefail
command -v xmllint >/dev/null || { echo "SKIPPED: there is no xmllint (Debian package libxml2-utils)"; exit 77; }
schema=$1/tools/log4vrk.xsd
failed=0

while IFS= read -r document; do
  xmllint --nonet --noout --schema "$schema" "$document" 2>&1 || failed=1
done < <(find "$1/examples" -name '*.xml' ! -name wrong.xml)
if xmllint --nonet --noout --schema "$schema" "$1/examples/wrong.xml" 2>/dev/null; then
  echo "examples/wrong.xml validates"
  failed=1
fi

good='<appender name="a" class="x.FileAppender"><param name="File" value="a"/><layout class="SimpleLayout"/></appender>'
good+='<root><level value="info"/><appender-ref ref="a"/></root>'
validate() {
  printf '<log4j:configuration xmlns:log4j="urn:log4vrk:configuration">%s</log4j:configuration>' "$1" |
    xmllint --nonet --noout --schema "$schema" - 2>&1
}
validate "$good" || failed=1
validate "${good/info/\$\{LEVEL:-info\}}" || failed=1

# What is replaced in the good one, and by what.
while IFS='|' read -r from to; do
  ! validate "${good/"$from"/$to}" >/dev/null || { echo "the schema lets pass: $to instead of $from"; failed=1; }
done <<'WRONG'
<appender |<apender x="
 name="a"|
FileAppender|LOGFileAppender
FileAppender|fileAppender
"File"|"file"
"File"|"Threshold"
SimpleLayout|LOGSimpleLayout
SimpleLayout|NoLayout
"info"|"inherited"
"info"|"WARNING"
"info"|" INFO"
"info"|""
<level value="info"/>|<layout class="SimpleLayout"/>
ref="a"|reference="a"
<root>|<root additivity="false">
<root>|<filter class="LevelRangeFilter"/><root>
<root>|<logger/><root>
<root>|<logger name="x" additivity="no"/><root>
WRONG
exit "$failed"
