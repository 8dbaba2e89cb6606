"""The windows of the display and its keyboard, as a user has them."""
import contextlib
import time

from Xlib import XK, X, display, error
from Xlib.ext import xtest

PATIENCE = 30  # seconds
SETTLING = 0.2  # seconds


def wait_for(what, condition, patience=PATIENCE):
    end = time.monotonic() + patience
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.02)
    raise AssertionError(f"waited in vain for {what}")


class Desktop:
    MODIFIERS = {"ctrl": XK.XK_Control_L, "shift": XK.XK_Shift_L, "alt": XK.XK_Alt_L}

    def __init__(self):
        self.display = display.Display()
        self.root = self.display.screen().root
        self.keys = 0  # pressed so far; a key with modifiers counts once

    def _property(self, window, name):
        with contextlib.suppress(error.BadWindow):
            found = window.get_full_property(self.display.get_atom(name), X.AnyPropertyType)
            return found.value if found else None
        return None

    def _window(self, id):
        return self.display.create_resource_object("window", id)

    def active(self):
        """The id of the window with the keyboard, or 0."""
        value = self._property(self.root, "_NET_ACTIVE_WINDOW")
        return value[0] if value else 0

    def settled(self):
        """The id of the active window once it has been the same for a moment, as before a user's next key."""
        last, since = self.active(), time.monotonic()
        while time.monotonic() < since + SETTLING:
            time.sleep(0.02)
            if self.active() != last:
                last, since = self.active(), time.monotonic()
        return last

    def title(self, id):
        value = self._property(self._window(id), "_NET_WM_NAME") if id else None
        return value.decode() if value else ""

    def active_title(self):
        return self.title(self.active())

    def open_windows(self):
        return list(self._property(self.root, "_NET_CLIENT_LIST") or [])

    def popup_is_open(self):
        """Whether a menu or a list of completions is shown."""
        for window in self.root.query_tree().children:
            with contextlib.suppress(error.BadWindow, error.BadDrawable):
                now = window.get_attributes()
                if now.override_redirect and now.map_state == X.IsViewable and window.get_geometry().width > 50:
                    return True
        return False

    def press(self, key):
        """Presses a key such as "m", "Return" or "ctrl+shift+e"."""
        *modifiers, name = key.split("+")
        codes = [self.display.keysym_to_keycode(self.MODIFIERS[modifier]) for modifier in modifiers]
        codes.append(self.display.keysym_to_keycode(XK.string_to_keysym(name)))
        for code in codes:
            xtest.fake_input(self.display, X.KeyPress, code)
        for code in reversed(codes):
            xtest.fake_input(self.display, X.KeyRelease, code)
        self.display.sync()
        self.keys += 1
