# payrun.bash - completion of payrun's command line in bash.
_payrun() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  # bash may split "=" off as a separate word.
  if [ "$current" = = ]; then
    current=
  elif [ "$previous" = = ]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  case $previous in
    --month) COMPREPLY=($(compgen -W '1 2 3 4 5 6 7 8 9 10 11 12' -- "$current")); return ;;
    --log) COMPREPLY=($(compgen -W 'console file sqlite= postgres= syslog' -- "$current")); return ;;
    --input | --html | --pdf | --logs)
      compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -d -- "$current"); return ;;
    --output | --template)
      compopt -o filenames 2>/dev/null; mapfile -t COMPREPLY < <(compgen -f -- "$current"); return ;;
    --generate) COMPREPLY=(); return ;;
  esac
  COMPREPLY=($(compgen -W '--input --month --output --payslips --html --pdf --template --log --logs --watch --generate
                           --diagnose --help --version' -- "$current"))
}
complete -F _payrun payrun
