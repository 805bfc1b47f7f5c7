# SPDX-License-Identifier: GPL-2.0-or-later
"""Finds the texts of the program in its sources.

Python sources are parsed completely. In C++ sources, the module finds only calls and the strings in their arguments.
"""
import ast
import os
import re

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
FOLDERS = ('advisories', 'app', 'app/base', 'history', 'packagetable', 'python', 'repo', 'services', 'widgets',
           'yumio')

# A comment, a string or a character constant. Quotation marks and slashes inside one of these tokens do not begin
# another token.
_TOKEN = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])+\'', re.DOTALL)
_ESCAPES = {'n': '\n', 't': '\t', '"': '"', '\\': '\\', "'": "'"}


def read(*parts):
    with open(os.path.join(TOP, *parts), encoding='utf-8') as stream:
        return stream.read()


class Text:
    """A string with its place and the calls around it.

    Each call is a pair of the function and the number of the argument that contains the string. The last call is the
    innermost one.
    """

    def __init__(self, value, calls, place):
        self.value = value
        self.calls = calls
        self.place = place

    def __repr__(self):
        return '{}: {!r} in {}'.format(self.place, self.value, ' '.join('{}:{}'.format(*call) for call in self.calls))

    @property
    def functions(self):
        return [function for function, _ in self.calls]


def cpp_texts(code, place):
    """All strings in C++ code."""
    found = []
    stack = []  # open parentheses: [function, argument, depth of other brackets]
    pending = None  # a string that the next token may continue: the compiler joins adjacent strings
    position = 0
    length = len(code)

    def finish():
        nonlocal pending
        if pending is not None:
            value, line = pending
            found.append(Text(value, [(entry[0], entry[1]) for entry in stack if entry[0]],
                              '{}:{}'.format(place, line)))
            pending = None

    while position < length:
        token = _TOKEN.match(code, position)
        if token is not None:
            text = token.group()
            if text[0] == '"':
                value = re.sub(r'\\(.)', lambda match: _ESCAPES.get(match.group(1), match.group()), text[1:-1])
                if pending is None:
                    pending = (value, code.count('\n', 0, position) + 1)
                else:
                    pending = (pending[0] + value, pending[1])
            elif text[0] == "'":
                finish()
            position = token.end()
            continue
        character = code[position]
        if not character.isspace():
            finish()
        if character == '(':
            name = re.search(r'([A-Za-z_]\w*)\s*$', code[:position][-80:])
            name = name.group(1) if name else ''
            # For "QMessageBox box(...)", record a call of QMessageBox, not of box.
            declared = re.search(r'([A-Z]\w*)\s+[a-z]\w*\s*$', code[:position][-120:])
            stack.append([declared.group(1) if declared else name, 0, 0])
        elif character == ')' and stack:
            stack.pop()
        elif stack and character in '[{':
            stack[-1][2] += 1
        elif stack and character in ']}':
            stack[-1][2] -= 1
        elif stack and character == ',' and stack[-1][2] == 0:
            stack[-1][1] += 1
        position += 1
    finish()
    return found


def all_cpp_texts():
    found = []
    for folder in FOLDERS:
        for name in sorted(os.listdir(os.path.join(TOP, folder))):
            if name.endswith('.cpp'):
                place = folder + '/' + name
                found += cpp_texts(read(folder, name), place)
    return found


def is_translated(text):
    return text.calls and text.calls[-1][0] in ('tr', 'QT_TR_NOOP')


# Python ---------------------------------------------------------------------------------------------------------

def _names(node):
    """The parts of a dotted name, without arguments: logging.getLogger('dnf').error -> logging getLogger error."""
    if isinstance(node, ast.Attribute):
        return _names(node.value) + [node.attr]
    if isinstance(node, ast.Call):
        return _names(node.func)
    return [node.id] if isinstance(node, ast.Name) else []


def _literal(node):
    """The text of an expression, without tr() and format(), with {} for added variables; None if it has no text."""
    if isinstance(node, ast.Constant) and isinstance(node.value, str):
        return node.value
    if isinstance(node, ast.Call) and isinstance(node.func, ast.Name) and node.func.id == 'tr':
        return _literal(node.args[0])
    if isinstance(node, ast.Call) and isinstance(node.func, ast.Attribute) and node.func.attr == 'format':
        return _literal(node.func.value)
    if isinstance(node, ast.BinOp) and isinstance(node.op, ast.Add):
        left = _literal(node.left)
        return left if left is None or _literal(node.right) == '' else left + (_literal(node.right) or '{}')
    return None


def script_files():
    """The paths of the script and of its modules, as arguments of read()."""
    directory = os.path.join('share', 'python', 'vyre')
    return [('share', 'python', 'YumIO.py')] + [
        (directory, name) for name in sorted(os.listdir(os.path.join(TOP, directory))) if name.endswith('.py')]


def python_messages(*parts):
    """The messages of a Python program: the texts of its exceptions, warnings and questions."""
    tree = ast.parse(read(*parts))
    found, silent = [], set()

    def add(text, node):
        # A text without words has only variable parts, so it is not a message.
        if text is not None and re.search('[A-Za-z]{3}', re.sub(r'\{\}|%s', '', text)):
            found.append(Text(text, [], '{}:{}'.format('/'.join(parts), node.lineno)))

    for node in ast.walk(tree):
        if isinstance(node, ast.Expr) and isinstance(node.value, ast.Constant):
            silent.add(node.value)  # a docstring
        elif isinstance(node, ast.Raise) and isinstance(node.exc, ast.Call) and node.exc.args:
            if _names(node.exc.func)[-1] not in ('AttributeError', 'SystemExit'):
                add(_literal(node.exc.args[0]), node)
        elif isinstance(node, ast.Call) and node.args:
            names = _names(node.func)
            if names[-1] in ('error', 'warning', 'critical') and 'getLogger' in names or \
                    names[-1] in ('remark', 'showActivity', 'awaitLock', 'introduceListing') or \
                    names in (['parts', 'append'], ['sys', 'stdout', 'write'], ['show'], ['askForKey'],
                              ['dnf', 'exceptions', 'Error']):
                add(_literal(node.args[0]), node)
            elif names == ['tr'] and (_literal(node.args[0]) or '').startswith('{}: the '):  # a line of a question
                add(_literal(node.args[0]), node)
            elif names[-1] == 'showReading' and len(node.args) == 2:
                add(_literal(node.args[1]), node)
            elif names[-1] in ('debug', 'info') or names == ['dnf', 'i18n', '_']:  # the debug log, and texts of dnf
                silent.update(ast.walk(node))
        elif isinstance(node, ast.Return) and node.value is not None:
            value = node.value.orelse if isinstance(node.value, ast.IfExp) else node.value
            literal = _literal(value)
            add(literal if literal is not None and literal.startswith('\n') else None, node)
    # Any other string that looks like a sentence also counts as a message.
    known = [text.value for text in found]
    for node in ast.walk(tree):
        if isinstance(node, ast.Constant) and isinstance(node.value, str) and node not in silent and \
                re.match(r'(VYRE|[A-Z][a-z]+) (\S+ )+\S+[.:?]$', node.value) and \
                not any(node.value in value for value in known):
            add(node.value, node)
    return found


def python_translated(*parts):
    """The texts that a Python program passes to tr()."""
    return [_literal(node) for node in ast.walk(ast.parse(read(*parts)))
            if isinstance(node, ast.Call) and isinstance(node.func, ast.Name) and node.func.id == 'tr']
