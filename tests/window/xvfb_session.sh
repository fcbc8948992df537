# Shared by the window tests (sourced, not run): a private Xvfb display with a
# window manager that maximises every window as a desktop would, a program
# started on it, its window found, read back and closed with Debian's X tools
# (xdotool, ImageMagick, wmctrl).
#   xvfb_start XVFB FIRST LAST [SCREEN]   starts Xvfb on the first free display in the
#                                range, with a screen of 1280x800x24 unless SCREEN says otherwise,
#                                and matchbox without title bars on it
#   app_start COMMAND...         starts the program under test in the background
#   fail MESSAGE                 reports, shows the program's output and exits 1
#   win_wait TITLE SECONDS       the window of that exact title is mapped in time
#   win_size TITLE               prints its size as WIDTHxHEIGHT
#   win_matches TITLE PNG        its pixels are exactly the picture's (on failure
#                                they are kept beside it as PNG.window.png)
#   app_close_expect_zero TITLE  WM_DELETE_WINDOW, then status 0 within 10 s
workdir="$(mktemp -d)"
xvfb_pid=""; wm_pid=""; app_pid=""
cleanup() {
  [ -n "$app_pid" ] && kill "$app_pid" 2>/dev/null
  [ -n "$wm_pid" ] && kill "$wm_pid" 2>/dev/null
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null
  rm -rf "$workdir"
}
trap cleanup EXIT

fail() { echo "FAIL: $*"; echo "--- program output"; cat "$workdir/app.log" 2>/dev/null; exit 1; }

xvfb_start() {
  local xvfb="$1" first="$2" last="$3" screen="${4:-1280x800x24}" display="" n
  # A free display number: the first whose lock file and socket are absent.
  for n in $(seq "$first" "$last"); do
    if [ ! -e "/tmp/.X$n-lock" ] && [ ! -e "/tmp/.X11-unix/X$n" ]; then display=":$n"; break; fi
  done
  [ -n "$display" ] || { echo "no free X display number"; exit 1; }
  # -noreset: the server must not start over when a probing client leaves.
  "$xvfb" "$display" -screen 0 "$screen" -nolisten tcp -noreset >"$workdir/xvfb.log" 2>&1 &
  xvfb_pid=$!
  export DISPLAY="$display"
  # The socket appears before the server takes clients: wait until one is
  # served (up to 20 s on a loaded machine).
  for _ in $(seq 1 200); do
    xdotool getdisplaygeometry >/dev/null 2>&1 && break
    sleep 0.1
  done
  xdotool getdisplaygeometry >/dev/null 2>&1 || { cat "$workdir/xvfb.log"; echo "Xvfb did not start"; exit 1; }
  matchbox-window-manager -use_titlebar no >"$workdir/wm.log" 2>&1 &
  wm_pid=$!
  # A window mapped before the manager runs stays at its own size: wait for it
  # (a loaded machine can take seconds).
  for _ in $(seq 1 200); do wmctrl -m >/dev/null 2>&1 && return 0; sleep 0.1; done
  cat "$workdir/wm.log"; echo "the window manager did not start"; exit 1
}

win_id() { xdotool search --onlyvisible --name "^$1\$" 2>/dev/null | head -n 1; }

win_wait() { timeout "$2" xdotool search --sync --onlyvisible --name "^$1\$" >/dev/null 2>&1; }

win_size() {
  local id WIDTH HEIGHT
  id="$(win_id "$1")" && [ -n "$id" ] || return 1
  eval "$(xdotool getwindowgeometry --shell "$id" | grep -E '^(WIDTH|HEIGHT)=')"
  echo "${WIDTH}x${HEIGHT}"
}

win_matches() {
  local id differing
  id="$(win_id "$1")" && [ -n "$id" ] || { echo "no window \"$1\""; return 1; }
  import -window "$id" "png24:$2.window.png" 2>/dev/null || { echo "could not read the window"; return 1; }
  differing="$(compare -metric AE "$2.window.png" "$2" null: 2>&1)"
  echo "pixels differing from $2: $differing"
  [ "$differing" = "0" ]
}

app_start() {
  # Software rendering keeps the tests independent of the machine's GPU
  # drivers. Under the sanitizer build, leak checking is left to the headless
  # tests: the desktop libraries SDL loads (D-Bus, X11, GL drivers) keep
  # allocations of their own until exit.
  ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0" SDL_RENDER_DRIVER=software \
    "$@" >"$workdir/app.log" 2>&1 &
  app_pid=$!
}

app_close_expect_zero() {
  local status
  wmctrl -i -c "$(win_id "$1")" || fail "could not send the close request"
  for _ in $(seq 1 100); do
    kill -0 "$app_pid" 2>/dev/null || break
    sleep 0.1
  done
  if kill -0 "$app_pid" 2>/dev/null; then fail "the program did not end after the close request"; fi
  wait "$app_pid"; status=$?
  app_pid=""
  [ "$status" -eq 0 ] || fail "exit status $status, expected 0"
}
