#!/usr/bin/env bash
# Installs the build, moves the installed tree, and builds and runs this folder's program against it: through the CMake
# package, then through pkg-config.
#
# Usage: check.sh <build directory> <C++ compiler>

set -euo pipefail
build=$1 compiler=$2
here=$(dirname "$(readlink -f "$0")")
. "$here/common.sh"
work=$build/tests/consumer
prefix=$work/moved

rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/installed" >"$work/install.log"
mv "$work/installed" "$prefix"

# Runs $1, which must log one line to the console and the same line to consumer.log.
run_and_check() {
  cd "$(dirname "$1")"
  cp "$here/log.xml" .
  "$1" >console.log
  check_logs "$PWD"
}

libdir=$(dirname "$(find "$prefix" -name tovlog4vrk.so)")
# A program that reads no document is spared the XML parser and all that it links.
if ldd "$libdir/tovlog4vrk.so" | grep -i xerces; then
  echo "tovlog4vrk.so itself needs the XML parser"
  exit 1
fi

cmake -S "$here" -B "$work/cmake" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix"
cmake --build "$work/cmake"
run_and_check "$work/cmake/consumer"

pc_dir=$(dirname "$(find "$prefix" -name log4vrk.pc)")
export PKG_CONFIG_PATH=$pc_dir
mkdir "$work/pkg-config"
# A blank in a path is behind a backslash.
mapfile -t flags < <(pkg-config --cflags --libs log4vrk | xargs -n 1 printf '%s\n')
"$compiler" -std=c++17 -o "$work/pkg-config/consumer" "$here/main.cpp" "${flags[@]}"
LD_LIBRARY_PATH=$libdir run_and_check "$work/pkg-config/consumer"

# Without the modules nothing but documents and time zones by name is missing, and the internal log says what to do.
cd "$work/cmake"
mkdir -p ../configuration
echo "1 internal.log" >../configuration/logdebug.ini
rm "$libdir/tovlog4vrk-xml.so"
if ./consumer 2>error.log; then
  echo "the document was read without the XML module"
  exit 1
fi
grep -q 'Could not parse the document.* log.xml: tovlog4vrk-xml.so could not be loaded: .*No such file' internal.log ||
  { cat internal.log error.log; exit 1; }
