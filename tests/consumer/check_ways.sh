#!/usr/bin/env bash
# A stranger's project gets the library in every way that docs/installing.md names, is compiled for every standard
# without a warning, is installed, and runs without LD_LIBRARY_PATH.
#
# The ways that compile the library do it once: the second one configures the folder of the first anew, and as the
# library's part of the project is the same to the last option, ninja finds its objects there. The programs are compiled
# for each.
#
# Usage: check_ways.sh <C++ compiler> <folder to work in> <build directory, of which the library is installed>
#        check_ways.sh <C++ compiler> <folder to work in>     with the library that the system has, of a package

set -euo pipefail
compiler=$1 work=$2 build=${3:-}
here=$(dirname "$(readlink -f "$0")")
. "$here/common.sh"
command -v "$compiler" >/dev/null || skip "no $compiler (Debian package ${compiler/clang++/clang})"
unset LD_LIBRARY_PATH
rm -rf "$work"
mkdir -p "$work"

# Where the library is, how the project gets it, and the folder that this is built in.
ways='system    find_package     system
      system    pkg-config       system-pc'
if [ -n "$build" ]; then
  ways='installed find_package     installed
        installed pkg-config       installed-pc
        moved     find_package     moved
        moved     pkg-config       moved-pc
        tree      add_subdirectory tree
        tree      FetchContent     tree'
  cmake --install "$build" --prefix "$work/prefix installed" >"$work/install.log"
  cp -a "$work/prefix installed" "$work/prefix moving" # a blank in a path does no harm
  mv "$work/prefix moving" "$work/prefix moved"
fi

# with_cmake <prefix> <way> <folder>: the programs are in <folder>/installed/bin.
with_cmake() {
  cmake -S "$here/ways" -B "$3" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$1" -DWAY="$2" \
    -DTREE="$here/../.."
  rm -rf "$3"/CMakeFiles/program-*/ "$3/installed"
  cmake --build "$3"
  cmake --install "$3" --prefix "$3/on its way"
  mv "$3/on its way" "$3/installed"
}

# with_pkg_config <prefix> <folder>
with_pkg_config() {
  local flags standard
  mkdir -p "$2/installed/bin"
  flags=$(pkg-config --cflags --libs log4vrk)
  [ ! -d "$1" ] || flags+=" -Wl,-rpath,$(pkg-config --variable=libdir log4vrk)"
  mapfile -t flags < <(xargs -n 1 printf '%s\n' <<<"$flags") # a blank in a path is behind a backslash
  for standard in 17 20 2b; do
    "$compiler" -std=c++$standard -Wall -Wextra -Wpedantic -Werror -o "$2/installed/bin/program-$standard" \
      "$here/main.cpp" "${flags[@]}"
  done
}

while read -r place way folder; do
  printf '== the library: %s; by: %s\n' "$place" "$way"
  folder=$work/$folder prefix="$work/prefix $place"
  export PKG_CONFIG_PATH=
  [ ! -d "$prefix" ] || PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name log4vrk.pc)")
  if [ "$way" = pkg-config ]; then with_pkg_config "$prefix" "$folder"; else with_cmake "$prefix" "$way" "$folder"; fi
  programs=("$folder"/installed/bin/program-*)
  for program in "${programs[@]}"; do
    mkdir -p "$program.run"
    cp "$here/log.xml" "$program.run/"
    (cd "$program.run" && "$program" >console.log)
    check_logs "$program.run"
  done
  [ ${#programs[@]} = 3 ]
done <<<"$ways"
[ -n "$build" ] || exit 0

# A program that reads no document is spared the XML parser and all that it links.
libdir=$(dirname "$(find "$work/prefix moved" -name tovlog4vrk.so)")
if ldd "$libdir/tovlog4vrk.so" | grep -i xerces; then
  echo "tovlog4vrk.so itself needs the XML parser"
  exit 1
fi

# Without the modules nothing but documents and time zones by name is missing, and the internal log says what to do.
mkdir -p "$work/configuration" "$work/run"
cd "$work/run"
cp "$here/log.xml" .
echo "1 internal.log" >../configuration/logdebug.ini
rm "$libdir/tovlog4vrk-xml.so"
if ../moved/installed/bin/program-17 2>error.log; then
  echo "the document was read without the XML module"
  exit 1
fi
grep -q 'Could not parse the document.* log.xml: tovlog4vrk-xml.so could not be loaded: .*No such file' internal.log ||
  { cat internal.log error.log; exit 1; }
