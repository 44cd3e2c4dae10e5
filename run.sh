#!/usr/bin/env bash
# Builds the editor and starts it: ./run.sh [FILE …]
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"

say_display() {
  cat >&2 <<'TEXT'
Kiv Audio Editor needs a display to open its window.
  On this machine's own screen:    start it from a terminal of the desktop session.
  Over ssh:                        ssh -X (X11 forwarding), then ./run.sh FILE
  A display you know the name of:  DISPLAY=:0 ./run.sh FILE
  On a machine without any screen: apt-get install xvfb openbox x11vnc, then
                                   Xvfb :7 -screen 0 1280x800x24 & DISPLAY=:7 openbox & DISPLAY=:7 ./run.sh FILE
The command line editor needs none: build/release/kiv --help
TEXT
}

# A display named but not there ends in a message nobody understands: look for its socket first.
has_display() {
  [ -n "${WAYLAND_DISPLAY:-}" ] && return 0
  [ -n "${QT_QPA_PLATFORM:-}" ] && [ "${QT_QPA_PLATFORM%%:*}" != xcb ] && return 0
  [ -n "${DISPLAY:-}" ] || return 1
  case "$DISPLAY" in
    :*) number="${DISPLAY#:}"; number="${number%%.*}"
        [ -S "/tmp/.X11-unix/X$number" ] || grep -q "@/tmp/.X11-unix/X$number\$" /proc/net/unix ;;
    *) return 0 ;;
  esac
}

"$here/packaging/install.sh" build run
cmake -S "$here" --preset release >"$here/.build.log" 2>&1 && cmake --build "$here/build/release" -j2 --target kiv-audio-editor kiv >>"$here/.build.log" 2>&1 || {
  tail -n 30 "$here/.build.log" >&2
  echo "The build failed; the whole log is .build.log" >&2
  exit 1
}
has_display || { say_display; exit 1; }
exec "$here/build/release/kiv-audio-editor" "$@"
