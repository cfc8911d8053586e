# Completion of vxserve for bash.

_vxserve() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} words=''
  COMPREPLY=()
  case $previous in
    --address) words='127.0.0.1 0.0.0.0' ;;
    --port | --threads | --max-body | --deadline) return ;;
    *) words='--address --port --threads --max-body --deadline --log --version --help' ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -F _vxserve vxserve
