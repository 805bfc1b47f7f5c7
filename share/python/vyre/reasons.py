# SPDX-License-Identifier: GPL-2.0-or-later
"""The texts that explain why marks cannot be applied. The worker that applies the marks runs this module."""

import gettext
import re

import dnf.exceptions
import hawkey

from .program import tr

# A pattern for the name, version, release and architecture of a package.
PACKAGE = re.compile(r'[^\s-]\S*-[^\s-]+-[^\s-]+\.\w')


def clearest(lines):
    """The lines of one of dnf's problems. The lines that name packages come first. The line "conflicting requests",
    which has no details, is left out if the problem has other lines.
    """
    text = 'conflicting requests'
    empty = (text, gettext.translation('libdnf', fallback=True).gettext(text))
    lines = list(lines)
    detailed = [line for line in lines if line not in empty] or lines
    return sorted(detailed, key=lambda line: PACKAGE.search(line) is None)


def refusal(failure, marks, objects, problems):
    """Returns the exception that gives the reasons why no mark can be applied.

    failure: the exception that dnf has raised. If it is a MarkingError (dnf has refused a mark), its text is added to
    dnf's problems. If it is a DepsolveError, dnf's problems already contain its text.
    """
    if isinstance(failure, dnf.exceptions.MarkingError):
        text = str(failure)
        if not any(text in line for lines in problems for line in lines):
            problems = problems + [[text]]
    if not problems and not objects:
        objects = marks.objects()
    return dnf.exceptions.Error(tr('The marks cannot be applied:\n'
                                   '{}\nNothing was changed. VYRE keeps all marks.').format(
        reasonsOf(objects, problems)))


def nothingToDo():
    """Returns the exception for a transaction that would change nothing."""
    return dnf.exceptions.Error(tr('There is nothing to do.'))


def reasonsOf(objects, problems):
    """A text that lists these packages and groups. Each name is followed by the lines of all problems that contain the
    name. The text ends with the problems that contain none of the names.
    """
    byWord = {}
    for number, lines in enumerate(problems):
        for word in set(word for line in lines for word in line.split()):
            byWord.setdefault(word.rstrip(',;:'), set()).add(number)
    parts, reported = [], set()
    for name, words in sorted({str(each): wordsFor(each) for each in objects}.items()):
        numbers = sorted(set().union(*(byWord.get(word, ()) for word in words)))
        reported.update(numbers)
        parts.append(name + ''.join('\n    ' + line for number in numbers for line in problems[number]))
    rest = [line for number, lines in enumerate(problems) if number not in reported for line in lines]
    return '\n'.join(parts + rest)


def wordsFor(each):
    """The names that dnf's problems use for a package or group."""
    if not isinstance(each, hawkey.Package):
        return [str(each)]
    return [str(each), each.name]
