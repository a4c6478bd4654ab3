#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the public operations of classes with the rows of the tables that the tests of all operations read.

A row is an initialiser, or a call that makes one, which begins with a string literal: {"File::copy", ...} covers every overload of copy,
{"File::copy(SmartPtr<File const>, bool)", ...} that one alone. What stands behind ": " is free text."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Headers, and where the tables for their classes are. A class of a header is checked if it is named.
SUBJECTS = [
    ({'kvbase/strings/kv_string.h': ['String']}, 'tests/strings/string_operations*'),
    ({'kvbase/filesystem/file_system_item.h': ['FileSystemItem'],
      'kvbase/filesystem/directory.h': ['Directory'],
      'kvbase/filesystem/file.h': ['File'],
      'kvbase/filesystem/file_system_iterator.h': ['FileSystemIterator', 'DirectoryIterator', 'FileIterator'],
      'kvbase/filesystem/file_collection_iterator.h': ['FileCollectionIterator']},
     'tests/filesystem/*_table.cpp'),
]

# The registration of a class, which is the same for all of them.
REGISTRATION = {'KVBASE_DECLARE_CLASS'}

COMMENT = re.compile(r'//[^\n]*|/\*.*?\*/', re.S)
ROW = re.compile(r'[{(]\s*"(\w+)::([^"]+)"')


def body_of(text, name):
    """What stands between the braces of a class."""
    start = re.search(r'\bclass\s+(?:[A-Z_0-9]+\s+)*' + name + r'\b(?!\s*(?:::|;))[^;{]*\{', text)
    if start is None:
        sys.exit(f'error: no class {name}')
    depth, at = 1, start.end()
    while depth > 0:
        depth += {'{': 1, '}': -1}.get(text[at], 0)
        at += 1
    return text[start.end():at - 1]


def declarations(body):
    """The public members, without the bodies of functions."""
    depth, member, access = 0, '', 'private'
    for piece in re.split(r'(\b(?:public|protected|private)\s*:(?!:)|[{};])', body):
        word = piece.rstrip(': \n')
        if depth == 0 and word in ('public', 'protected', 'private'):
            access, member = word, ''
        elif piece == '{':
            depth += 1
            if depth == 1 and '(' in member:
                if access == 'public':
                    yield member
                member = ''
        elif piece == '}':
            depth -= 1
        elif depth == 0 and piece == ';':
            if access == 'public':
                yield member
            member = ''
        elif depth == 0:
            member += piece


def split_outside(text, separator):
    """Splits where no bracket is open."""
    parts, depth = [''], 0
    for unit in text:
        depth += (unit in '(<[') - (unit in ')>]')
        if unit == separator and depth == 0:
            parts.append('')
        else:
            parts[-1] += unit
    return parts


def matching(text, start):
    depth = 0
    for at in range(start, len(text)):
        depth += (text[at] in '(<') - (text[at] in ')>')
        if depth == 0:
            return at
    return len(text)


def squeezed(text):
    return re.sub(r'\s+', '', text)


def types_of(parameters):
    """The types in a parameter list: no names, no default values, no blanks."""
    types = []
    for parameter in split_outside(parameters, ','):
        parameter = parameter.split('=')[0].strip()
        words = re.fullmatch(r'(.*[\s*&>])([A-Za-z_]\w*)', parameter, re.S)
        builtin = {'int', 'char', 'bool', 'long', 'short', 'double', 'float', 'const', 'unsigned', 'wchar', 'char32_t'}
        if words and words[2] not in builtin and words[1].strip() not in ('struct', 'unsigned'):
            parameter = words[1]
        types.append(squeezed(parameter))
    return ','.join(types)


def operations_of(header, name):
    """Pairs of a member's name and its parameter types."""
    members = [member.strip() for member in declarations(body_of(COMMENT.sub('', (ROOT / header).read_text()), name))]
    is_abstract = any(re.search(r'=\s*0$', member) for member in members)
    for member in members:
        while member.startswith('template'):
            member = member[matching(member, member.index('<')) + 1:].strip()
        if re.match(r'(friend|using|typedef|enum|class|struct|static_assert)\b|(virtual\s+)?~', member):
            continue
        found = re.search(r'\b(operator\s*(?:\(\)|[^\s\w(]+|[^()]+?)|\w+)\s*\(', member)
        if found is None or re.search(r'=\s*(delete|0)$', member):
            continue
        # An abstract class is made and assigned by those derived from it, and its pure members are theirs.
        if is_abstract and found[1] in (name, 'operator='):
            continue
        called = re.sub(r'operator\s+(?=\W)', 'operator', ' '.join(found[1].split()))
        opening = found.end() - 1
        yield called, types_of(member[opening + 1:matching(member, opening)])


def rows_of(pattern):
    for path in sorted(path for path in ROOT.glob(pattern) if path.suffix in ('.h', '.cpp')):
        text = path.read_text()
        for row in ROW.finditer(text):
            called = row[2].split(': ')[0].strip()
            parts = re.fullmatch(r'(operator\(\)|[^(]+)(?:\((.*)\))?', called)
            place = f'{path.relative_to(ROOT)}:{text.count(chr(10), 0, row.start()) + 1}'
            yield row[1], parts[1].strip(), None if parts[2] is None else squeezed(parts[2]), place


def main():
    faults, count = [], 0
    for headers, pattern in SUBJECTS:
        operations = {(name, *operation) for header, names in headers.items() for name in names
                      for operation in operations_of(header, name) if operation[0] not in REGISTRATION}
        count += len(operations)
        rows = [row for row in rows_of(pattern) if row[0] in {name for names in headers.values() for name in names}]
        covered = set()
        for name, called, types, place in rows:
            fitting = {operation for operation in operations
                       if operation[:2] == (name, called) and types in (None, operation[2])}
            covered |= fitting
            if not fitting:
                shown = called if types is None else f'{called}({types})'
                faults.append(f'{place}: error: there is no public {name}::{shown}')
        for name, called, types in sorted(operations - covered):
            faults.append(f'error: no row in {pattern} for {name}::{called}({types})')
    print('\n'.join(faults) if faults else f'{count} operations have their row')
    return 1 if faults else 0


if __name__ == '__main__':
    sys.exit(main())
