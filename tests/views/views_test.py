#!/usr/bin/env python3
"""Checks what gdb and natvis show of the objects of Subject.cpp.

usage: views_test.py PROGRAM PREFIX ROOT     PREFIX: an installed copy; exits with 1 and one line per finding

The copy is moved, its library stripped of debug information, and the table in expected.txt compared with what gdb
prints: of the running program, of a core file, and with the library's own debug information where it was built with it
(lines beginning with "(library)"). The session in docs/debugging.md is checked alike. Then the objects are printed with
random bytes in them, and every expression in the natvis file is evaluated by gdb.
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

HERE = pathlib.Path(__file__).parent
ADDRESS = re.compile(r'0x[0-9a-f]{10,}')


def table(own_debug_information):
    lines = [line for line in (HERE / 'expected.txt').read_text(encoding='utf-8').splitlines() if line]
    special = {line[10:].split(' = ')[0]: line[10:] for line in lines if line.startswith('(library) ')}
    for line in lines:
        if not line.startswith('(library) '):
            expression = line.split(' = ')[0]
            yield special.get(expression, line) if own_debug_information else line


def session(root):
    """What the page shows gdb to answer, in the form of the table."""
    text = (root / 'docs/debugging.md').read_text(encoding='utf-8')
    pairs = re.findall(r'^\(gdb\) (with .* -- )?print (.*)\n\$\d+ = (.*)$', text, re.M)
    return [f'{setting}{name} = {ADDRESS.sub("ADDRESS", answer)}' for setting, name, answer in pairs]


def shown(expression):
    before, _, name = expression.rpartition('-- ')
    text = gdb.execute(f'{before}{"-- " if before else ""}print {name}', to_string=True)
    text = re.sub(r'^warning: .*\n', '', text)
    text = re.sub(r'\+\d+>', '+N>', ADDRESS.sub('ADDRESS', re.sub(r'^\$\d+ = ', '', text.strip())))
    return f'{expression} = {text}'


def compare(lines):
    for line in lines:
        found = shown(line.split(' = ')[0])
        if found != line:
            print(f'FOUND    {found}\nEXPECTED {line}')


def objects():
    block = gdb.selected_frame().block()
    return {symbol.name: symbol.value(gdb.selected_frame()) for symbol in block if symbol.is_variable}


def referenced(value):
    return value.referenced_value() if value.type.code == gdb.TYPE_CODE_REF else value


def print_damaged():
    """Each object with random bytes and pointers in it: something is printed, and in time."""
    chance = random.Random(1)
    values = {name: referenced(value) for name, value in objects().items() if name != 'strings'}
    places = [int(value.address) for value in values.values()]
    process = gdb.selected_inferior()
    for name, value in values.items():
        address, size = int(value.address), value.type.sizeof
        saved = bytes(process.read_memory(address, size))
        for _ in range(12):
            damaged = bytearray(saved)
            for _ in range(chance.randint(1, 3)):
                i = chance.randrange(size)
                if chance.random() < 0.5:
                    damaged[i] = chance.choice((0, 1, 0x7F, 0xFF, chance.randrange(256)))
                elif size >= 8:
                    new = chance.choice((0, 1, 1 << 63, chance.getrandbits(64), chance.choice(places)))
                    damaged[i // 8 * 8:i // 8 * 8 + 8] = new.to_bytes(8, 'little')
            process.write_memory(address, bytes(damaged[:size]))
            try:
                gdb.execute(f'print {name}', to_string=True)
            except gdb.error as why:
                print(f'FOUND {name} damaged: {why}')
            process.write_memory(address, saved)


def places_of(value, expression, depth=2):
    """An expression for an object of each class, by its name without template arguments: objects, bases, members."""
    type_ = value.type.strip_typedefs().unqualified()
    if type_.code == gdb.TYPE_CODE_STRUCT and type_.name:
        yield views.without_arguments(type_.name), (expression, type_)
        for field in type_.fields():
            if depth and field.is_base_class:
                yield from places_of(value.cast(field.type), f'(*({field.type}*)&{expression})', depth)
            elif depth and field.name and hasattr(field, 'bitpos'):
                yield from places_of(value[field], f'{expression}.{field.name}', depth - 1)


def check_natvis(path):
    examples = {}
    for name, value in objects().items():
        for of, place in places_of(referenced(value), name):
            examples.setdefault(of, place)
    tree = xml.etree.ElementTree.parse(path)
    space = '{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}'
    count = 0
    for entry in tree.iter(space + 'Type'):
        for name in [entry.get('Name')] + [other.get('Name') for other in entry.iter(space + 'AlternativeType')]:
            place = examples.get(views.without_arguments(name))
            if place is None:
                print(f'FOUND natvis: no object of {name}')
                continue
            for text, is_condition in natvis_expressions(entry, space):
                count += 1
                try:
                    expression = in_gdb(text, *place)
                    gdb.execute(f'whatis {expression}', to_string=True)
                    if is_condition:
                        bool(gdb.parse_and_eval(expression))
                except gdb.error as why:
                    print(f'FOUND natvis: {name}: {text}: {why}')
    print(f'natvis: {count} expressions')


def natvis_expressions(entry, space):
    for element in entry.iter():
        if element.get('Condition'):
            yield element.get('Condition'), True
        texts = re.findall(r'\{([^{}]*)\}', element.text or '') if element.tag == space + 'DisplayString' else \
            [element.text] if (element.text or '').strip() else []
        for text in texts:
            expression, size = re.fullmatch(r'(.*?)(?:,(?:\[(.*)\])?(?:[a-z]+))?', text).groups()
            yield expression, False
            if size:
                yield size, False


def in_gdb(text, place, type_):
    """A natvis expression as one of gdb: members are those of the object at hand."""
    if '$T1' in text:
        text = text.replace('$T1', str(type_.template_argument(0)))
    text = re.sub(r'\bthis\b', f'(&{place})', text)
    return re.sub(r'(?<![\w.>:])[A-Za-z_]\w*',
                  lambda m: f'{place}.{m[0]}' if reading.find_member(type_, m[0]) else m[0], text)


def in_debugger():
    root, what, core = pathlib.Path(os.environ['VIEWS_ROOT']), os.environ['VIEWS_RUN'], os.environ['VIEWS_CORE']
    for setting in ('style enabled off', 'host-charset UTF-8', 'may-call-functions off', 'width 0'):
        gdb.execute('set ' + setting)
    if what != 'core':
        gdb.execute(f'set environment LD_LIBRARY_PATH {os.environ["VIEWS_LIBRARY"]}')
        gdb.execute('tbreak main')
        gdb.execute('run')
        gdb.execute('info locals', to_string=True)  # nothing is constructed yet
        gdb.execute('tbreak LookHere')
        gdb.execute('continue')
    global reading, views  # gdb has loaded them by now
    import libqvxsys_reading as reading  # pylint: disable=import-error,import-outside-toplevel
    import libqvxsys_printers as views  # pylint: disable=import-error,import-outside-toplevel
    gdb.execute('up 2', to_string=True)
    lines = list(table(what == 'library')) + session(root)
    compare(lines)
    if what == 'stripped':
        gdb.execute(f'generate-core-file {core}')
        check_natvis(root / 'support/natvis/qvxsys.natvis')
        print_damaged()
    print(f'{what}: compared {len(lines)}')


def run_gdb(what, folder, program, root):
    core = str(folder / 'core')
    environment = {**os.environ, 'LC_ALL': 'C.UTF-8', 'VIEWS_RUN': what, 'VIEWS_ROOT': str(root), 'VIEWS_CORE': core,
                   'VIEWS_LIBRARY': str(next(folder.rglob('libqvxsys.so.1')).parent)}
    command = ['gdb', '-nx', '-batch', '-iex', f'add-auto-load-safe-path {folder}', '-x', __file__, program]
    done = subprocess.run(command + ([core] if what == 'core' else []), env=environment, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=250, check=False)
    # gdb itself complains when it is told to print a semaphore, of which only the library knows the class.
    complaint = r"RTTI symbol not found for class (?!'\(anonymous namespace\)::WordSemaphore)"
    wrong = re.search(r'FOUND|Traceback|Python Exception|' + complaint, done.stdout) or \
        f'{what}: compared ' not in done.stdout
    print(done.stdout if wrong else f'{what}: as expected')
    return not wrong


def main(program, prefix, root):
    if shutil.which('gdb') is None:
        print('no gdb')
        return 77
    with tempfile.TemporaryDirectory() as name:
        moved = pathlib.Path(name) / 'moved here'
        shutil.copytree(prefix, moved, symlinks=True)
        library = next(moved.rglob('libqvxsys.so.1.0.0'))
        sections = subprocess.run(['readelf', '-SW', library], stdout=subprocess.PIPE, text=True, check=True).stdout
        runs = ['library'] if '.debug_info' in sections else []
        good = all(run_gdb(what, moved, program, root) for what in runs)
        subprocess.run(['strip', '-g', library], check=True)
        return 0 if good and all(run_gdb(what, moved, program, root) for what in ('stripped', 'core')) else 1


try:
    import gdb
except ImportError:
    sys.exit(main(*sys.argv[1:]))
in_debugger()
