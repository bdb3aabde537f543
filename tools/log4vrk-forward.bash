# Completion of log4vrk-forward for bash.

_log4vrk_forward() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  case $previous in
    --authorities | --certificate | --key | --refused)
      compopt -o filenames
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      ;;
    *)
      mapfile -t COMPREPLY < <(compgen -W '--secure --authorities --certificate --key --refused --help' -- "$current")
      [[ $current = -* ]] || mapfile -t COMPREPLY < <(compgen -A hostname -- "$current")
      ;;
  esac
}
complete -F _log4vrk_forward log4vrk-forward
