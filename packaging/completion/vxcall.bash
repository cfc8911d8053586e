# Completion of vxcall for bash. It never calls a server: METHOD completes to what most of them have.

_vxcall() {
  local values='-p --protocol -t --timeout --repeat -n --namespace --style --result --soap-header -H --header
    --http --proxy --ca --max-reply -o --output --save --load'
  local flags='--async --no-redirect -v --verbose --print-request --version -h --help'
  local current=${COMP_WORDS[COMP_CWORD]} token whole='' option='' glued='' places=0 words=''
  COMPREPLY=()
  # Bash takes "--output=json" and "json:@file" apart at the signs; here they become whole again, and
  # the words before the last one are counted: options, their values, and the places URL and METHOD.
  for token in "${COMP_WORDS[@]:1:COMP_CWORD}"; do
    if [[ $glued || ($token && -z ${token//[:=@]/}) ]]; then
      whole+=$token
    else
      if [[ $option ]]; then
        option=''
      elif [[ $whole == -* && " ${values//$'\n'/ } " == *" $whole "* ]]; then
        option=$whole
      elif [[ $whole && $whole != -* ]]; then
        ((++places))
      fi
      [[ $whole != --load* ]] || places=2
      whole=$token
    fi
    glued=''
    [[ -z $token || ${token//[:=@]/} ]] || glued=yes
  done

  if [[ -z $option && $whole == --*=* ]]; then
    option=${whole%%=*}
    whole=${whole#*=}
  fi
  case $option:$whole in
    --protocol:* | -p:*) words='xml-rpc soap-1999 soap-2001' ;;
    --style:*) words='rpc doc' ;;
    --http:*) words='1.0 1.1' ;;
    --output:* | -o:*) words='json plist full' ;;
    --ca:* | --save:* | --load:*) option=files ;;
    :file:* | :*=file:*) option=files whole=${whole#*file:} ;;
    :json:@* | :*=json:@*) option=files whole=${whole#*json:@} ;;
    :-*) words="$values $flags" ;;
    :*)
      case $places in
        0) words='http:// https://' ;;
        1) words='system.listMethods system.methodHelp system.methodSignature system.multicall' ;;
      esac
      ;;
  esac
  if [[ $option == files ]]; then
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$whole")
  else
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$whole")
  fi
  # What bash has not taken apart it wants back in one piece.
  [[ -z ${current//[:=@]/} || ${#COMPREPLY[@]} -eq 0 ]] || COMPREPLY=("${COMPREPLY[@]/#/${current%"$whole"}}")
}

complete -F _vxcall vxcall
