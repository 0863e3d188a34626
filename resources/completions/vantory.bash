# Completion of vantory's command line for bash.

# Sets `words` to the words of the line as the shell reads them, the last one being that at the cursor, and `quote` to
# the quotation mark that is open there.
_vantory_split() {
  local line=$1 raw='' character i
  words=('') quote=''
  for ((i = 0; i < ${#line}; i++)); do
    character=${line:i:1}
    case $quote$character in
      [[:blank:]])
        [[ -z $raw ]] || words+=('')
        raw=''
        continue
        ;;
      [\'\"]) quote=$character ;;
      "''" | '""') quote='' ;;
      "\\" | '"\')
        raw+=$character
        ((i++))
        character=${line:i:1}
        words[-1]+=$character
        ;;
      *) words[-1]+=$character ;;
    esac
    raw+=$character
  done
}

# Readline takes a colon outside of quotation marks for the beginning of a word and leaves what is before it.
_vantory_drop_before_colon() {
  [[ -z $quote ]] || return
  local whole=${words[-1]} candidates=("${COMPREPLY[@]}") candidate words
  _vantory_split "${COMP_WORDS[COMP_CWORD]#:}"
  local before=${whole%"${words[-1]}"}
  [[ $before == *: ]] || return
  COMPREPLY=()
  for candidate in "${candidates[@]}"; do
    [[ $candidate != "$before"* ]] || COMPREPLY+=("${candidate#"$before"}")
  done
}

# Writes the candidates as the shell has to read them; those that are files readline quotes.
_vantory_quote() {
  local i
  for i in "${!COMPREPLY[@]}"; do
    case $quote in
      readline) ;;
      '"') COMPREPLY[i]=$(sed 's/[\\"$`]/\\&/g' <<<"${COMPREPLY[i]}") ;;
      "'") COMPREPLY[i]=${COMPREPLY[i]//\'/\'\\\'\'} ;;
      *) printf -v "COMPREPLY[i]" %q "${COMPREPLY[i]}" && COMPREPLY[i]=${COMPREPLY[i]//\\,/,} ;;
    esac
  done
}

# Adds the names that begin with the word at the cursor.
_vantory_offer() {
  local name
  for name; do [[ $name != "${words[-1]}"* ]] || COMPREPLY+=("$name"); done
}

# Sets `list` to what the program lists: items or backups.
_vantory_list() { mapfile -d '' -t list < <("${program/#\~/$HOME}" "--list-$1" --print0 2>/dev/null); }

# Item keys separated by commas; each is offered once.
_vantory_keys() {
  local list key before=''
  [[ ${words[-1]} != *,* ]] || before=${words[-1]%,*},
  compopt -o nospace
  _vantory_list items
  for key in "${list[@]}"; do [[ ,$before == *",$key,"* ]] || _vantory_offer "$before$key"; done
}

_vantory_names() {
  local list path
  _vantory_list backups
  for path in "${list[@]}"; do
    path=${path%/}
    [[ $path == */Autosaves/* ]] || { path=${path##*/} && _vantory_offer "${path%.vnt}"; }
  done
}

_vantory_receipts() {
  local list
  mapfile -d '' -t list < <("${program/#\~/$HOME}" --receipts --print0 2>/dev/null)
  _vantory_offer "${list[@]}"
}

# Those of automatic backups too.
_vantory_all_names() {
  local list path
  _vantory_list backups
  for path in "${list[@]}"; do
    path=${path%/}
    path=${path##*/}
    _vantory_offer "${path%.vnt}"
  done
}

# Backups by their path, or by how their name begins.
_vantory_paths() {
  local list path
  _vantory_list backups
  for path in "${list[@]}"; do
    if [[ $path == "${words[-1]}"* || ${path##*/} == "${words[-1]}"* ]]; then COMPREPLY+=("$path"); fi
  done
  [[ ${#COMPREPLY[@]} = 0 ]] || return
  compopt -o filenames
  quote=readline
  mapfile -t COMPREPLY < <(compgen -d -- "${words[-1]}")
}

_vantory_operand() {
  case $1 in
    trash1) _vantory_offer -allprefs -allfiles fcp fce stp motion color dvdsp livetype compressor batchmon ct ;;&
    lock1 | unlock1) _vantory_offer -allprefs -allfiles ;;&
    trash1 | lock1 | unlock1 | backup2 | backup3 | restore2) _vantory_keys ;;
    backup1) _vantory_names ;;
    restore1) _vantory_paths ;;
    *default1) _vantory_offer none ;;&
    *restore-keys2) _vantory_keys ;;
    *default1 | *rename1 | *remove1 | *update1 | *restore-keys1) _vantory_all_names ;;
    *undo1) _vantory_receipts ;;
  esac
  case $1 in trash2 | lock2 | unlock2 | backup4 | restore3) _vantory_offer -task -hotkey ;; esac
}

_vantory() {
  local program=$1 words quote i
  _vantory_split "${COMP_LINE:0:COMP_POINT}"
  local last=$((${#words[@]} - 1))
  COMPREPLY=()
  for ((i = 1; i < last; i++)); do
    case ${words[i]} in
      --default | --rename | --remove | --update | --prune | --undo | --restore-keys | \
        -autobackup | -restoredefault | -list | -trash | -lock | -unlock | -backup | -restore)
        _vantory_operand "${words[i]#-}$((last - i))"
        break
        ;;
      --preview)
        [[ ${words[i + 1]} != --json ]] || ((i++))
        if ((last == i + 1)); then
          _vantory_offer autobackup restoredefault list trash lock unlock backup restore default rename remove \
            update prune undo restore-keys --json
        else
          _vantory_operand "${words[i + 1]}$((last - i - 1))"
        fi
        break
        ;;
      --compare)
        ((last - i > 2)) || _vantory_all_names
        ((last - i < 2)) || _vantory_keys
        _vantory_offer --json
        break
        ;;
      --verify)
        _vantory_offer --json
        _vantory_all_names
        break
        ;;
      --check-catalog | --self-check)
        _vantory_offer --json
        break
        ;;
      --list-items | --list-backups | --receipts)
        _vantory_offer --json --print0
        break
        ;;
    esac
  done
  if ((i == last)) && [[ ${words[last - 1]} == --home* ]]; then
    compopt -o filenames
    quote=readline
    mapfile -t COMPREPLY < <(compgen -d -- "${words[-1]}")
    return
  fi
  ((i < last)) || _vantory_offer -autobackup -restoredefault -list -trash -lock -unlock -backup -restore --default \
    --rename --remove --update --prune --undo --restore-keys --list-items --list-backups --receipts --preview --compare \
    --verify --check-catalog --self-check --home --homes --jobs --busy --json --strict --print0 --help --version

  _vantory_drop_before_colon
  _vantory_quote
}

complete -F _vantory vantory
