#!/usr/bin/env bash
# Makes the pages of the guide and of the public classes. Fails when Doxygen has a warning, when a class, a macro or an
# operation of LOGLogger is not described, when the README does not lead to a document, when a link leads nowhere, or
# when a piece of code in the text of the guide is not on its page.
#
# Usage: check_pages.sh <root of the tree> <folder>     The pages are in <folder>/html.

set -euo pipefail
export LC_ALL=C.UTF-8
root=$(readlink -f "$1")
here=$root/tests/docs
for program in doxygen python3; do
  command -v "$program" >/dev/null && continue
  echo "SKIPPED: $program is not installed (Debian package $program)"
  exit 77
done

rm -rf "$2"
mkdir -p "$2/input"
cd "$2/input"
python3 "$here/pages.py" prepare "$root" . >../faults
doxygen Doxyfile >../doxygen.log 2>&1 || { cat ../doxygen.log; exit 1; }
# What a name and a type say needs no sentence, unless it is in the class that everybody reads.
sed "s,^$PWD/,," ../doxygen.log |
  grep -vE 'warning: Member .* of (class|struct) .* is not documented\.$' >>../faults || true
grep -E 'warning: Member .* of class LOGLogger is not documented\.$' ../doxygen.log >>../faults || true
[ -f ../html/index.html ] || echo "there are no pages" >>../faults
python3 "$here/pages.py" check "$root" ../html >>../faults
sort -u ../faults
[ ! -s ../faults ]
