# Sourced by the Windows scripts (tools/test-windows.sh, tools/package-windows.sh):
#   windows_install   installs the cross compilers, wine and zip from Debian's
#                     packages, only here, so the Linux suites do not pay for it;
#   windows_wine      keeps one wine prefix per machine with wine's null display
#                     driver (HKCU\Software\Wine\Drivers Graphics=null: windows,
#                     DIB sections and window messages work without a display)
#                     and no crash dialog (a crash prints its backtrace and the
#                     program ends at once instead of waiting for a click),
#                     then starts the wine server and one program detached from
#                     the caller's pipes: otherwise wine's helper processes
#                     inherit a test runner's output and it waits for them.

windows_install() {
  local packages=(wine wine64 g++-mingw-w64-x86-64-posix googletest libstb-dev zip unzip)
  local missing=() p
  for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "windows: installing ${missing[*]}"
  local sudo=""
  if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends -o DPkg::Lock::Timeout=600 "${missing[@]}" >/dev/null
}

windows_wine() {
  export WINEPREFIX="${PELLUCIDA_WINEPREFIX:-${XDG_CACHE_HOME:-$HOME/.cache}/pellucida/wine}"
  export WINEDEBUG=-all
  # No Mono or Gecko download prompts: nothing here needs either.
  export WINEDLLOVERRIDES="mscoree,mshtml="
  if [ ! -f "$WINEPREFIX/.pellucida-ready-2" ]; then
    echo "windows: making the wine prefix $WINEPREFIX"
    # A server left running on the prefix (persistent, below) would keep the
    # wait for the settings to be written from ever ending.
    wineserver -k 2>/dev/null || true
    mkdir -p "$WINEPREFIX"
    wineboot -i </dev/null >/dev/null 2>&1
    wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f </dev/null >/dev/null 2>&1
    wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f </dev/null >/dev/null 2>&1
    wineserver -w
    touch "$WINEPREFIX/.pellucida-ready-2"
  fi
  setsid wineserver -p </dev/null >/dev/null 2>&1 &
  setsid wine cmd /c exit </dev/null >/dev/null 2>&1 || true
}
