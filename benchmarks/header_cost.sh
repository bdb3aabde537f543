#!/usr/bin/env bash
# What including the library costs a compiler: processor time for reading one header, the least of some runs, in
# milliseconds.
#
# Usage: header_cost.sh [runs, 15]

set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
runs=${1:-15}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
TIMEFORMAT='%3U %3S' # of bash's time: user and system, seconds

# cost <compiler> <header>
cost() {
  local run
  printf '#include %s\n' "$2" >"$scratch/file.cpp"
  for ((run = 0; run < runs; ++run)); do
    { time "$1" -std=c++17 -fsyntax-only -I. "$scratch/file.cpp"; } 2>&1
  done | awk '{ ms = ($1 + $2) * 1000; if (NR == 1 || ms < least) least = ms } END { printf "%.0f", least }'
}

printf '%-26s' header
compilers=()
for compiler in g++ clang++; do
  command -v "$compiler" >/dev/null || continue
  compilers+=("$compiler")
  printf ' %8s' "$compiler"
done
printf '\n'
for header in '<string>' '<iostream>' '"log4vrk/log.h"' '"log4vrk/log4vrk.h"'; do
  printf '%-26s' "$header"
  for compiler in "${compilers[@]}"; do printf ' %8s' "$(cost "$compiler" "$header")"; done
  printf '\n'
done
printf '\n%s, %d x%s, %s\n' "$(date +%F)" "$(nproc)" "$(sed -n 's/^model name[^:]*://p' /proc/cpuinfo | head -n 1)" \
  "$("${compilers[0]}" --version | head -n 1)"
