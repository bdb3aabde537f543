#!/usr/bin/env bash
# Checks that code in the documents equals the file it names. In README.md and docs/*.md a comment
#   <!-- file: examples/hello.cpp -->
# promises that the fenced code block after it is that file, to the character.
#
# Usage: check_snippets.sh <root of the tree>

set -euo pipefail
export LC_ALL=C
cd "$1"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
checked=0
failed=0

# Prints "<file> <line>" for each promise of a document and writes the block that follows to $scratch/<line>. A promise
# that no block follows writes no file.
split_document() {
  awk -v dir="$scratch" '
    in_block && /^```[ \t]*$/ { in_block = 0; close(out); out = ""; next }
    in_block { if (out != "") print > out; next }
    match($0, /^<!-- file: [^ ]+ -->[ \t]*$/) {
      split($0, word, " ")
      print word[3], NR
      promised = dir "/" NR
      next
    }
    /^```/ { in_block = 1; out = promised; promised = ""; if (out != "") printf "" > out; next }
    /[^ \t]/ { promised = "" }
  ' "$1"
}

for document in README.md docs/*.md; do
  [ -f "$document" ] || continue
  promises=$(split_document "$document")  # first, so that all blocks have been written
  while read -r file line && [ -n "$file" ]; do
    checked=$((checked + 1))
    if [ ! -f "$scratch/$line" ]; then
      echo "$document:$line: no code block follows the comment about $file"
      failed=1
    elif ! diff -u --label "$file" --label "$document:$line" "$file" "$scratch/$line"; then
      echo "$document:$line: the code block differs from $file"
      failed=1
    fi
  done <<<"$promises"
  rm -f "$scratch"/*
done

echo "code blocks checked: $checked"
exit "$failed"
