# SPDX-License-Identifier: MIT
"""Shows KVBase's types in gdb. Load it with: source debuggers/kvbase_gdb.py

String, StringVal   "text", with inner NULs if its length is known; NIL
Directory           its full name                               "C:\\a\\"
File                its full name; NIL without a base name       "C:\\a\\b.txt"
SmartPtr            null, or the object and the number of its owners
Module              its name and state, its symbols
SymbolTable         the number of its symbols, and each with its number
mZClass             the class, its module and its base; all classes below it
ObserverInfo        whether it expires
InfoStringMap       the same, and each entry
Vec3d               (x, y, z)
ScanPtColor         its fields; ScanPtColorExt too

`print *KV_1_1::BaseNode::Class()` shows the class tree. `set print elements` limits the length of a text and the number
of items, and `print/r` shows the fields.
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


def unit_text(pointer):
    """The text at a pointer to units; empty for null."""
    address = int(pointer)
    return find_terminator(address, element_limit()).decode("utf-16-le", "surrogatepass") if address else ""


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


def aligned(address, alignment):
    return (address + alignment - 1) // alignment * alignment


def map_items(tree):
    """Keys and values of a std::map or std::multimap, in order. The nodes are not asked for by their type, because a
    program may have no debug data of it: an item stands behind the links of its node."""
    kind = tree.type.strip_typedefs()
    key_type, value_type = kind.template_argument(0), kind.template_argument(1)
    header = tree["_M_t"]["_M_impl"]["_M_header"]
    node = header["_M_left"]
    while int(node) != int(header.address):
        key = aligned(int(node) + header.type.sizeof, max(key_type.alignof, value_type.alignof))
        value = aligned(key + key_type.sizeof, value_type.alignof)
        yield (gdb.Value(key).cast(key_type.pointer()).dereference(),
               gdb.Value(value).cast(value_type.pointer()).dereference())
        node = next_node(node)


def next_node(node):
    if int(node["_M_right"]):
        node = node["_M_right"]
        while int(node["_M_left"]):
            node = node["_M_left"]
        return node
    parent = node["_M_parent"]
    while int(node) == int(parent["_M_right"]):
        node, parent = parent, parent["_M_parent"]
    # Behind the last node of a tree whose root has no right child, the loop has gone round: root and header are each
    # other's parents.
    return parent if int(node["_M_right"]) != int(parent) else node


def map_size(tree):
    return int(tree["_M_t"]["_M_impl"]["_M_node_count"])


def map_children(tree):
    """What a printer with the hint "map" gives: key and value in turns."""
    for number, pair in enumerate(map_items(tree)):
        for part, item in enumerate(pair):
            yield "[%d]" % (2 * number + part), item


def counted(number, word, words):
    return "1 %s" % word if number == 1 else "%d %s" % (number, words)


def directory_text(directory):
    return string_text(directory["path_"]) or ".\\"


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
        owners = counted(count, "owner", "owners")
        printer = gdb.default_visualizer(target)
        what = printer.to_string() if printer else "%s at %#x" % (target.type.unqualified(), int(pointer))
        return "%s, %s" % (what, owners)


class ModulePrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        name = self.value["moduleName_"]
        text = "module " + (quoted(string_text(name.dereference()) or "") if int(name) else "without name")
        if not self.value["initialised_"]:
            return text + (", ended" if int(name) else ", not started")
        is_translated = int(self.value["resourceModule_"]) != int(self.value["codeModule_"])
        return text + (", translated" if is_translated else "")

    def children(self):
        symbols = self.value["resourceSymbols_"]
        if int(symbols):
            yield "symbols", symbols.dereference()


class SymbolTablePrinter:
    def __init__(self, value):
        self.symbols = value["symbolToValue"]

    def to_string(self):
        return counted(map_size(self.symbols), "symbol", "symbols")

    def children(self):
        return map_children(self.symbols)

    def display_hint(self):
        return "map"


class ClassRecordPrinter:
    """The record of a class. The classes derived from mZClass add no field."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        text = "class " + quoted(unit_text(self.value["name_"]))
        name = self.value["module_"].dereference()["moduleName_"]
        if int(name):
            text += " of module " + quoted(string_text(name.dereference()) or "")
        parent = self.value["parent_"]
        if int(parent):
            text += ", derived from " + quoted(unit_text(parent.dereference()["name_"]))
        version = int(self.value["version_"]["value"])
        return text + (", version %d" % version if version else "")

    def children(self):
        child = self.value["firstChild_"]
        while int(child):
            yield unit_text(child.dereference()["name_"]), child.dereference()
            child = child.dereference()["nextSibling_"]


def expiry(info):
    return "expires" if info["expire_"] else "stays"


class ObserverInfoPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return expiry(self.value)


class InfoStringMapPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "%s, %s" % (counted(map_size(self.value["infos_"]), "entry", "entries"), expiry(self.value))

    def children(self):
        return map_children(self.value["infos_"])

    def display_hint(self):
        return "map"


class VectorPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "(%s)" % ", ".join(self.value[name].format_string() for name in "xyz")


class ScanPointPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        components = self.value["color"]["_M_elems"]
        color = " ".join(str(int(components[i])) for i in range(4))
        text = "%s, value %d, color %s" % (self.value["position"].format_string(), int(self.value["value"]), color)
        has_extra = any(field.name == "extra" for field in self.value.type.strip_typedefs().fields())
        return text + (", extra %d" % int(self.value["extra"]) if has_extra else "")


def build_printer():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("KVBase")
    for name, pattern, printer in (
        ("String", "^KV_1_1::String$", StringPrinter),
        ("StringVal", "^KV_1_1::StringVal$", StringValPrinter),
        ("Directory", "^KV_1_1::Directory$", DirectoryPrinter),
        ("File", "^KV_1_1::File$", FilePrinter),
        ("SmartPtr", "^KV_1_1::SmartPtr<.*>$", SmartPtrPrinter),
        ("Module", "^KV_1_1::Module$", ModulePrinter),
        ("SymbolTable", "^KV_1_1::SymbolTable$", SymbolTablePrinter),
        ("mZClass", "^KV_1_1::mZClass$|::ClassCreator$", ClassRecordPrinter),
        ("ObserverInfo", "^KV_1_1::ObserverInfo$", ObserverInfoPrinter),
        ("InfoStringMap", "^KV_1_1::InfoStringMap$", InfoStringMapPrinter),
        ("Vec3d", "^KV_1_1::Vec3d<.*>$", VectorPrinter),
        ("ScanPtColor", "^KV_1_1::ScanPtColor(Ext)?<.*>$", ScanPointPrinter),
    ):
        printers.add_printer(name, pattern, printer)
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), build_printer(), replace=True)
