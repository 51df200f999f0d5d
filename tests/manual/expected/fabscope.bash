# Completions of fabscope for bash.

_fabscope_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current"); }

_fabscope_files() {
  compopt -o filenames
  mapfile -t COMPREPLY < <(compgen -f -- "$current")
}

_fabscope() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  # "--roots=au" comes as three words.
  if [[ $current == '=' ]]; then
    current=
  elif [[ $previous == '=' ]]; then
    previous=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    _fabscope_words 'check repair diff generate convert -h --help --version'
    return
  fi
  case ${COMP_WORDS[1]}:$previous in
    check:--roots) _fabscope_words 'auto search inferred smdb regex'; return ;;
    check:--root-regex) return ;;
    check:--ranks) _fabscope_files; return ;;
    check:--retries) return ;;
    check:--equal) return ;;
    check:--merge-percent) return ;;
    check:--special-nodes) return ;;
    check:--node-name-map) _fabscope_files; return ;;
    check:--show-guid) _fabscope_words 'none system node'; return ;;
    check:--flids) _fabscope_files; return ;;
    check:--locations) _fabscope_files; return ;;
    check:--dump) _fabscope_files; return ;;
    check:--csv) _fabscope_files; return ;;
    check:--json) _fabscope_files; return ;;
    check:--html) _fabscope_files; return ;;
    check:--work-order) _fabscope_files; return ;;
    check:--svg) _fabscope_files; return ;;
    check:--prometheus) _fabscope_files; return ;;
    check:--log) _fabscope_files; return ;;
    check:--max-records) return ;;
    check:--color) _fabscope_words 'auto always never'; return ;;
    repair:--roots) _fabscope_words 'inferred smdb regex'; return ;;
    repair:--root-regex) return ;;
    repair:--ranks) _fabscope_files; return ;;
    repair:--merge-percent) return ;;
    repair:--special-nodes) return ;;
    repair:--node-name-map) _fabscope_files; return ;;
    repair:--show-guid) _fabscope_words 'none system node'; return ;;
    repair:--locations) _fabscope_files; return ;;
    repair:--csv) _fabscope_files; return ;;
    repair:--work-order) _fabscope_files; return ;;
    repair:--json) _fabscope_files; return ;;
    repair:--after) _fabscope_files; return ;;
    repair:--verify) _fabscope_files; return ;;
    diff:--roots) _fabscope_words 'auto search inferred smdb regex'; return ;;
    diff:--root-regex) return ;;
    diff:--ranks) _fabscope_files; return ;;
    diff:--retries) return ;;
    diff:--equal) return ;;
    diff:--merge-percent) return ;;
    diff:--special-nodes) return ;;
    diff:--node-name-map) _fabscope_files; return ;;
    diff:--json) _fabscope_files; return ;;
    diff:--plan) _fabscope_files; return ;;
    diff:--max-records) return ;;
    diff:--color) _fabscope_words 'auto always never'; return ;;
    generate:--xgft) return ;;
    generate:--levels) return ;;
    generate:--radix) return ;;
    generate:--pods) return ;;
    generate:--hosts-per-leaf) return ;;
    generate:--parallel) return ;;
    generate:--planes) return ;;
    generate:--speed) return ;;
    generate:--fault) return ;;
    generate:--seed) return ;;
    generate:--truth) _fabscope_files; return ;;
    generate:-o | generate:--output) _fabscope_files; return ;;
    generate:--format) _fabscope_words 'document ibnetdiscover ibsim dot graphml'; return ;;
    convert:-o | convert:--output) _fabscope_files; return ;;
    convert:--format) _fabscope_words 'document ibnetdiscover ibsim dot graphml slurm'; return ;;
    convert:--special-nodes) return ;;
    convert:--node-name-map) _fabscope_files; return ;;
    convert:--roots) _fabscope_words 'auto search inferred smdb regex'; return ;;
    convert:--root-regex) return ;;
    convert:--ranks) _fabscope_files; return ;;
    convert:--retries) return ;;
    convert:--equal) return ;;
    convert:--merge-percent) return ;;
  esac
  case ${COMP_WORDS[1]}:$current in
    check:-*) _fabscope_words '--roots --root-regex --ranks --retries --equal --merge-percent --special-nodes --node-name-map --show-guid --flids --locations --dump --csv --json --html --work-order --svg --prometheus --log -s --summary --max-records -q --quiet --color -h --help --version' ;;
    check:*) _fabscope_files ;;
    repair:-*) _fabscope_words '--roots --root-regex --ranks --merge-percent --special-nodes --node-name-map --show-guid --locations --csv --work-order --json --after --verify -h --help --version' ;;
    repair:*) _fabscope_files ;;
    diff:-*) _fabscope_words '--roots --root-regex --ranks --retries --equal --merge-percent --special-nodes --node-name-map --json --plan --max-records -q --quiet --color -h --help --version' ;;
    diff:*) _fabscope_files ;;
    generate:-*) _fabscope_words '--xgft --levels --radix --pods --hosts-per-leaf --parallel --planes --flids --speed --fault --seed --truth -o --output --format -h --help --version' ;;
    convert:-*) _fabscope_words '-o --output --format --special-nodes --node-name-map --roots --root-regex --ranks --retries --equal --merge-percent -h --help --version' ;;
    convert:*) _fabscope_files ;;
  esac
}

complete -F _fabscope fabscope
