# Completion of log4vrk-check for bash.

_log4vrk_check() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} before=''
  [ "$COMP_CWORD" -lt 2 ] || before=${COMP_WORDS[COMP_CWORD - 2]}
  if [ "$previous" = --format ]; then
    mapfile -t COMPREPLY < <(compgen -W 'text json' -- "$current")
  elif [ "$before" = --explain ]; then
    mapfile -t COMPREPLY < <(compgen -W 'DEBUG INFO WARN ERROR FATAL' -- "$current")
  elif [ "$previous" = --explain ]; then
    COMPREPLY=()
  elif [[ $current = -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '--strict --no-env --connect --set --format --explain --dump --sample --help' -- "$current")
  else
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -X '!*.xml' -- "$current"; compgen -d -- "$current")
  fi
}
complete -F _log4vrk_check log4vrk-check
