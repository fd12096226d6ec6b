"""Nautilus: "Share to Parley" in the context menu of one or more selected files and folders.

Loaded by nautilus-python from its extensions folder. The menu item runs parley-share with the
selection's file URIs, as a desktop's %U would pass them.
"""

import os
import subprocess
import sys

from gi.repository import GObject, Nautilus

# The program and the arguments put before the URIs.
SHARE_COMMAND = ["parley-share"]

LABELS = {
    "en": "Share to Parley",
    "de": "Mit Parley teilen",
    "es": "Compartir con Parley",
    "fr": "Partager avec Parley",
}


def label():
    """The label in the first of the user's languages that has one, English otherwise."""
    locales = os.environ.get("LANGUAGE", "").split(":")
    for name in ("LC_ALL", "LC_MESSAGES", "LANG"):
        if os.environ.get(name):
            locales.append(os.environ[name])
            break
    for locale in locales:
        language = locale.split(".")[0].split("@")[0].split("_")[0]
        if language in LABELS:
            return LABELS[language]
    return LABELS["en"]


class ParleyShareMenuProvider(GObject.GObject, Nautilus.MenuProvider):
    def get_file_items(self, *args):
        # Nautilus 43 and later pass the files only; earlier versions the window first.
        files = args[-1]
        uris = [f.get_uri() for f in files if f.get_uri_scheme() == "file"]
        # Remote files would need a copy first: no item unless every file is local.
        if not files or len(uris) != len(files):
            return []
        item = Nautilus.MenuItem(name="ParleyShare::ShareToParley", label=label(), tip=label())
        item.connect("activate", self.share, uris)
        return [item]

    def share(self, _item, uris):
        # Not waited for: the sheet stays up while Nautilus goes on. A missing program is
        # reported on Nautilus's stderr rather than raised into it.
        try:
            subprocess.Popen(SHARE_COMMAND + uris, stdin=subprocess.DEVNULL)
        except OSError as error:
            print("parley-share: cannot start:", error, file=sys.stderr)
