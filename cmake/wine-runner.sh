#!/bin/bash
# SPDX-License-Identifier: MIT
#
# Runs a Windows program under Wine, in a prefix of its own.
#   wine-runner.sh PREFIX program [argument...]
#   wine-runner.sh --stop PREFIX
#
# The first call creates the prefix. The Wine server keeps running for five minutes after the last program, so that each
# program starts in a few hundredths of a second. An empty command starts the Wine services first: services started by the
# program itself would keep its output pipe open.
set -u

stop=
if [[ $1 == --stop ]]; then
  stop=yes
  shift
fi
prefix=$1
shift

# Independent of the user: no display, no home folder.
unset DISPLAY WAYLAND_DISPLAY XDG_CONFIG_HOME XDG_DATA_HOME XDG_CACHE_HOME
export HOME=$prefix/home
export WINEPREFIX=$prefix WINEDEBUG=${WINEDEBUG:--all}
# No debugger, so that an unhandled fault ends the program at once. No menu entries on the host. No .NET and no HTML engine,
# because Wine would ask to download them.
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
  # The prefix and the services speak one language, whichever the first program is run in.
  unset LANG LANGUAGE LC_MESSAGES LC_CTYPE LC_TIME LOCPATH
  export LC_ALL=C.UTF-8
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
  (prepare) || exit 125
} 9>"$prefix.lock"

exec wine "$@"
