# SPDX-License-Identifier: GPL-2.0-or-later
"""The reasons for the user why marks cannot be applied. The worker that applies marks runs this module."""

import gettext
import re

import dnf.exceptions
import hawkey

from .program import tr

# A pattern for the name, version, release and architecture of a package.
PACKAGE = re.compile(r'[^\s-]\S*-[^\s-]+-[^\s-]+\.\w')


def clearest(lines):
    """The lines of a problem, with the lines that name packages first. If any line has details, lines without details
    are left out.
    """
    text = 'conflicting requests'
    empty = (text, gettext.translation('libdnf', fallback=True).gettext(text))
    lines = list(lines)
    detailed = [line for line in lines if line not in empty] or lines
    return sorted(detailed, key=lambda line: PACKAGE.search(line) is None)


def refusal(failure, marks, objects, problems):
    """Returns an exception with the reasons why no mark can be applied. The message is the same for all kinds of
    failures.

    If a resolution has failed, the failure's own text adds nothing to the problems. If dnf has refused a mark, the
    failure's text is one more problem.
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
    """The exception if a transaction would change nothing."""
    return dnf.exceptions.Error(tr('There is nothing to do.'))


def reasonsOf(objects, problems):
    """A text that lists the packages and groups. Below each name are the lines of the problems that contain this name.
    The other problems are at the end of the text.
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
    """The names of a package or group in dnf's reasons."""
    if not isinstance(each, hawkey.Package):
        return [str(each)]
    return [str(each), each.name]
