"""Plays Nautilus for the extension: stand-ins for its modules, a menu for a remote and a local
selection, then activates the local one's item. Usage: nautilus_menu.py EXTENSION.py PATH..."""
import importlib.util, pathlib, sys, types

class Item:
    def __init__(self, **props): self.props = props
    def connect(self, signal, *call): self.call = call

class File:
    def __init__(self, uri): self.get_uri = lambda: uri
    def get_uri_scheme(self): return self.get_uri().split(":")[0]

stub = types.SimpleNamespace
sys.modules["gi"] = types.ModuleType("gi")
sys.modules["gi.repository"] = stub(GObject=stub(GObject=type("GObject", (), {})), Nautilus=stub(
    MenuProvider=type("MenuProvider", (), {}), MenuItem=Item))
module_spec = importlib.util.spec_from_file_location("extension", sys.argv[1])
extension = importlib.util.module_from_spec(module_spec)
module_spec.loader.exec_module(extension)
extension.SHARE_COMMAND = ["parley-share", "--action", "fav"]  # nobody clicks here
provider = extension.ParleyShareMenuProvider()
# Nautilus before 43 passes the window first.
print(len(provider.get_file_items(None, [File("sftp://h/x"), File("file:///x")])))
item, = provider.get_file_items([File(pathlib.Path(p).as_uri()) for p in sys.argv[2:]])
print(item.props["label"])
item.call[0](item, *item.call[1:])
