"""Reads the share sheet as a screen reader does, over AT-SPI: waits (30 s at most) for the
application "parley-share" to show a window with push buttons, prints each element of the window
as "role|name|description", then presses the push button named PRESS if given.
Usage: sheet_reader.py [PRESS]. Exit status 1 when no such window or button showed in time."""
import sys, time
import pyatspi

def sheet():
    for app in pyatspi.Registry.getDesktop(0):
        if app is not None and app.name == "parley-share":
            for window in app:
                if any(e.getRoleName() == "push button" for e in window):
                    return window
    return None

deadline = time.monotonic() + 30
window = None
while window is None and time.monotonic() < deadline:
    try:
        window = sheet()
    except Exception:  # an application that went away while it was read
        window = None
    if window is None:
        time.sleep(0.1)  # nothing on the bus says when a window is ready: polled, bounded
if window is None:
    sys.exit("no parley-share window with push buttons on the accessibility bus")
print("%s|%s" % (window.getRoleName(), window.name))
for element in window:
    print("%s|%s|%s" % (element.getRoleName(), element.name, element.description), flush=True)
if len(sys.argv) > 1:
    button = next((e for e in window if e.getRoleName() == "push button" and e.name == sys.argv[1]),
                  None)
    if button is None:
        sys.exit("no push button named " + sys.argv[1])
    action = button.queryAction()
    names = [action.getName(i) for i in range(action.nActions)]
    if "Press" not in names:
        sys.exit("the button has no Press action: %s" % names)
    action.doAction(names.index("Press"))
