# Completion of log4vrk-recover for bash.

_log4vrk_recover() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  if [ "$previous" = --to ]; then
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  elif [[ $current = -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--list --recover --to --help' -- "$current")
  else
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -d -- "$current")
  fi
}
complete -F _log4vrk_recover log4vrk-recover
