#!/usr/bin/env bash
# Configures parent/, which adds the whole tree as a folder and compares its own flags. It has nothing to install and no
# tests then.
#
# Usage: check_parent.sh <build directory> <C++ compiler>

set -euo pipefail
work=$1/tests/parent
here=$(dirname "$(readlink -f "$0")")
rm -rf "$work"
cmake -S "$here/parent" -B "$work/build" -G Ninja -DCMAKE_CXX_COMPILER="$2"
cmake --install "$work/build" --prefix "$work/installed"
if [ -e "$work/installed" ]; then
  echo "the parent installs what it did not ask for:"
  find "$work/installed"
  exit 1
fi
ctest --test-dir "$work/build" -N | tee "$work/tests"
grep -qx 'Total Tests: 0' "$work/tests"

# Who wants the library in the install says so.
cmake -S "$here/parent" -B "$work/build" -DLOG4VRK_INSTALL=ON >/dev/null
grep -q 'log4vrkConfig.cmake' "$work/build/log4vrk/cmake_install.cmake"
