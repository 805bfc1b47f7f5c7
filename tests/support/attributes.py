# SPDX-License-Identifier: GPL-2.0-or-later
"""Reads from the C++ sources which attributes of dnf's objects the program uses."""
import collections
import os
import re

SOURCES = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

# A row in Fields.cpp. `label` is empty for Fields::Name. If the value of a field does not come from an attribute,
# `attribute` is empty.
Field = collections.namedtuple('Field', 'name label source attribute uses')


def _read(*parts):
    with open(os.path.join(SOURCES, *parts), encoding='utf-8') as stream:
        return stream.read()


def of_records():
    """The names of the attributes that the program stores in records."""
    names = re.findall(r'\{ScriptValues::\w+Attribute,\s*"(\w+)"\}', _read('yumio', 'ScriptValues.cpp'))
    assert 'name' in names and 'version' in names, names
    return names


def fields():
    """The fields of packages and groups, in the order of a description."""
    code = _read('yumio', 'Fields.cpp')
    rows = code[code.index('Fields::Row rows[] = {'):code.index('\n};') + 1]
    found = []
    for name, label, rest in re.findall(
            r'\brow\(Fields::(\w+),\s*(?:nullptr|QT_TRANSLATE_NOOP\("Fields",\s*"(.*?)"\)),\s*(.*?)\),\n', rows, re.S):
        source = re.match(r'From::(\w+)', rest)
        attribute = re.search(r'"(\w+)"', rest)
        found.append(Field(name, label, source.group(1) if source else 'Record',
                           attribute.group(1) if attribute else '', rest))
    assert len(found) == rows.count('row(Fields::'), found
    return found


def of_fields(source):
    """The attributes of all fields with this source, for example "Text"."""
    names = [field.attribute for field in fields() if field.source == source]
    assert names, source
    return names
