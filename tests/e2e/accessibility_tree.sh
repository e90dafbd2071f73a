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

# Xvfb picks a free display itself and tells its number, so parallel runs never share one.
work=$(mktemp -d "${TMPDIR:-/tmp}/lumora-xvfb.XXXXXX")
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$work/display" 2>"$work/xvfb.log" &
xvfb=$!
trap 'kill $xvfb 2>/dev/null; wait $xvfb 2>/dev/null; rm -rf "$work"' EXIT
for _ in $(seq 100); do
  [ -s "$work/display" ] && break
  sleep 0.1
done
[ -s "$work/display" ] || { echo "FAIL: Xvfb did not start"; cat "$work/xvfb.log"; exit 1; }
export DISPLAY=":$(tr -d '\n' < "$work/display")"

dbus-run-session -- /usr/bin/python3 "$here/accessibility_tree.py" "$@"
