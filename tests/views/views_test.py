#!/usr/bin/env python3
"""Checks what gdb and natvis show of the objects of Subject.cpp.

usage: views_test.py PROGRAM PREFIX ROOT     PREFIX: an installed copy; exits with 1 and what was found

The copy is moved, its library stripped of debug information, and what gdb prints compared with expected.txt and with the
session in docs/debugging.md: of the running program, of a core file, with views that are loaded by hand (as for a program
with the archive), and with the library's own debug information if it was built with it (lines beginning with "(library)"). Then the objects are printed with random bytes in them, and gdb
evaluates every expression in the natvis file.
"""
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

ADDRESS = re.compile(r'0x[0-9a-f]{10,}')
# gdb itself says this of a semaphore, whose class only the library knows.
IN_ORDER = "warning: RTTI symbol not found for class '(anonymous namespace)::WordSemaphore'"
WRONG = re.compile(r'FOUND|Traceback|Python Exception|^warning: RTTI', re.M)


def table(root, with_library):
    text = (root / 'tests/views/expected.txt').read_text(encoding='utf-8')
    lines = dict(line.split(' = ', 1) for line in text.splitlines())
    for name in [name for name in lines if name.startswith('(library) ')]:
        answer = lines.pop(name)
        if with_library:
            lines[name[10:]] = answer
    page = (root / 'docs/debugging.md').read_text(encoding='utf-8')
    for setting, name, answer in re.findall(r'^\(gdb\) (with .* -- )?print (.*)\n\$\d+ = (.*)$', page, re.M):
        lines[f'{setting}{name} '] = ADDRESS.sub('ADDRESS', answer)
    return lines


def compare(lines):
    for expression, expected in lines.items():
        setting, dashes, name = expression.rpartition('-- ')
        text = gdb.execute(f'{setting}{dashes}print {name}', to_string=True)
        text = re.sub(r'^(warning: .*\n)*\$\d+ = ', '', text.strip())
        found = re.sub(r'\+\d+>', '+N>', ADDRESS.sub('ADDRESS', text))
        if found != expected:
            print(f'FOUND    {expression} = {found}\nEXPECTED {expression} = {expected}')


def objects():
    frame = gdb.selected_frame()
    values = {symbol.name: symbol.value(frame) for symbol in frame.block() if symbol.is_variable}
    return {name: value.referenced_value() if value.type.code == gdb.TYPE_CODE_REF else value
            for name, value in values.items()}


def print_damaged():
    """Each object with random bytes and pointers in it: something is printed, and in time."""
    chance, process, values = random.Random(1), gdb.selected_inferior(), objects()
    del values['strings']  # gdb's own view
    for name, value in values.items():
        address, size = int(value.address), value.type.sizeof
        saved = bytes(process.read_memory(address, size))
        for _ in range(30):
            damaged = bytearray(saved)
            for _ in range(chance.randint(1, 3)):
                i = chance.randrange(size)
                damaged[i] = chance.choice((0, 1, 0x7F, 0xFF, chance.randrange(256)))
                if size >= 8 and chance.random() < 0.5:
                    place = int(chance.choice(list(values.values())).address)
                    new = chance.choice((0, 1, 1 << 63, chance.getrandbits(64), place))
                    damaged[i // 8 * 8:i // 8 * 8 + 8] = new.to_bytes(8, 'little')
            process.write_memory(address, bytes(damaged[:size]))
            try:
                gdb.execute(f'print {name}', to_string=True)
            except gdb.error as why:
                print(f'FOUND {name} damaged: {why}')
        process.write_memory(address, saved)


def examples(value, expression, depth):
    """Objects by the names of their classes without template arguments: this one, its bases and its members."""
    type_ = value.type.strip_typedefs().unqualified()
    if type_.code == gdb.TYPE_CODE_STRUCT and type_.name:
        yield views.without_arguments(type_.name), (expression, type_)
        for field in type_.fields() if depth else []:
            if field.is_base_class:
                yield from examples(value.cast(field.type), f'(*({field.type}*)&{expression})', depth - 1)
            elif field.name and hasattr(field, 'bitpos'):
                yield from examples(value[field], f'{expression}.{field.name}', depth - 1)


def natvis_expressions(entry, space):
    for element in entry.iter():
        if element.get('Condition'):
            yield element.get('Condition'), 'print'
        text = (element.text or '').strip()
        for part in re.findall(r'\{([^{}]*)\}', text) if element.tag == space + 'DisplayString' else [text] if text else []:
            for expression in re.fullmatch(r'(.*?)(?:,(?:\[(.*)\])?[a-z]+)?', part).groups():
                if expression:
                    yield expression, 'whatis'


def check_natvis(path):
    found = {}
    for name, value in objects().items():
        for class_, example in examples(value, name, 2):
            found.setdefault(class_, example)
    space = '{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}'
    for entry in xml.etree.ElementTree.parse(path).iter(space + 'Type'):
        for name in [entry.get('Name')] + [other.get('Name') for other in entry.iter(space + 'AlternativeType')]:
            place, type_ = found[views.without_arguments(name)]
            for text, command in natvis_expressions(entry, space):
                expression = text.replace('$T1', str(type_.template_argument(0))) if '$T1' in text else text
                expression = re.sub(r'\bthis\b', f'(&{place})', expression)
                expression = re.sub(  # members are those of the object
                    r'(?<![\w.>:])[A-Za-z_]\w*',
                    lambda word: f'{place}.{word[0]}' if reading.find_member(type_, word[0]) else word[0], expression)
                try:
                    gdb.execute(f'{command} {expression}', to_string=True)
                except gdb.error as why:
                    print(f'FOUND natvis: {name}: {text}: {why}')


def in_debugger():
    root, what = pathlib.Path(os.environ['VIEWS_ROOT']), os.environ['VIEWS_RUN']
    for setting in ('style enabled off', 'host-charset UTF-8', 'may-call-functions off', 'width 0'):
        gdb.execute('set ' + setting)
    if what != 'core':
        gdb.execute(f'set environment LD_LIBRARY_PATH {os.environ["VIEWS_LIBRARY"]}')
        gdb.execute('tbreak main')
        gdb.execute('run')
        gdb.execute('info locals', to_string=True)  # nothing is constructed yet
        gdb.execute('tbreak LookHere')
        gdb.execute('continue')
    gdb.execute('up', to_string=True)
    compare(table(root, what == 'library'))
    if what == 'stripped':
        global reading, views  # gdb has loaded them by now
        import libqvxsys_reading as reading  # pylint: disable=import-error,import-outside-toplevel
        import libqvxsys_printers as views  # pylint: disable=import-error,import-outside-toplevel
        gdb.execute(f'generate-core-file {os.environ["VIEWS_CORE"]}')
        check_natvis(root / 'support/natvis/qvxsys.natvis')
        print_damaged()
    print('completed')


def run_gdb(what, folder, program, root):
    core = str(folder / 'core')
    environment = {**os.environ, 'LC_ALL': 'C.UTF-8', 'VIEWS_RUN': what, 'VIEWS_ROOT': root, 'VIEWS_CORE': core,
                   'VIEWS_LIBRARY': str(next(folder.rglob('libqvxsys.so.1')).parent)}
    load = ['-ex', f'source {next(folder.rglob("libqvxsys_printers.py"))}'] if what == 'by hand' else \
        ['-iex', f'add-auto-load-safe-path {folder}']
    command = ['gdb', '-nx', '-batch', *load, '-x', __file__, program]
    text = subprocess.run(command + [core] * (what == 'core'), env=environment, stdin=subprocess.DEVNULL, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=250).stdout
    good = 'completed' in text and not WRONG.search(text.replace(IN_ORDER, ''))
    print(f'{what}: as expected' if good else text)
    return good


def main(program, prefix, root):
    if shutil.which('gdb') is None:
        print('no gdb')
        return 77
    with tempfile.TemporaryDirectory() as name:
        moved = pathlib.Path(name) / 'moved here'
        shutil.copytree(prefix, moved, symlinks=True)
        library = next(moved.rglob('libqvxsys.so.1')).resolve()
        sections = subprocess.run(['readelf', '-SW', library], stdout=subprocess.PIPE, text=True, check=True).stdout
        good = '.debug_info' not in sections or run_gdb('library', moved, program, root)
        subprocess.run(['strip', '-g', library], check=True)
        return 0 if good and all(run_gdb(what, moved, program, root) for what in ('stripped', 'core', 'by hand')) else 1


try:
    import gdb
except ImportError:
    sys.exit(main(*sys.argv[1:]))
in_debugger()
