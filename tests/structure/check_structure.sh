#!/usr/bin/env bash
# Checks what no compiler looks at: that includes follow the arrows between the folders, that the list of installed
# headers is whole, and that no line of code is longer than 120 characters.
#
# Usage: check_structure.sh <root of the tree>

set -euo pipefail
export LC_ALL=C.UTF-8
cd "$1"
failed=0

complain() {
  printf '%s\n' "$*"
  failed=1
}

# Which folders a folder may include, besides itself.
declare -rA BELOW=(
  [platform]=''
  [core]='platform'
  [layouts]='platform core'
  [appenders]='platform core'
  [net]='platform core layouts appenders'
  [config]='platform core layouts appenders net'
  [testing]='platform core'
)

while IFS=: read -r file line include; do
  from=${file#log4vrk/} from=${from%%/*}
  to=${include#*\"log4vrk/} to=${to%%/*}
  [ "$from" = "$to" ] || [[ " ${BELOW[$from]} " = *" $to "* ]] ||
    complain "$file:$line: $from must not include $to"
done < <(grep -rn --include='*.h' --include='*.cpp' '^#include "log4vrk/' log4vrk/*/)

# Every public header is listed and is in log4vrk.h; what a listed header includes is listed.
listed=$(sed -n 's/^  \([a-zA-Z]*[a-zA-Z_0-9/]*\.h\)$/\1/p' log4vrk/Headers.cmake | sort)
for header in $(cd log4vrk && find . -name '*.h' -not -path '*/internal/*' -printf '%P\n'); do
  grep -qxF "$header" <<<"$listed" || complain "log4vrk/$header is not in log4vrk/Headers.cmake"
  # log.h and format.h are for files that want only a part, or more; what is for tests is not for programs.
  case $header in log4vrk.h | log.h | format.h | testing/*) continue ;; esac
  grep -qxF "#include \"log4vrk/$header\"" log4vrk/log4vrk.h || complain "log4vrk.h does not include log4vrk/$header"
done
for header in $listed; do
  [ -f "log4vrk/$header" ] || { complain "log4vrk/Headers.cmake lists log4vrk/$header, which is not there"; continue; }
  while read -r include; do
    grep -qxF "$include" <<<"$listed" || complain "log4vrk/$header is installed, log4vrk/$include is not"
  done < <(sed -n 's/^#include "log4vrk\/\(.*\)"$/\1/p' "log4vrk/$header")
done

while IFS= read -r place; do
  complain "$place: longer than 120 characters"
done < <(find log4vrk tests examples benchmarks fuzz tools cmake -type f \
  \( -name '*.h' -o -name '*.cpp' -o -name '*.cmake' -o -name CMakeLists.txt -o -name '*.sh' \) -print0 |
  xargs -0 awk 'length($0) > 120 { print FILENAME ":" FNR }')

exit "$failed"
