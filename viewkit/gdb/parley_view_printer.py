# gdb pretty-printer for the view toolkit: a platform::View (or any class derived from it), or a
# pointer to one, prints as its debugDescription, the view and its whole subtree one line per
# view. The text comes from the stopped process itself (parleyViewDebugDescription), so the
# printer needs a live process; without one it prints the address only.
#
# Programs that link the view kit carry this file in their .debug_gdb_scripts section; gdb
# runs it once the program's folder is on its auto-load safe path, for example:
#   gdb -iex "add-auto-load-safe-path /path/to/build" program
import gdb

VIEW_CLASS = "platform::View"
DESCRIBE_FUNCTION = "parleyViewDebugDescription"


def derives_from_view(value_type):
    value_type = value_type.strip_typedefs()
    if value_type.code != gdb.TYPE_CODE_STRUCT:
        return False
    if value_type.tag == VIEW_CLASS:
        return True
    return any(field.is_base_class and derives_from_view(field.type)
               for field in value_type.fields())


class ViewPrinter:
    def __init__(self, pointer, shows_address):
        self.pointer = pointer
        self.shows_address = shows_address

    def to_string(self):
        address = int(self.pointer)
        prefix = "0x%x" % address if self.shows_address else ""
        if address == 0:
            return prefix
        try:
            view = self.pointer.cast(gdb.lookup_type(VIEW_CLASS).pointer())
            text = gdb.parse_and_eval(DESCRIBE_FUNCTION)(view).string()
        except gdb.error as error:
            return "%s <view at 0x%x: no description (%s)>" % (prefix, address, error)
        return prefix + text


def lookup_view_printer(value):
    value_type = value.type.strip_typedefs()
    if value_type.code == gdb.TYPE_CODE_PTR and derives_from_view(value_type.target()):
        return ViewPrinter(value, True)
    if value_type.code == gdb.TYPE_CODE_REF and derives_from_view(value_type.target()):
        return ViewPrinter(value.referenced_value().address, False)
    if derives_from_view(value_type) and value.address is not None:
        return ViewPrinter(value.address, False)
    return None


def register(objfile):
    printers = objfile.pretty_printers if objfile is not None else gdb.pretty_printers
    if lookup_view_printer not in printers:
        printers.append(lookup_view_printer)


register(gdb.current_objfile())
