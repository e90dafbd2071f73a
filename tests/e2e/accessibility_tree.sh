#!/usr/bin/env bash
# Runs accessibility_tree.py (the program's AT-SPI tree) under a private X server and a private
# D-Bus session, where Qt's AT-SPI bridge starts the accessibility bus. Exit 77 (skipped) when
# the pieces that make up AT-SPI are not installed: at-spi2-core, dbus, python3-pyatspi, xvfb,
# x11-utils (scripts/install-deps installs them).
set -u
here=$(cd "$(dirname "$0")" && pwd)
for tool in Xvfb dbus-run-session xwininfo xprop /usr/libexec/at-spi-bus-launcher; do
  command -v "$tool" >/dev/null 2>&1 || { echo "SKIP: $tool is not installed, AT-SPI cannot start"; exit 77; }
done

# Xvfb picks a free display itself and tells its number. Two servers started at the same moment
# can still race for one number, so the display must answer before it is used; else start again.
work=$(mktemp -d "${TMPDIR:-/tmp}/lumora-xvfb.XXXXXX")
xvfb=""
trap '[ -n "$xvfb" ] && kill $xvfb 2>/dev/null; wait 2>/dev/null; rm -rf "$work"' EXIT
for attempt in 1 2 3 4 5; do
  rm -f "$work/display"
  Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$work/display" 2>"$work/xvfb.log" &
  xvfb=$!
  for _ in $(seq 100); do
    [ -s "$work/display" ] && break
    sleep 0.1
  done
  if [ -s "$work/display" ]; then
    export DISPLAY=":$(tr -d '\n' < "$work/display")"
    sleep 0.3
    if kill -0 $xvfb 2>/dev/null && xwininfo -root >/dev/null 2>&1; then break; fi
  fi
  echo "Xvfb attempt $attempt did not answer"
  kill $xvfb 2>/dev/null; wait $xvfb 2>/dev/null; xvfb=""
  sleep 0.$((RANDOM % 9 + 1))
done
[ -n "$xvfb" ] || { echo "FAIL: Xvfb did not start"; cat "$work/xvfb.log"; exit 1; }

dbus-run-session -- /usr/bin/python3 "$here/accessibility_tree.py" "$@"
