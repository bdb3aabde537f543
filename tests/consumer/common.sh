# For the scripts of this folder; `here` is the folder.

# A test that cannot run here says why, and ctest counts it as skipped.
skip() {
  echo "SKIPPED: $*"
  exit 77
}

# check_logs <folder>: console.log and consumer.log hold one and the same line.
check_logs() {
  local output line='^[0-9]+ \[[^]]+\] INFO consumer - hello from outside the tree$'
  for output in "$1/consumer.log" "$1/console.log"; do
    if [ "$(grep -cE "$line" "$output")" != 1 ] || [ "$(wc -l <"$output")" != 1 ]; then
      echo "$output should hold one line that matches $line, but holds:"
      cat "$output"
      exit 1
    fi
  done
}
