# SPDX-License-Identifier: GPL-2.0-or-later
"""Why marks cannot be applied, in words for the user. On the worker that applies them."""

import gettext
import re

import dnf.exceptions
import hawkey

from .program import tr

# Name, version, release and architecture of a package.
PACKAGE = re.compile(r'[^\s-]\S*-[^\s-]+-[^\s-]+\.\w')


def clearest(lines):
    """The lines of a problem. Lines with names of packages come first. If any line has details, lines without details
    are left out.
    """
    text = 'conflicting requests'
    empty = (text, gettext.translation('libdnf', fallback=True).gettext(text))
    lines = list(lines)
    detailed = [line for line in lines if line not in empty] or lines
    return sorted(detailed, key=lambda line: PACKAGE.search(line) is None)


def refusal(failure, marks, objects, problems):
    """The exception with the reasons why no mark can be applied: one message, whatever has failed.

    The text of a failed resolution only repeats the problems, and is empty without problems. That of a mark that dnf
    refuses is itself a problem.
    """
    if isinstance(failure, dnf.exceptions.MarkingError):
        text = str(failure)
        if not any(text in line for lines in problems for line in lines):
            problems = problems + [[text]]
    if not problems and not objects:
        objects = marks.objects()
    return dnf.exceptions.Error(tr('The marks cannot be applied:\n{}\nNothing was changed. All marks stay.').format(
        reasonsOf(objects, problems)))


def reasonsOf(objects, problems):
    """A text that names each package and group once, followed by the lines of the problems that name the package or
    group. The other problems are at the end of the text.
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
