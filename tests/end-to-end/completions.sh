#!/usr/bin/env bash
# What the real shells make of a line that is typed and completed, and whether the manual page is sound.
. "$(dirname "$0")/lib.sh"
also=("$here/../../resources/completions/"* "$here/../../resources/man/vantory.1")
begin ordinary "$@"
need zsh fish

use_home anna
put "$preferences/com.apple.motion.plist" motion
run -backup Plain
for name in 'It'"'"'s "so": $5' 'Über Nacht' Plainer; do cp -R "$library/Plain.vnt" "$library/$name.vnt"; done

# Lists as the real program, and prints its arguments otherwise.
mkdir -p "$work/bin" "$work/shell"
cat >"$work/bin/vantory" <<END
#!/bin/sh
case \$1 in --list-*) exec $program "\$@" ;; esac
printf '<%s>' "\$@"
echo '|END'
END
chmod 755 "$work/bin/vantory"
cat >"$work/shell/bashrc" <<END
PATH=$work/bin:\$PATH PS1='READY>'
bind 'set bell-style none' 'set enable-bracketed-paste off'
. $here/vantory.bash
END
cat >"$work/shell/.zshrc" <<END
path=($work/bin \$path) PS1='READY>' fpath=($here \$fpath)
autoload -U compinit && compinit -u -D
unset zle_bracketed_paste
setopt no_beep
END

in_bash() { as_user env TERM=dumb /usr/bin/python3 "$here/terminal.py" keys "$1" bash --noprofile --rcfile "$work/shell/bashrc" -i; }
in_zsh() { as_user env TERM=dumb "ZDOTDIR=$work/shell" /usr/bin/python3 "$here/terminal.py" keys "$1" zsh -i; }

# Whether each shell makes these arguments of the keys.
completes() {
  local shell made
  for shell in in_bash in_zsh; do
    made=$($shell "$1")
    check "$shell: ${1//$'\t'/ TAB }" [ "$made" = "$2" ]
  done
}
completes $'vantory -tr\tfcpPrefs,fcpBo\t' '<-trash><fcpPrefs,fcpBoris>'
completes $'vantory --und\t' '<--undo>'
completes $'vantory -lock -allp\t' '<-lock><-allprefs>'
completes $'vantory --prev\tunl\tmotionP\t' '<--preview><unlock><motionPrefs>'
completes $'vantory -backup It\t' "<-backup><It's \"so\": \$5>"
completes $'vantory -backup "It\t' "<-backup><It's \"so\": \$5>"
completes $'vantory -backup Plaine\t- colo\t' '<-backup><Plainer><-><colorPrefs>'
completes $'vantory -restore Üb\tmotionP\t' "<-restore><$library/Über Nacht.vnt><motionPrefs>"
completes $'vantory -restore It\t' "<-restore><$library/It's \"so\": \$5.vnt>"
completes "vantory -restore ${library// /\\ }/It"$'\t' "<-restore><$library/It's \"so\": \$5.vnt>"

offers() {
  local made
  made=$(as_user env "PATH=$work/bin:/usr/bin:/bin" fish --no-config -c "source $here/vantory.fish; complete -C \$argv[1]" "$1" | cut -f1 | paste -sd'|')
  check "fish: $1" [ "$made" = "$2" ]
}
offers 'vantory -tr' -trash
offers 'vantory -trash fcpPrefs,fcpBo' fcpPrefs,fcpBoris
offers 'vantory --preview unl' unlock
offers 'vantory --preview lock -allp' -allprefs
offers 'vantory -backup It' "It's \"so\": \$5"
offers 'vantory -restore Üb' "$library/Über Nacht.vnt"
offers 'vantory -backup x - motionP' motionPrefs

if command -v mandoc >/dev/null; then
  check "the manual page has no fault" mandoc -Tlint -Wwarning "$here/vantory.1"
else
  echo "skipped: the manual page, as mandoc is not installed"
fi
summary
