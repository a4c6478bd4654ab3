# SPDX-License-Identifier: MIT
"""Run by gdb on the program displays: what its printers show, and whether the natvis file names members that exist.

Each case is named. The last line counts those that failed; a report as GoogleTest writes it goes to the file named by
KVBASE_DISPLAYS_REPORT.
"""

import os
import re
import sys
import xml.etree.ElementTree as ElementTree

import gdb

sys.dont_write_bytecode = True
HERE = os.path.dirname(os.path.abspath(__file__))
DEBUGGERS = os.path.join(HERE, "..", "..", "debuggers")

# Name of the case, expression, what gdb shows. A text in slashes is a regular expression.
DISPLAYS = (
    ("String: NIL", "nil", "NIL"),
    ("String: EMPTY", "empty", '""'),
    ("String: a text", "plain", '"scan007"'),
    ("String: control characters and quotes are escaped, backslashes stay", "escaped", r'"say \"a\b\"\n\t\u0001"'),
    ("String: beyond ASCII", "beyondAscii", '"\u00C4\u20AC\U0001F600"'),
    ("String: a lone surrogate", "surrogate", r'"a\uD83D"'),
    ("String: an inner NUL", "innerNul", r'"a\0b"'),
    ("String: a text that is not measured ends at its NUL", "unmeasured", '"left"'),
    ("String: more than the limit", "LIMIT 10 longText", '"0123456789"...'),
    ("String: just the limit", "LIMIT 20 longText", '"01234567890123456789"'),
    ("String: no limit", "LIMIT 0 longText", '"01234567890123456789"'),
    ("String: more than the limit, not measured", "LIMIT 3 unmeasured", '"lef"...'),
    ("StringVal: its text", "*plain.payload_", '"scan007"'),

    ("SmartPtr: null", "noDirectory", "null"),
    ("SmartPtr: the object and its owners", "directory", r'"C:\scans\today\", 3 owners'),
    ("SmartPtr: one owner", "share", r'"\\server\share\a\", 1 owner'),
    ("SmartPtr: a pointer to a base shows the object", "item", r'"C:\scans\today\a.txt", 2 owners'),
    ("Directory: absolute, with a drive", "*directory.object_", r'"C:\scans\today\"'),
    ("Directory: without root and levels", "*current.object_", r'".\"'),
    ("File: in its directory", "*file.object_", r'"C:\scans\today\a.txt"'),
    ("File: without extension", "*bareFile.object_", r'".\noextension"'),
    ("File: without base name", "unnamed", "NIL, 1 owner"),

    ("Module: started, with its symbols", "library", '/module "KVBase"(, translated)? = {symbols = 65 symbols = {.*}}/'),
    ("Module: not started", "fresh", "module without name, not started"),
    ("SymbolTable: empty", "noSymbols", "0 symbols"),
    ("SymbolTable: names and numbers in the order of the names", "LIMIT 4 symbols",
     '65 symbols = {["ID_C"...] = 57342, ["ID_C"...] = 40960...}'),
    ("mZClass: a class of the library", "fileRecord",
     'class "File" of module "KVBase", derived from "FileSystemItem" = '
     '{Versioned = class "Versioned", derived from "File", version 5}'),
    ("mZClass: a version and no module name", "versioned", 'class "Versioned", derived from "File", version 5'),
    ("mZClass: a record by its own type", "*(KV_1_1::InfoStringMap::ClassCreator const*)&infoRecord",
     'class "InfoStringMap" of module "KVBase", derived from "ObserverInfo"'),
    ("mZClass: the whole tree", "baseRecord",
     '/class "BaseNode" of module "KVBase" = {ObserverInfo = .*, FileSystemIterator = .*, FileSystemItem = .*}/'),

    ("ObserverInfo: expires", "observerInfo", "expires"),
    ("InfoStringMap: entries in their order", "*infos.object_",
     '3 entries, stays = {[NIL] = "", ["colour"] = NIL, ["Name"] = "scan007"}'),
    ("InfoStringMap: through a SmartPtr", "infos", "3 entries, stays, 1 owner"),
    ("InfoStringMap: empty", "noInfos", "0 entries, expires"),
    ("InfoStringMap: every node of a larger tree", "manyInfos",
     "9 entries, expires = {%s}" % ", ".join('["%s"] = "%s"' % (key, key) for key in "abcdefghi")),
    ("Vec3d", "vector", "(1.5, -2.25, 3)"),
    ("ScanPtColor", "point", "(1, 2, 3.5), value 40000, color 1 2 255 0"),
    ("ScanPtColor: a position that is a number", "number", "0, value 0, color 0 0 0 0"),
    ("ScanPtColorExt", "extended", "(0, 0, 0), value 0, color 0 0 0 0, extra 7"),
)

# --- The members that natvis names -----------------------------------------------------------------------------------------

# A type with parameters is looked at through one of its kind.
SAMPLES = {
    "KV_1_1::SmartPtr<*>": "KV_1_1::SmartPtr<KV_1_1::Directory const>",
    "KV_1_1::Vec3d<*>": "KV_1_1::Vec3d<float>",
    "KV_1_1::ScanPtColor<*>": "KV_1_1::ScanPtColor<KV_1_1::Vec3d<double> >",
    "KV_1_1::ScanPtColorExt<*>": "KV_1_1::ScanPtColorExt<KV_1_1::Vec3d<float> >",
}
NO_MEMBERS = {"this", "nullptr", "wchar_t", "sizeof", "true", "false"}
TOKEN = re.compile(r"\s*(->|::|[A-Za-z_]\w*|\d+|.)")


class Unknown(Exception):
    pass


def member_type(kind, name):
    """The type of a member of a class or of its bases."""
    kind = kind.strip_typedefs().unqualified()
    for field in kind.fields():
        if field.name == name:
            return field.type
        if field.is_base_class:
            try:
                return member_type(field.type, name)
            except Unknown:
                pass
    raise Unknown("%s has no member %s" % (kind, name))


def target_type(kind):
    """The type behind *, -> or [] of a pointer, an array or a std::vector."""
    kind = kind.strip_typedefs().unqualified()
    if kind.code in (gdb.TYPE_CODE_PTR, gdb.TYPE_CODE_ARRAY, gdb.TYPE_CODE_REF):
        return kind.target()
    return kind.template_argument(0)


class Expression:
    """Looks up each member that an expression of natvis names."""

    def __init__(self, text, kind, hidden):
        self.tokens = [token for token in TOKEN.findall(text) if token.strip()]
        self.kind = kind
        self.hidden = hidden
        self.members = set()
        self.at = 0

    def next_is(self, *tokens):
        return self.at < len(self.tokens) and self.tokens[self.at] in tokens

    def check(self, end=None):
        while self.at < len(self.tokens) and self.tokens[self.at] != end:
            token = self.tokens[self.at]
            self.at += 1
            if (token[0].isalpha() or token[0] == "_") and token not in NO_MEMBERS:
                self.check_chain(token)
        return self.members

    def check_chain(self, name):
        kind = self.member(self.kind, name)
        while self.next_is("->", ".", "["):
            operator = self.tokens[self.at]
            self.at += 1
            if operator == "[":
                self.check("]")
                self.at += 1
                kind = target_type(kind)
                continue
            if operator == "->":
                kind = target_type(kind)
            name = self.tokens[self.at]
            self.at += 1
            if str(kind.strip_typedefs().unqualified()).startswith("std::"):
                return  # the standard library's; the debugger knows its functions
            kind = self.member(kind, name)

    def member(self, kind, name):
        self.members.add(name)
        if name == self.hidden:
            raise Unknown(name)
        return member_type(kind, name)


def without_format(expression):
    """An expression without what tells the debugger how to show it: text,su and text,[length]su."""
    return re.sub(r",\s*(\[.*\])?\w*$", lambda match: " + " + match.group(1)[1:-1] if match.group(1) else "", expression)


def expressions_of(element):
    """The expressions in an element of natvis and below it, with the place of each."""
    if element.get("Condition"):
        yield element.get("Condition")
    text = (element.text or "").strip()
    if element.tag == "DisplayString":
        yield from re.findall(r"{([^}]*)}", text)
    elif text:
        yield text
    for child in element:
        yield from expressions_of(child)


def natvis_members(root, hidden=None):
    """The members named by each type; Unknown for one that does not exist, or is taken for one that does not."""
    space = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"
    members = {}
    for element in root.iter():
        element.tag = element.tag.replace(space, "")
    for element in root.findall("Type"):
        name = element.get("Name")
        kind = gdb.lookup_type(SAMPLES.get(name, name))
        members[name] = set()
        for expression in expressions_of(element):
            members[name] |= Expression(without_format(expression), kind, hidden).check()
    return members


def natvis_cases():
    with open(os.path.join(DEBUGGERS, "kvbase.natvis"), encoding="utf-8") as file:
        text = file.read()
    try:
        members = natvis_members(ElementTree.fromstring(text))
    except Unknown as error:
        yield "natvis: every member", "exists", str(error)
        return
    for name in ("StringVal", "String", "InterlockedCounter", "SmartPtr<*>", "Directory", "File", "Module", "SymbolTable",
                 "mZClass", "ObserverInfo", "InfoStringMap", "Vec3d<*>", "ScanPtColor<*>", "ScanPtColorExt<*>"):
        yield "natvis: %s" % name, "members", "members" if members.get("KV_1_1::" + name) else "none"
    # As after a member has been renamed in the headers.
    for member in sorted(set().union(*members.values())):
        try:
            natvis_members(ElementTree.fromstring(text), hidden=member)
            found = "not noticed"
        except Unknown:
            found = "noticed"
        yield "natvis: the loss of %s" % member, "noticed", found


# --- The run ----------------------------------------------------------------------------------------------------------------


def shown(expression):
    limit = re.match(r"LIMIT (\d+) ", expression)
    gdb.execute("set print elements %s" % (limit.group(1) if limit else 200))
    try:
        return gdb.execute("output " + expression[limit.end() if limit else 0:], to_string=True)
    except gdb.error as error:
        return "error: %s" % error


def display_cases():
    for name, expression, expected in DISPLAYS:
        text = shown(expression)
        if expected.startswith("/") and re.fullmatch(expected[1:-1], text):
            expected = text
        yield name, expected, text


def write_report(count, failures):
    path = os.environ.get("KVBASE_DISPLAYS_REPORT")
    if path:
        with open(path, "w", encoding="utf-8") as file:
            file.write('<testsuites tests="%d" failures="%d" errors="0" disabled="0"/>\n' % (count, failures))


def run():
    for setting in ("print pretty off", "print object off", "charset UTF-8", "width 0", "confirm off", "pagination off"):
        gdb.execute("set " + setting)
    gdb.execute("source " + os.path.join(DEBUGGERS, "kvbase_gdb.py"))
    gdb.execute("break allObjectsStand", to_string=True)
    gdb.execute("run", to_string=True)
    gdb.execute("up", to_string=True)
    count = failures = 0
    for cases in (display_cases, natvis_cases):
        for name, expected, text in cases():
            count += 1
            if text != expected:
                failures += 1
                print("FAILED: %s\n  expected %s\n  shown    %s" % (name, expected, text))
    gdb.execute("kill")
    return count, failures


try:
    number, failed = run()
except Exception as error:  # pylint: disable=broad-except
    print("FAILED: %s: %s" % (type(error).__name__, error))
    number, failed = 1, 1
write_report(number, failed)
print("%d displays, %d failed" % (number, failed))
gdb.execute("quit %d" % (1 if failed else 0))
