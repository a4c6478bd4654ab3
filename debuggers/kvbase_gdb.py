# SPDX-License-Identifier: MIT
"""Shows KVBase's types in gdb. Load it with: source debuggers/kvbase_gdb.py

String, StringVal   "text", with inner NULs if its length is known; NIL
Directory           its full name                               "C:\\a\\"
File                its full name; NIL without a base name       "C:\\a\\b.txt"
SmartPtr            null, or the object and the number of its owners

`set print elements` limits the length of a text, and `print/r` shows the fields.
"""

import gdb
import gdb.printing

UNIT_SIZE = 2
PIECE = 256  # units read at a time if the length is not known


def element_limit():
    """The number of characters to show; None for all."""
    return gdb.parameter("print elements")


def read_units(address, count):
    return bytes(gdb.selected_inferior().read_memory(address, count * UNIT_SIZE))


def find_terminator(address, limit):
    """The bytes before the first NUL unit; without a NUL among the first `limit` units, at least those units."""
    found = b""
    while limit is None or len(found) < limit * UNIT_SIZE:
        start = address + len(found)
        # A read never crosses the end of a page, because the next page may not be readable.
        count = min(PIECE, (4096 - start % 4096) // UNIT_SIZE) or 1
        piece = read_units(start, count)
        for at in range(0, len(piece), UNIT_SIZE):
            if piece[at:at + UNIT_SIZE] == b"\0\0":
                return found + piece[:at]
        found += piece
    return found


def payload_text(payload):
    """The text of a StringVal and whether it was cut."""
    units = int(payload.address) + payload.type.sizeof
    length = int(payload["length_"])
    limit = element_limit()
    if length < 0:
        data = find_terminator(units, None if limit is None else limit + 1)
        length = len(data) // UNIT_SIZE
    else:
        data = read_units(units, length if limit is None else min(length, limit))
    is_cut = limit is not None and length > limit
    if is_cut:
        data = data[:limit * UNIT_SIZE]
    return data.decode("utf-16-le", "surrogatepass"), is_cut


def string_text(string):
    """The text of a String; None for NIL."""
    payload = string["payload_"]
    return payload_text(payload.dereference())[0] if int(payload) else None


ESCAPES = {"\0": "\\0", "\n": "\\n", "\r": "\\r", "\t": "\\t", '"': '\\"'}


def quoted(text, is_cut=False):
    """Control characters and lone surrogates become escapes. Backslashes stay, because paths are full of them."""
    shown = []
    for character in text:
        if character in ESCAPES:
            shown.append(ESCAPES[character])
        elif ord(character) < 0x20 or 0xD800 <= ord(character) < 0xE000:
            shown.append("\\u%04X" % ord(character))
        else:
            shown.append(character)
    return '"' + "".join(shown) + '"' + ("..." if is_cut else "")


def vector_items(vector):
    item, end = vector["_M_impl"]["_M_start"], vector["_M_impl"]["_M_finish"]
    while item != end:
        yield item.dereference()
        item += 1


def directory_text(directory):
    text = string_text(directory["root_"]) or ""
    if directory["absolute_"]:
        text += "\\"
    for level in vector_items(directory["levels_"]):
        text += (string_text(level) or "") + "\\"
    return text or ".\\"


class StringValPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return quoted(*payload_text(self.value))


class StringPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        payload = self.value["payload_"]
        return quoted(*payload_text(payload.dereference())) if int(payload) else "NIL"


class DirectoryPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return quoted(directory_text(self.value))


class FilePrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        name = string_text(self.value["baseName_"])
        if name is None:
            return "NIL"
        extension = string_text(self.value["extension_"])
        if extension:
            name += "." + extension
        directory = self.value["directory_"]["object_"]
        if not int(directory):
            return quoted(name) + " without directory"
        return quoted(directory_text(directory.dereference()) + name)


class SmartPtrPrinter:
    def __init__(self, value):
        self.pointer = value["object_"]

    def to_string(self):
        if not int(self.pointer):
            return "null"
        pointer = self.pointer.cast(self.pointer.dynamic_type)
        target = pointer.dereference()
        count = int(target["references_"]["word_"]["_M_i"])
        owners = "1 owner" if count == 1 else "%d owners" % count
        printer = gdb.default_visualizer(target)
        what = printer.to_string() if printer else "%s at %#x" % (target.type.unqualified(), int(pointer))
        return "%s, %s" % (what, owners)


def build_printer():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("KVBase")
    for name, pattern, printer in (
        ("String", "^KV_1_1::String$", StringPrinter),
        ("StringVal", "^KV_1_1::StringVal$", StringValPrinter),
        ("Directory", "^KV_1_1::Directory$", DirectoryPrinter),
        ("File", "^KV_1_1::File$", FilePrinter),
        ("SmartPtr", "^KV_1_1::SmartPtr<.*>$", SmartPtrPrinter),
    ):
        printers.add_printer(name, pattern, printer)
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), build_printer(), replace=True)
