#!/usr/bin/env bash
# Runs accessibility_tree.py (the program's AT-SPI tree) under a private X server and a private
# D-Bus session, where Qt's AT-SPI bridge starts the accessibility bus. Exit 77 (skipped) when
# the pieces that make up AT-SPI are not installed: at-spi2-core, dbus, python3-pyatspi, xvfb,
# x11-utils (scripts/install-deps installs them).
set -u
here=$(cd "$(dirname "$0")" && pwd)
for tool in xvfb-run dbus-run-session xwininfo xprop /usr/libexec/at-spi-bus-launcher; do
  command -v "$tool" >/dev/null 2>&1 || { echo "SKIP: $tool is not installed, AT-SPI cannot start"; exit 77; }
done
/usr/bin/python3 -c 'import pyatspi' 2>/dev/null || { echo "SKIP: python3-pyatspi is not installed"; exit 77; }
exec xvfb-run -a -s "-screen 0 1280x1024x24" \
  dbus-run-session -- /usr/bin/python3 "$here/accessibility_tree.py" "$@"
