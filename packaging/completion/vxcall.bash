# Completion of vxcall for bash.

_vxcall() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words=''
  COMPREPLY=()
  # Bash takes "--protocol=soap" and "file:path" apart at the signs.
  [[ $word != '=' ]] || word=''
  [[ $previous != '=' || $COMP_CWORD -lt 2 ]] || previous=${COMP_WORDS[COMP_CWORD - 2]}
  [[ $previous != ':' || $COMP_CWORD -lt 2 ]] || previous=${COMP_WORDS[COMP_CWORD - 2]}:
  case $previous in
    -p | --protocol) words='xml-rpc soap-1999 soap-2001' ;;
    --style) words='rpc doc' ;;
    --http) words='1.0 1.1' ;;
    -o | --output) words='json plist full' ;;
    --ca | --save | --load | *file:)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$word")
      return
      ;;
    -t | --timeout | --repeat | -n | --namespace | --result | --soap-header | -H | --header | --proxy | --max-reply)
      return
      ;;
    *)
      words='-p --protocol -t --timeout --async --repeat -n --namespace --style --result --soap-header
        -H --header --http --proxy --no-redirect --ca --max-reply -o --output -v --verbose
        --print-request --save --load --version -h --help'
      [[ $word == -* || ${COMP_WORDS[*]:1:COMP_CWORD-1} == *http* ]] || words='http:// https://'
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -F _vxcall vxcall
