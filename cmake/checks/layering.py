#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares what the library's files include with the table in layering.txt, and says what is not allowed."""
import fnmatch
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)
SYSTEM = re.compile(r'^\s*#\s*(?:if|ifdef|ifndef|elif)\b.*\b(_WIN32|_WIN64|WIN32|__linux__|__unix__|__ELF__|__MINGW\w*|'
                    r'_MSC_VER|__GNUC__|__clang__)\b', re.M)
WINDOWS_HEADERS = {'windows.h', 'winbase.h', 'windef.h', 'winnt.h', 'winuser.h', 'winver.h', 'winnls.h', 'shlobj.h',
                   'shellapi.h', 'shlwapi.h', 'commctrl.h', 'dbghelp.h', 'tlhelp32.h', 'psapi.h', 'io.h', 'direct.h'}


class Table:
    def __init__(self, path):
        self.layers, self.uses, self.allowed = [], {}, {}
        self.patterns = {'system': [], 'windows': []}
        for number, line in enumerate(path.read_text().splitlines(), 1):
            words, _, reason = line.partition('#')
            words = words.split()
            if not words:
                continue
            kind, rest = words[0], words[1:]
            if kind == 'layer':
                self.layers.append((rest[0], rest[1:]))
            elif kind == 'uses':
                self.uses[rest[0]] = set(rest[1:])
            elif kind == 'allow' and len(rest) == 2 and reason.strip():
                self.allowed[tuple(rest)] = False
            elif kind in self.patterns:
                self.patterns[kind] += rest
            else:
                sys.exit(f'{path.name}:{number}: not understood (an exception needs two files and a reason)')
        names = {name for name, _ in self.layers}
        for name in set(self.uses) | set().union(*self.uses.values()):
            if name not in names:
                sys.exit(f'{path.name}: there is no layer {name}')

    def layer(self, file):
        for name, patterns in self.layers:
            if any(fnmatch.fnmatch(file, pattern) for pattern in patterns):
                return name
        return None

    def may_include(self, file, included):
        source, target = self.layer(file), self.layer(included)
        if source == target or target in self.uses.get(source, ()):
            return True
        if (file, included) in self.allowed:
            self.allowed[file, included] = True
            return True
        return False

    def matches(self, kind, file):
        return any(fnmatch.fnmatch(file, pattern) for pattern in self.patterns[kind])


def faults_of(file, table):
    text = (ROOT / file).read_text(encoding='utf-8')
    if table.layer(file) is None:
        yield f'{file}: belongs to no layer'
        return
    for bracket, included in INCLUDE.findall(text):
        if included.startswith('kvbase/'):
            if not (ROOT / included).is_file():
                yield f'{file}: {included} does not exist'
            elif not table.may_include(file, included):
                yield f'{file} ({table.layer(file)}) may not include {included} ({table.layer(included)})'
        elif bracket == '"':
            yield f'{file}: "{included}" is not written whole, from kvbase/ on'
        elif included.lower() in WINDOWS_HEADERS and not table.matches('windows', file):
            yield f'{file}: <{included}> belongs below platform/'
    if not table.matches('system', file):
        for name in SYSTEM.findall(text):
            yield f'{file}: asks for the system ({name}); that is for platform/, export.h and text_unit.h'


def main():
    table = Table(ROOT / 'cmake/checks/layering.txt')
    files = sorted(str(path.relative_to(ROOT)) for path in (ROOT / 'kvbase').rglob('*') if path.suffix in ('.h', '.cpp'))
    faults = [fault for file in files for fault in faults_of(file, table)]
    faults += [f'layering.txt: allow {" ".join(pair)} is not needed' for pair, used in table.allowed.items() if not used]
    print('\n'.join(faults) or f'{len(files)} files')
    return 1 if faults or not files else 0


sys.exit(main())
