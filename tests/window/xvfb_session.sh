# Shared by the window tests (sourced, not run): a private Xvfb display, a
# program started on it, and its closing as a window manager would close it.
#   xvfb_start XVFB FIRST LAST [SCREEN]   starts Xvfb on the first free display in the
#                                range, with a screen of 1280x800x24 unless SCREEN says otherwise
#   app_start COMMAND...         starts the program under test in the background
#   fail MESSAGE                 reports, shows the program's output and exits 1
#   app_close_expect_zero PROBE TITLE   WM_DELETE_WINDOW, then status 0 within 10 s
workdir="$(mktemp -d)"
xvfb_pid=""; app_pid=""
cleanup() {
  [ -n "$app_pid" ] && kill "$app_pid" 2>/dev/null
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
  "$xvfb" "$display" -screen 0 "$screen" -nolisten tcp >"$workdir/xvfb.log" 2>&1 &
  xvfb_pid=$!
  export DISPLAY="$display"
  for _ in $(seq 1 100); do
    [ -e "/tmp/.X11-unix/X${display#:}" ] && break
    sleep 0.1
  done
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
  local probe="$1" title="$2" status
  "$probe" close "$title" || fail "could not send the close request"
  for _ in $(seq 1 100); do
    kill -0 "$app_pid" 2>/dev/null || break
    sleep 0.1
  done
  if kill -0 "$app_pid" 2>/dev/null; then fail "the program did not end after the close request"; fi
  wait "$app_pid"; status=$?
  app_pid=""
  [ "$status" -eq 0 ] || fail "exit status $status, expected 0"
}
