#!/usr/bin/env bash
# Compiles user.cpp, log_only.cpp and all installed headers without a warning, with every compiler that is here and
# every standard from C++17 on.
#
# Usage: check_headers.sh <root of the tree>

set -euo pipefail
root=$1
here=$(dirname "$(readlink -f "$0")")
headers=$(sed -n 's/^  \([a-zA-Z]*[a-zA-Z_0-9/]*\.h\)$/#include "log4vrk\/\1"/p' "$root/log4vrk/Headers.cmake" |
  grep -v /testing/matchers.h)  # GoogleMock itself does not stand what user.cpp defines
failed=0

for compiler in g++ clang++; do
  if ! command -v "$compiler" >/dev/null; then
    echo "not looked at with $compiler, which is not installed"
    continue
  fi
  for standard in 17 20 2b; do
    compile=("$compiler" "-std=c++$standard" -Wall -Wextra -Wpedantic -Werror -fsyntax-only "-I$root")
    # One file for each standard: what costs time are the standard library's headers.
    "${compile[@]}" -include "$here/user.cpp" -x c++ - <<<"$headers" ||
      { echo "FAILED: $compiler, C++$standard"; failed=1; }
    "${compile[@]}" -x c++ - <<<'#include "log4vrk/testing/matchers.h"' ||
      { echo "FAILED: $compiler, C++$standard, matchers.h"; failed=1; }
    "${compile[@]}" "$here/log_only.cpp" || { echo "FAILED: $compiler, C++$standard"; failed=1; }
  done
  # What makes a header slow to read stays out of the small one.
  slow=$("$compiler" -std=c++17 "-I$root" -M "$here/log_only.cpp" | tr ' ' '\n' |
    grep -E '/(chrono|functional|iostream|map|memory|mutex|ostream|sstream|thread)$' || true)
  [ -z "$slow" ] || { echo "FAILED: log4vrk/log.h includes" $slow; failed=1; }
  # A program that would crash at the first dynamic_cast is told so.
  said=$("$compiler" -std=c++17 -fno-rtti -fsyntax-only "-I$root" "$here/main.cpp" 2>&1 || true)
  [[ $said = *'do not use -fno-rtti'* ]] || { echo "FAILED: $compiler takes -fno-rtti without a word"; failed=1; }
done
exit "$failed"
