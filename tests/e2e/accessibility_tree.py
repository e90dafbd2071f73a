#!/usr/bin/python3
"""The program as a screen reader meets it.

Runs lumora against lumora-sim on a pseudo-terminal and reads the AT-SPI tree: the status
panels are named by what they show (wavelength, reading, On-line, activity) and described by
what they are; panels 3 and 5 are push buttons that take the focus and open their windows on
Enter and Space; the Spectrum plot and its read-out are named and described. Also checks the
trace of the panel writes and the main window's caption on the X server.

Run under an X server and a D-Bus session with QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 (see
accessibility_tree.sh). Exit 77 when the accessibility bus cannot be reached.
"""
import json
import os
import re
import shutil
import socket
import sqlite3
import subprocess
import sys
import tempfile
import time

SKIP = 77

try:
    import pyatspi
except ImportError as e:
    print(f"SKIP: pyatspi cannot be loaded ({e})")
    sys.exit(SKIP)

failures = []


def check(ok, what):
    print(("ok    " if ok else "FAIL  ") + what)
    if not ok:
        failures.append(what)
    return ok


def wait_for(what, timeout=15.0, step=0.1):
    end = time.monotonic() + timeout
    while True:
        try:
            value = what()
        except Exception:  # the tree changes under us while windows come and go
            value = None
        if value or time.monotonic() > end:
            return value
        time.sleep(step)


def children(acc):
    try:
        return [acc.getChildAtIndex(i) for i in range(acc.childCount)]
    except Exception:
        return []


def find(acc, match, depth=0):
    """The first accessible under `acc`, depth first, for which `match` holds."""
    if acc is None or depth > 14:
        return None
    try:
        if match(acc):
            return acc
    except Exception:
        pass
    for c in children(acc):
        hit = find(c, match, depth + 1)
        if hit is not None:
            return hit
    return None


def role(acc):
    return acc.getRole()


def states(acc):
    return acc.getState()


def showing(acc):
    s = states(acc)
    return s.contains(pyatspi.STATE_SHOWING) or s.contains(pyatspi.STATE_VISIBLE)


def press(acc):
    action = acc.queryAction()
    for i in range(action.nActions):
        if action.getName(i).lower() in ("press", "click", "activate"):
            return action.doAction(i)
    raise RuntimeError(f"no press action on {acc.name!r}")


def click(acc):
    x, y, w, h = acc.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    pyatspi.Registry.generateMouseEvent(x + w // 2, y + h // 2, pyatspi.MOUSE_B1C)


def key(keysym):
    pyatspi.Registry.generateKeyboardEvent(keysym, None, pyatspi.KEY_SYM)


XK_Return, XK_space = 0xFF0D, 0x0020


def x_titles(pid):
    """The titles the X server holds for the windows of process `pid`."""
    titles = []
    out = subprocess.run(["xwininfo", "-root", "-children"], capture_output=True, text=True).stdout
    for wid in re.findall(r"^\s+(0x[0-9a-f]+)", out, re.M):
        props = subprocess.run(["xprop", "-id", wid, "_NET_WM_PID", "_NET_WM_NAME"], capture_output=True,
                               text=True).stdout
        if f"_NET_WM_PID(CARDINAL) = {pid}" not in props:
            continue
        m = re.search(r'_NET_WM_NAME\(UTF8_STRING\) = "(.*)"', props)
        if m:
            titles.append(m.group(1))
    return titles


def main():
    lumora, sim = sys.argv[1], sys.argv[2]
    run = tempfile.mkdtemp(prefix="lumora-a11y.")
    # A store with no "Software Name" row: the caption must stay empty.
    db = sqlite3.connect(os.path.join(run, "Lumora.db"))
    db.execute("CREATE TABLE system (ParaName TEXT COLLATE NOCASE, ParaValue TEXT)")
    db.execute("INSERT INTO system VALUES ('Default WL', '500')")
    db.commit()
    db.close()

    link, control = os.path.join(run, "com1"), os.path.join(run, "control")
    procs = [subprocess.Popen([sim, "--link", link, "--control", control, "--speed", "2"],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)]
    try:
        if not wait_for(lambda: os.path.exists(link) and os.path.exists(control), 10):
            print("FAIL  lumora-sim did not start")
            return 1
        env = dict(os.environ, LUMORA_COM1=link, LUMORA_DATA_DIR=run, QT_QPA_PLATFORM="xcb",
                   QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", LUMORA_TRACE=os.path.join(run, "trace.jsonl"))
        program = subprocess.Popen([lumora], env=env)
        procs.append(program)

        def application():
            desktop = pyatspi.Registry.getDesktop(0)
            for a in children(desktop):
                if a is not None and a.get_process_id() == program.pid:
                    return a
            return None

        app = wait_for(application, 20)
        if app is None:
            if program.poll() is not None:
                print(f"FAIL  lumora ended with {program.returncode}")
                return 1
            print("SKIP: the program never showed on the AT-SPI bus (is at-spi2-core installed?)")
            return SKIP
        return run_checks(app, program, control, os.path.join(run, "trace.jsonl"))
    finally:
        for p in reversed(procs):
            p.terminate()
            try:
                p.wait(5)
            except subprocess.TimeoutExpired:
                p.kill()
        shutil.rmtree(run, ignore_errors=True)


def run_checks(app, program, control, trace):
    def top(name):
        return wait_for(lambda: next((w for w in children(app) if w.name == name and showing(w)), None), 10)

    port = top("COM Port Setting")
    if not check(port is not None, "the port dialog comes up"):
        return 1
    press(find(port, lambda a: role(a) == pyatspi.ROLE_PUSH_BUTTON and a.name == "Port open"))

    frame = wait_for(lambda: next((w for w in children(app) if role(w) == pyatspi.ROLE_FRAME), None))
    bar = find(frame, lambda a: role(a) == pyatspi.ROLE_STATUS_BAR)
    panels = {c.description: c for c in children(bar)}

    def name_of(description):
        return panels[description].name

    live = wait_for(lambda: name_of("Instrument state") == "On-line" and name_of("Activity").startswith("OK.")
                    and name_of("Reading").endswith("A"), 40, 0.2)
    check(live, "a screen reader hears On-line, the live reading and the activity: "
          + ", ".join(f"{d}={p.name!r}" for d, p in panels.items()))
    check(name_of("Wavelength") == "500nm", "the wavelength panel is named 500nm")
    titles = x_titles(program.pid)
    check(any(t.strip() == "" for t in titles) and "Lumora" not in titles,
          f"with no Software Name the caption is empty, not the program's name: {titles!r}")

    with socket.socket(socket.AF_UNIX) as s:
        s.connect(control)
        s.sendall(b"sample neutral:0.3\n")
        s.recv(256)
    check(wait_for(lambda: name_of("Reading") == "0.300A", 10), "the reading's name follows the instrument: "
          + repr(name_of("Reading")))

    for description, text, keysym, window in (
            ("Click to set the wavelength and the reading", "Lambda...", XK_Return, "Lambda"),
            ("Click to set the com port", "Port...", XK_space, "COM Port Setting")):
        p = panels[description]
        check(role(p) == pyatspi.ROLE_PUSH_BUTTON and p.name == text
              and states(p).contains(pyatspi.STATE_FOCUSABLE), f"{text} is a focusable push button")
        # A click on the wavelength panel makes the main window the active one, as a user's would.
        click(panels["Wavelength"])
        wait_for(lambda: states(frame).contains(pyatspi.STATE_ACTIVE), 5)
        p.queryComponent().grabFocus()
        focused = wait_for(lambda: states(p).contains(pyatspi.STATE_FOCUSED), 5)
        check(focused, f"{text} takes the focus")
        key(keysym)
        opened = top(window)
        check(opened is not None, f"{'Enter' if keysym == XK_Return else 'Space'} on {text} opens {window}")
        if opened is not None:
            press(find(opened, lambda a: role(a) == pyatspi.ROLE_PUSH_BUTTON and a.name in ("Exit", "Cancel")))
            wait_for(lambda: all(w.name != window or not showing(w) for w in children(app)), 5)

    # Spectrum: the plot square and its read-out.
    item = find(frame, lambda a: role(a) == pyatspi.ROLE_MENU_ITEM and a.name == "Spectrum")
    press(item)
    setup = top("Setup Spectrum")
    if check(setup is not None, "Spectrum's setup dialog comes up"):
        press(find(setup, lambda a: role(a) == pyatspi.ROLE_PUSH_BUTTON and a.name == "OK"))
    plot = wait_for(lambda: find(frame, lambda a: a.name == "Spectrum plot"), 10)
    if check(plot is not None, "the plot square is named 'Spectrum plot'"):
        check(plot.description == "400 to 800 nm, 0.0000 to 3.0000 ABS. No curves.",
              f"its description tells the view and the curves: {plot.description!r}")
    readout = find(frame, lambda a: a.name.startswith("WL="))
    if check(readout is not None, "the cross-hair read-out is in the tree"):
        check(states(readout).contains(pyatspi.STATE_FOCUSABLE) and "Enter" in readout.description,
              f"the read-out is focusable and says what Enter does: {readout.description!r}")

    check(trace_has_clickable_panels(trace), "the trace holds the writes of panels 3 and 5")
    return 0 if not failures else 1


def trace_has_clickable_panels(path):
    writes = set()
    with open(path) as f:
        for line in f:
            o = json.loads(line)
            if "panel" in o:
                writes.add((o["panel"], o["text"]))
    return (3, "Lambda...") in writes and (5, "Port...") in writes


if __name__ == "__main__":
    sys.exit(main())
