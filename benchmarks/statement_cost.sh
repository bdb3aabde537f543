#!/usr/bin/env bash
# What one log statement with a number and a text costs the function that it stands in, by nm and -fstack-usage: bytes
# of machine code beside the function's other code, bytes that compilers put apart because they are rarely run, and
# bytes of stack. A second figure is that of a further statement.
#
# Usage: statement_cost.sh

set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# functions <parameters> <statement>: one function without, one with the statement, one with two
functions() {
  printf 'void none(%s) { (void)i; (void)s; }\nvoid one(%s) { %s; }\nvoid two(%s) { %s; %s; }\n' \
    "$1" "$1" "$2" "$1" "$2" "$2"
}

# row <name> <includes> <parameters> <statement>
row() {
  local name=$1 compiler
  { printf '%b\n' "$2"; functions "$3" "$4"; } >"$scratch/statement.cpp"
  for compiler in g++ clang++; do
    command -v "$compiler" >/dev/null || continue
    if ! "$compiler" -std=c++17 -O2 -I. -fstack-usage -c "$scratch/statement.cpp" -o "$scratch/statement.o" \
      2>"$scratch/errors"; then
      printf '%-14s %-8s not there\n' "$name" "$compiler"
      continue
    fi
    nm -S --demangle "$scratch/statement.o" | awk -v name="$name" -v compiler="$compiler" '
      FILENAME != "-" {  # the stack: place:function<tab>bytes<tab>kind
        split($0, field, "\t")
        for (f in code) if (field[1] ~ ":(void )?_?Z?[0-9]*" f "[^a-z]") stack[f] = field[2]
        next
      }
      $3 ~ /[tT]/ { for (f in code) if ($4 ~ "^" f "\\(") ($0 ~ /\.cold/ ? apart[f] = hex($2) : code[f] = hex($2)) }
      function hex(digits,   n, i) {
        for (i = 1; i <= length(digits); ++i) n = 16 * n + index("0123456789abcdef", substr(digits, i, 1)) - 1
        return n
      }
      BEGIN { code["none"] = code["one"] = code["two"] = 0 }
      END {
        printf "%-14s %-8s %8d %8d %8d %10d %8d\n", name, compiler, code["one"] - code["none"],
          code["two"] - code["one"], apart["one"], apart["two"] - apart["one"], stack["one"] - stack["none"]
      }' - "$scratch/statement.su"
  done
}

readonly OURS='LOGLogger* logger, int i, const std::string& s'
printf '%-14s %-8s %8s %8s %8s %10s %8s\n' statement compiler bytes further apart 'further' stack
row 'ours <<' '#include "log4vrk/log.h"' "$OURS" 'LOG4VRK_INFO(logger, "request " << i << " from " << s << " ok")'
row 'ours {}' '#include "log4vrk/format.h"' "$OURS" 'LOG4VRK_INFO_F(logger, "request {} from {} ok", i, s)'
row 'ours text' '#include "log4vrk/log.h"' "$OURS" '(void)i, (void)s, logger->info("request ok")'
row spdlog '#include <spdlog/spdlog.h>' 'spdlog::logger* logger, int i, const std::string& s' \
  'logger->info("request {} from {} ok", i, s)'
row glog '#include <glog/logging.h>' 'int i, const std::string& s' \
  'VLOG(1) << "request " << i << " from " << s << " ok"'
printf '\n%s, %s\n' "$(date +%F)" "$(g++ --version | head -n 1)"
