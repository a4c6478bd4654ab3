#!/bin/bash
# SPDX-License-Identifier: MIT
#
# Runs a Windows program under Wine, in a prefix of its own.
#   wine-runner.sh PREFIX program [argument...]
#   wine-runner.sh --stop PREFIX
#
# The first call makes the prefix. The server stays for a while between programs, so that each starts in a few hundredths of a
# second, and it is primed: services started by the first program would otherwise keep that program's output pipe open.
set -u

stop=
if [[ $1 == --stop ]]; then
  stop=yes
  shift
fi
prefix=$1
shift

# Nothing of the user's: no display, no home folder.
unset DISPLAY WAYLAND_DISPLAY XDG_CONFIG_HOME XDG_DATA_HOME XDG_CACHE_HOME
export HOME=$prefix/home
export WINEPREFIX=$prefix WINEDEBUG=${WINEDEBUG:--all}
# No debugger: an unhandled fault shall end the program at once. No menu entries on the host. No .NET, no HTML engine: nobody
# asks to download them.
export WINEDLLOVERRIDES="mscoree,mshtml,winedbg.exe,winemenubuilder.exe="

if [[ -n $stop ]]; then
  [[ ! -d $prefix ]] || wineserver -k
  exit 0
fi

create_prefix() {
  rm -rf "$prefix"
  mkdir -p "$HOME"
  wineboot -i || return
  # Message boxes really run with the null driver, and tests answer them; without a driver they fail at once.
  wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f || return
  wineserver -k
  wineserver -w
  touch "$prefix/ready"
}

# Nothing started here may inherit the lock (descriptor 9) or the caller's pipes: both would stay open with the server.
prepare() {
  if [[ ! -e $prefix/ready ]]; then
    create_prefix >"$prefix.log" 2>&1 9>&- </dev/null || {
      echo "wine-runner: cannot make the prefix; see $prefix.log" >&2
      return 1
    }
  fi
  if wineserver -p300 >/dev/null 2>&1 9>&- </dev/null; then
    wine cmd /c exit >/dev/null 2>&1 9>&- </dev/null
  fi
}

mkdir -p "$(dirname "$prefix")"
{
  flock 9
  prepare || exit 125
} 9>"$prefix.lock"

exec wine "$@"
