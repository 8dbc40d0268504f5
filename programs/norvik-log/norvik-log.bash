# norvik-log.bash - completion of norvik-log's command line in bash.
_norvik_log() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  # bash may split "=" off as a separate word.
  if [ "$current" = = ]; then
    current=
  elif [ "$previous" = = ]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  case $previous in
    -l | --level) COMPREPLY=($(compgen -W 'error warn info debug verbose' -- "$current")); return ;;
    --color | --colour) COMPREPLY=($(compgen -W 'auto always never' -- "$current")); return ;;
    --since | --until) COMPREPLY=($(compgen -W 'now today yesterday' -- "$current")); return ;;
    --log-zone) COMPREPLY=($(compgen -W "UTC $(timedatectl list-timezones 2>/dev/null)" -- "$current")); return ;;
    --thread | -t | --text | -e | --pattern | --patience) COMPREPLY=(); return ;;
  esac
  case $current in
    -*) COMPREPLY=($(compgen -W '--level --since --until --thread --text --pattern --ignore-case --utc --log-zone --count --json
                                 --html --with-source --color --follow --patience --help --version' -- "$current")) ;;
    *) compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
  esac
}
complete -F _norvik_log norvik-log
