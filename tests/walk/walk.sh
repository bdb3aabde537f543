#!/usr/bin/env bash
# Does what the steps say, one after the other, and writes a line with the seconds for each. The output of all of them
# goes to a file. Ends with 1 when one has failed or has not shown what it should.
#
# Usage: walk.sh <steps> <clone of the tree> <file for the output>

set -euo pipefail
steps=$1 clone=$2 output=$3
failed=0
: >"$output"

title='' commands='' expected=()
do_step() {
  [ -n "$title" ] || return 0
  local begin=$SECONDS status=0 result=ok pattern shown
  shown=$(mktemp)
  (cd "$clone" && bash -euo pipefail -c "$commands") >"$shown" 2>&1 </dev/null || status=$?
  [ "$status" = 0 ] || result="ended with $status"
  for pattern in "${expected[@]}"; do
    grep -qE -- "$pattern" "$shown" || result="does not show $pattern"
  done
  printf '\n######## %s\n' "$title" >>"$output"
  cat "$shown" >>"$output"
  printf '| %s | %d s | %s |\n' "$title" $((SECONDS - begin)) "$result"
  if [ "$result" != ok ]; then
    tail -n 30 "$shown"
    failed=1
  fi
  rm "$shown"
}

while IFS= read -r line; do
  case $line in
    '## '*)
      do_step
      title=${line#'## '} commands='' expected=()
      ;;
    '=> '*) expected+=("${line#'=> '}") ;;
    *) commands+=$line$'\n' ;;
  esac
done <"$steps"
do_step
exit "$failed"
