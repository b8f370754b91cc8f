# Completion of zemrak-printer's options for bash.
# shellcheck shell=bash

_zemrak_printer() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  COMPREPLY=()
  # The equals sign is a word of its own where it breaks words, as it does by default.
  if [[ $current == = && $previous == --login-item ]]; then
    mapfile -t COMPREPLY < <(compgen -W 'on off')
    return
  fi
  case $previous in
    = | --login-item)
      mapfile -t COMPREPLY < <(compgen -W 'on off' -- "$current")
      return
      ;;
    --export-docs)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      return
      ;;
    --render-menubar)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$current")
      return
      ;;
  esac
  case $current in
    --login-item=*)
      mapfile -t COMPREPLY < <(compgen -P --login-item= -W 'on off' -- "${current#*=}")
      return
      ;;
  esac
  local options='--status --login-item= --export-docs --notif-check --render-menubar --automatic-start --version --help'
  local word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD - 1}"; do
    [[ $word == --status ]] && options=--json
  done
  mapfile -t COMPREPLY < <(compgen -W "$options" -- "$current")
  [[ ${COMPREPLY[*]} == *= ]] && compopt -o nospace 2>/dev/null
  return 0
}

complete -F _zemrak_printer zemrak-printer
