# The dashboard in a terminal: what it shows, that it follows the terminal's size, and that it
# gives the terminal back however it ends.
. "$(dirname "$0")/common.sh"
command -v tmux >/dev/null || skip "tmux is not installed"

SOCKET=vantile-host-test-$$
unset TMUX NO_COLOR
ulimit -c 0 # for the crashes that are to come

# A build with a sanitizer would end in its own way.
own='handle_segv=0:handle_sigbus=0:handle_sigfpe=0:handle_sigill=0:handle_abort=0'
ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}$own
TSAN_OPTIONS=${TSAN_OPTIONS:+$TSAN_OPTIONS:}$own
UBSAN_OPTIONS=${UBSAN_OPTIONS:+$UBSAN_OPTIONS:}$own
export ASAN_OPTIONS TSAN_OPTIONS UBSAN_OPTIONS

LC_ALL=C.UTF-8
export LC_ALL
own_folders

terminal() {
  tmux -L "$SOCKET" -f /dev/null "$@"
}
trap 'terminal kill-server 2>/dev/null; rm -rf "$WORK"' EXIT

screen() {
  terminal capture-pane -p
}

# Waits until the screen has the text.
appears() {
  for _ in $(seq 100); do
    screen | grep -qF -- "$1" && return
    sleep 0.1
  done
  screen >&2
  return 1
}

# The terminal's settings, apart from its size.
modes() {
  stty -a -F "$(terminal display-message -p '#{pane_tty}')" | sed 's/rows.*columns [0-9]*;//'
}

typed() {
  terminal send-keys "$@"
}

# A shell that stays, so that there is something to give the terminal back to.
terminal new-session -d -x 80 -y 60 "PS1='ready> ' sh" || fail "tmux cannot start"
appears "ready>" || fail "no shell in the terminal"
stty_before=$(modes)

check "stty tells the modes" [ -n "$stty_before" ]

# Starts the dashboard; its exit status follows on the screen afterwards.
dashboard() {
  typed "clear; '$HOST'; echo ended with \$?" Enter
  appears "$1" || fail "the dashboard does not show '$1'"
}

given_back() {
  appears "ended with $1" || fail "$2: did not end with $1"
  check "$2: the full screen is left" [ "$(terminal display-message -p '#{alternate_on}')" = 0 ]
  check "$2: the cursor is shown" [ "$(terminal display-message -p '#{cursor_flag}')" = 1 ]
  check "$2: the terminal's modes are as before" [ "$stty_before" = "$(modes)" ]
}

number() {
  env kill -l "$1"
}

process() {
  ps -o pid= -o comm= -t "$(terminal display-message -p '#{pane_tty}' | sed 's,/dev/,,')" |
    awk '$2 == "vantile-host" { print $1 }'
}

dashboard "Memory used"
for text in "load " " tasks, " "Processor time used" "Running applications" "s sort" \
  "■ Used" "■ Wired" "■ Active" "■ Compressed" "■ Inactive" "■ Free" Page-ins \
  Page-outs Swap "q quit"; do
  appears "$text" || fail "the dashboard does not show '$text'"
done
screen | grep -q '█' || fail "there are no bars"

appears "watching downloads, applications and the Trash" ||
  fail "an empty list of events does not say what is watched"
appears "0 B in the Trash" || fail "the Trash's size is not shown"
printf '[Desktop Entry]\nType=Application\nName=A\nExec=a\n' >"$WORK/a.desktop"
mv "$WORK/a.desktop" "$XDG_DATA_HOME/Trash/files/"
appears "application in the Trash  a.desktop" || fail "an application in the Trash is not told"
appears "47 B in the Trash" || fail "the Trash's growth is not followed"

if ! screen | grep -qF "no application of the desktop is running"; then
  typed s
  appears " by memory" || fail "s does not sort"
fi
terminal resize-window -x 120 -y 40
appears "╮╭─ " || fail "a wide terminal has no columns"
appears "vantile-host on $(uname -n)" || fail "the machine is not named"
terminal resize-window -x 40 -y 12
appears "page 1 of " || fail "a small terminal has no pages"
typed Tab
appears "page 2 of " || fail "Tab does not turn the page"
terminal resize-window -x 20 -y 4
appears "too small" || fail "a tiny terminal is not told so"
terminal resize-window -x 80 -y 60
appears "■ Used" || fail "the terminal's growth is not followed"
typed q
given_back 0 "q"

# First those that it takes as requests to end, then some that end it where it stands.
for signal in INT TERM HUP QUIT SEGV ABRT BUS FPE ILL XCPU USR1 USR2 ALRM; do
  dashboard "■ Used"
  kill -s "$signal" "$(process)"
  given_back $((128 + $(number "$signal"))) "SIG$signal"
done

typed "clear; TERM=nonesuch '$HOST'; echo ended with \$?" Enter
appears "ended with 1" || fail "an unknown terminal is accepted"
appears "cannot draw on a terminal of the type 'nonesuch'" ||
  fail "an unknown terminal is not named"

LC_ALL=C
typed "clear; LC_ALL=C '$HOST'" Enter
appears "+- Memory" || fail "a terminal without Unicode gets no likeness in ASCII"
typed q
