# Sourced by the scripts that build and test for Windows: Wine without windows on the screen, and a prefix that is
# kept, because a new one takes a while.
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
kept_prefix=${XDG_CACHE_HOME:-$HOME/.cache}/zrv/wine-prefix

make_kept_prefix() {
  need "running Windows programs" wine wine64
  [ -e "$kept_prefix/complete" ] && return 0
  rm -rf "$kept_prefix"
  mkdir -p "$kept_prefix"
  WINEPREFIX=$kept_prefix wineboot -i >/dev/null 2>&1
  WINEPREFIX=$kept_prefix wineserver -w
  touch "$kept_prefix/complete"
}
