# Sourced: Wine in the project's own prefix, the same on every machine.

export WINEPREFIX=${VELORA_WINEPREFIX:-$build/wine} WINEARCH=win64
export WINEDEBUG=${WINEDEBUG:--all}
# Neither of the two add-ons that Wine offers to download, and no entries in the user's menus.
export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe=d'
# Programs find the shipped DLLs, or those of another build.
export WINEPATH=${VELORA_DLLS:-$build/windows/bin}
# The Unix locale decides Wine's: this one gives English (United States), and 1252 for the ANSI code
# page, which narrow paths and texts go through.
export LC_ALL=C.UTF-8
unset LANG LANGUAGE DISPLAY WAYLAND_DISPLAY
# Wine links Documents and its like to the home directory: give it one of its own.
export HOME=$WINEPREFIX/home

# Directly, since the wrapper /usr/bin/wine warns of a missing 32-bit Wine.
wine=/usr/lib/wine/wine64
wineserver=/usr/lib/wine/wineserver64

# The registry of a new prefix. Its presence says that the prefix is finished.
pristine=$WINEPREFIX/pristine

# Makes the prefix unless a finished one is there; of two callers at once the second waits.
make_prefix() {
  [[ ! -e $pristine ]] || return 0
  (
    flock 9
    [[ ! -e $pristine ]] || exit 0
    rm -rf "$WINEPREFIX"
    mkdir -p "$HOME"
    # Closed (9>&-) in what outlives this function.
    "$wine" wineboot --init 9>&-
    "$wineserver" --wait 9>&-
    mkdir "$pristine.new"
    cp "$WINEPREFIX"/*.reg "$pristine.new"
    mv "$pristine.new" "$pristine"
  ) 9>"$WINEPREFIX.lock"
}

# Back to a new prefix: a program that crashed may have left settings and data behind.
reset_prefix() {
  stop_wineserver
  cp "$pristine"/*.reg "$WINEPREFIX"
  rm -rf "$WINEPREFIX/drive_c/ProgramData/Comms"
}

# Keeps one wineserver, and with it the prefix's services, for many programs: Debian's default ends
# both with each program, and a start costs half a second. Begun here, the services do not hold the
# output of the first program that needs them.
start_wineserver() {
  "$wineserver" --persistent || true # fails where one is running
  "$wine" wineboot >/dev/null 2>&1
}

# Ends what runs in the prefix, and waits for the end.
stop_wineserver() {
  "$wineserver" --kill || true # fails where none is running
  "$wineserver" --wait
}
