"""How gdb shows the types of qvxsys: texts as text, errors with their messages, events and futures by their state.

gdb loads this file with the installed library (libqvxsys.so.1.0.0-gdb.py); by hand: `source libqvxsys_printers.py`.

Nothing here runs code in the program: it reads memory, so that core files are shown as well as what runs. Objects may
be read before they are constructed and after they are destroyed. Whatever does not hold together is said in place of
the value, in angle brackets. Names of members are those of the public headers and need the debug information of the
program that uses them, or that of DebugTypes.cpp; what only the library's own debug information tells is left out
without it.
"""
import os
import re
import struct
import sys

import gdb
import gdb.printing

if __name__ == '__main__':  # loaded by hand
    sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
# pylint: disable=wrong-import-position
from libqvxsys_reading import (
    MARKER, MOST_CAUSES, MOST_ITEMS, Place, Unsound, address_of, at, atomic, class_name, class_of, has_member, memory, plain,
    pointee, quoted, require_class, string_block, string_units, text_units, view_units, whole, word)


# What the views are made of


class View:
    """A printer whose errors are said in place of the value."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        try:
            return self.text()
        except Exception as why:  # pylint: disable=broad-except
            return f'<{why}>'


class ViewWithParts(View):
    def children(self):
        try:
            self.text()
        except Exception:  # pylint: disable=broad-except
            return  # to_string says why
        try:
            yield from self.parts()
        except Exception as why:  # pylint: disable=broad-except
            yield 'unreadable', f'<{why}>'


class StringView(View):
    def text(self):
        return string_units(self.value).shown()


class StorageView(StringView):
    """A string under `set print qvx-storage on`."""

    def children(self):
        try:
            yield 'length', string_units(self.value).length
            slots = [int(self.value['m_units'][i]) for i in range(16)]
            if slots[15] >= 0x8000:
                block, shared, capacity, _ = string_block(slots)
                yield 'capacity', capacity
                yield 'references', shared
                yield 'block', hex(block)
        except Exception:  # pylint: disable=broad-except
            return


class TextViewView(View):
    def text(self):
        units = view_units(self.value)
        return 'null' if int(self.value['m_data']) == 0 else units.shown()


class PathView(View):
    def text(self):
        return string_units(self.value['m_text']).shown(replaced='/\\')


def code_point_text(units, index):
    if index >= units.length:
        return f'unit {index}, behind the text of {units.length}'
    point = units.code_point(index)
    end = index + (1 if point < 0x10000 else 2)
    return f'unit {index}, U+{point:04X} ' + units.part(index, end).literal()


class CodePointIteratorView(View):
    """Both kinds of iterators, and what one of them refers to."""

    def text(self):
        writable = has_member(self.value, 'm_string')
        container = self.value['m_string' if writable else 'm_container']
        index = int(self.value['m_position' if writable else 'm_codeUnitIndex'])
        if int(container) == 0:
            return 'of no text'
        if index < 0:
            return 'end'
        ordinal = -1 if writable else int(self.value['m_codePointIndex'])
        known = f'code point {ordinal}, ' if ordinal >= 0 else ''
        return known + code_point_text(text_units(container.dereference()), index)


class CodePointsView(View):
    """The ranges of code points of a text."""

    def text(self):
        held = self.value['m_string' if has_member(self.value, 'm_string') else 'm_container']
        if held.type.strip_typedefs().code == gdb.TYPE_CODE_PTR:
            held = held.dereference()
        return text_units(held).shown()


class PathIteratorView(View):
    def text(self):
        path = self.value['m_path']
        start, end = int(self.value['m_start']), int(self.value['m_end'])
        if int(path) == 0:
            return 'of no path'
        if start < 0:
            return 'end'
        return string_units(path.dereference()['m_text']).part(start, end).shown()


class ElementIteratorView(View):
    """Of TPathCore::Elements()."""

    def text(self):
        units = view_units(self.value['m_text'])
        element = self.value['m_element']
        start, end = int(element['start']), int(element['end'])
        if start >= units.length:
            return 'end'
        return units.part(start, end).shown()


class FormatView(ViewWithParts):
    def text(self):
        return string_units(self.value['m_format']).shown()

    def parts(self):
        yield from elements(self.value['m_parms'])


def elements(vector):
    size, data = int(vector['m_size']), vector['m_data']
    if size > int(vector['m_capacity']):
        raise Unsound('no vector: more elements than room')
    for i in range(min(size, MOST_ITEMS)):
        yield f'[{i}]', at(int(data + i), data.type.target())


class VectorView(ViewWithParts):
    def text(self):
        return plural(int(self.value['m_size']), 'element')

    def parts(self):
        yield from elements(self.value)


# Errors


def error_text(error):
    code, name = int(error['m_code']), error['m_codeName']
    if string_units(name).length == 0:
        return f'0x{code:08X}' if code else 'no error'
    return f'0x{code:08X} {quoted(name)}'


def error_info_text(info):
    class_of(info)
    source = info['source']
    names = {field.enumval: field.name for field in plain(source.type).fields()}
    return f'{error_text(info["error"])}, {names.get(int(source), f"source {int(source)}")}'


def location_text(location):
    file, line = location['file'].string(errors='replace'), int(location['line'])
    return f'{file}:{line}' if line else 'unknown'


def error_info_parts(info):
    info = whole(info)  # the library's own debug information tells of classes that remember the place
    place = info['origin']['location'] if has_member(info, 'origin') else info
    place = place['location'] if has_member(place, 'location') else place
    if has_member(place, 'line') and int(place['line']):
        yield 'thrown at', location_text(place)
    inner, label = pointee(info['inner']), 'inner'
    while inner is not None:
        if len(label) > MOST_CAUSES * len('.inner'):
            raise Unsound('the causes go on')
        yield label, error_info_text(inner)
        inner, label = pointee(inner['inner']), label + '.inner'


class ErrorView(View):
    def text(self):
        return error_text(self.value)


class ErrorInfoView(ViewWithParts):
    def text(self):
        return error_info_text(self.value)

    def parts(self):
        yield from error_info_parts(self.value)


class LocationView(View):
    def text(self):
        return location_text(self.value)


def list_items(pointer):
    """Of a std::unique_ptr to a std::list: a ring of nodes (two links and the item), with
    the size behind the links of the head."""
    head = word(address_of(pointer))
    item = plain(pointer.type).template_argument(0).strip_typedefs().template_argument(0)
    node = word(head)
    for _ in range(min(word(head + 16), MOST_ITEMS)):
        yield at(node + 16, item)
        node = word(node)
    if node != head:
        raise Unsound('the list goes on')


class ExceptionView(ViewWithParts):
    def text(self):
        name = class_of(self.value)
        info = pointee(self.value['m_errorInfo'])
        if info is None:
            raise Unsound('no exception: it has no error information')
        return f'{name} ({error_info_text(info)})'

    def parts(self):
        for i, message in enumerate(list_items(self.value['m_messages'])):
            yield f'[{i}]', message
        for i, message in enumerate(list_items(self.value['m_redactedMessages'])):
            yield f'redacted[{i}]', message
        value = whole(self.value)
        for name, label in (('m_internalMessage', 'details'), ('m_isOrphanQuery', 'is orphan query')):
            if has_member(value, name):
                yield label, value[name]
        yield from error_info_parts(pointee(self.value['m_errorInfo']))


# Of one word, the message, behind the virtual table.
STANDARD_ERRORS = {'std::' + name for name in (
    'logic_error', 'domain_error', 'invalid_argument', 'length_error', 'out_of_range', 'runtime_error', 'range_error',
    'overflow_error', 'underflow_error')}


def thrown(pointer):
    """What a std::exception_ptr holds. The Itanium C++ ABI for exception handling has the header before the object;
    its first member is the type, 112 bytes before."""
    address = int(pointer['_M_exception_object'])
    if address == 0:
        return 'none'
    name = class_name(word(address - 112))
    if name is None:
        raise Unsound(f'no exception at {address:#x}')
    if name in STANDARD_ERRORS:
        what = gdb.Value(word(address + 8)).cast(gdb.lookup_type('char').pointer())
        return f'{name} {what.format_string(address=False)}'
    try:
        return at(address, gdb.lookup_type(name))
    except gdb.error:
        return f'{name} at {address:#x}'


# Locks and events


def thread_text(tag):
    try:
        thread = gdb.selected_inferior().thread_from_handle(struct.pack('<Q', tag))
        return f'thread {thread.num}'
    except (gdb.error, AttributeError, TypeError):
        return f'thread {tag:#x}'


def mutex_text(mutex):
    state, owner = atomic(mutex['m_word']['m_word']), atomic(mutex['m_owner'])
    if state > 2:
        raise Unsound(f'no mutex: state {state}')
    if state == 0:
        return 'free'
    again = int(mutex['m_entries'])
    return ('held' if owner == 0 else f'held by {thread_text(owner)}') + \
        (f', entered {again + 1} times' if again else '') + (', others may wait' if state == 2 else '')


class MutexView(View):
    def text(self):
        return 'TRecursiveMutex (' + mutex_text(self.value) + ')'


class ReadWriteLockView(View):
    def text(self):
        counts = atomic(self.value['m_counts']['m_word'])
        readers, writers, writing = counts >> 32, counts & 0x7FFFFFFF, counts >> 31 & 1
        who = [plural(readers, 'reader')] * (readers != 0) + [plural(writers, 'writer')] * (writers != 0)
        return 'TReadWriteLock (' + (' and '.join(who) or 'free') + (', one writes)' if writing else ')')


def event_word(base):
    return atomic(base['m_word']['m_word'])


def event_text(base):
    """Of the word in SyncWords.h."""
    state = event_word(base)
    waiting, granted, signalling = state >> 32 & 0xFFF, state >> 44 & 0xFFF, state >> 56
    if granted > waiting:
        raise Unsound(f'no event: state {state:#x}')
    return ('set' if state & 1 else 'not set') + (', threads wait' if waiting > granted else '') + \
        (', has callbacks' if state & 2 else '') + (f', {plural(signalling, "thread")} signalling' if signalling else '')


class EventView(View):
    def text(self):
        name = str(plain(self.value.type))
        require_class(self.value, name)
        return f'{name} ({event_text(self.value["m_base"])})'


class CountdownView(View):
    def text(self):
        require_class(self.value, 'TCountdownEvent')
        left, initial = int(self.value['m_remaining']), int(self.value['m_initial'])
        return f'TCountdownEvent ({event_text(self.value["m_event"]["m_base"])}, {left} of {initial} signals to come)'


def tree_nodes(tree):
    """The nodes of a std::set in order. A node has its colour, then links to its parent, left and right, then the item;
    the parent of the header is the root, and the size stands behind the header."""
    node, way = word(address_of(tree) + 16), []
    for _ in range(2 * min(tree_size(tree), MOST_ITEMS) + 1):
        if node:
            way.append(node)
            node = word(node + 16)
        elif way:
            node = way.pop()
            yield node
            node = word(node + 24)
        else:
            return
    raise Unsound('the tree goes on')


def tree_size(tree):
    return word(address_of(tree) + 40)


class CancelEventView(ViewWithParts):
    def text(self):
        require_class(self.value, 'TCancelEvent')
        children = tree_size(self.value['m_childEvents'])
        return f'TCancelEvent ({event_text(self.value["m_base"])}, {references(self.value)}' + \
            (f', children: {children})' if children else ')')

    def parts(self):
        pointer = plain(self.value.type).pointer()
        for i, node in enumerate(tree_nodes(self.value['m_childEvents'])):
            yield f'[{i}]', gdb.Value(word(node + 32)).cast(pointer)


def plural(count, what):
    return f'{count} {what}' + 's' * (count != 1)


def references(counted):
    if int(counted['m_marker']) != MARKER:
        raise Unsound(f'no counted object at {address_of(counted):#x}')
    return plural(atomic(counted['m_references']), 'reference')


class SemaphoreView(View):
    def text(self):
        name = class_of(self.value)
        text = references(self.value)
        value = whole(self.value)
        if not has_member(value, 'm_word'):
            return f'TSemaphore ({text}; units: no debug information of {name})'
        state = atomic(value['m_word']['m_word'])
        return f'TSemaphore ({state & 0x7FFFFFFF} units free, ' + \
            (f'{state >> 32} threads wait, ' if state >> 32 else '') + text + ')'


class RefCntPtrView(ViewWithParts):
    def text(self):
        name = f'RefCntPtr<{plain(self.value.type).template_argument(0)}>'
        if int(self.value['m_ptr']) == 0:
            return f'{name} (null)'
        place = pointee(self.value)
        count = references(place) if place.type.fields() else 'no debug information of its class'
        return f'{name} ({count})'

    def parts(self):
        if int(self.value['m_ptr']) != 0:
            yield 'get()', self.value['m_ptr']


# Futures


def state_text(state):
    class_of(state)
    event = event_word(state['m_ready']['m_base'])
    if event & 1:
        words = ['failed' if atomic(state['m_hasException']) else 'ready']
    else:
        words = ['not started' if atomic(state['m_taken']) == 0 else 'pending']
    if atomic(state['m_cancelled']):
        words.append('cancelled')
    if has_member(state, 'm_name'):
        name = pointee(state['m_name'])
        if name is not None:
            words.append(quoted(name))
    return ', '.join(words)


def state_parts(state):
    if atomic(state['m_hasException']):
        yield 'exception', thrown(state['m_exception'])
    elif event_word(state['m_ready']['m_base']) & 1 and has_member(state, 'm_hasValue') and state['m_hasValue']:
        value = state['m_value']
        if not str(plain(value.type)).endswith('detail::Nothing'):
            yield 'value', value


class StateView(ViewWithParts):
    def text(self):
        return f'{plain(self.value.type)} ({state_text(Place(address_of(self.value), self.value.type))})'

    def parts(self):
        yield from state_parts(Place(address_of(self.value), self.value.type))


class FutureView(ViewWithParts):
    """Futures and promises."""

    def text(self):
        name, state = plain(self.value.type), pointee(self.value['m_state'])
        taken = has_member(self.value, 'm_futureTaken') and not self.value['m_futureTaken']
        return f'{name} (no state)' if state is None else \
            f'{name} ({state_text(state)}{", future not taken" if taken else ""})'

    def parts(self):
        state = pointee(self.value['m_state'])
        if state is not None:
            yield from state_parts(state)


# Others


class StackTraceView(ViewWithParts):
    def count(self):
        count, most = int(self.value['m_count']), plain(self.value.type).template_argument(0)
        if not 0 <= count <= int(most):
            raise Unsound(f'no stack trace: {count} frames')
        return count

    def text(self):
        return plural(self.count(), 'frame')

    def parts(self):
        for i in range(self.count()):
            yield f'[{i}]', self.value['m_frames'][i]


SHA_BYTES = {1: ('SHA160', 20), 2: ('SHA224', 28), 3: ('SHA256', 32), 4: ('SHA384', 48), 5: ('SHA512', 64)}


class ShaView(ViewWithParts):
    def text(self):
        kind = int(self.value['m_type'])
        if kind == 0:
            return 'sha2 (not initialised)'
        if kind not in SHA_BYTES:
            raise Unsound(f'no sha2: type {kind}')
        return f'sha2 ({SHA_BYTES[kind][0]}, {"finished" if self.value["m_finished"] else "not finished"})'

    def parts(self):
        kind = int(self.value['m_type'])
        if self.value['m_finished']:
            yield 'hash', hexadecimal(self.value['m_rawHash'], SHA_BYTES[kind][1])


def hexadecimal(values, count):
    return ''.join(f'{int(values[i]):02x}' for i in range(count))


class DigestView(View):
    def text(self):
        size = int(self.value['m_size'])
        if size > 64:
            raise Unsound(f'no digest: {size} bytes')
        return hexadecimal(self.value['m_bytes'], size) or 'empty'


class ResourceValuesView(View):
    def text(self):
        of = {name: int(self.value['m_' + name]) for name in ('processId', 'memory', 'memoryLimitUsage', 'cpuUsage')}
        return (f'process {of["processId"]}: {of["memory"] / 1048576:.1f} MiB, {of["memoryLimitUsage"]} % of its limit, '
                f'CPU {of["cpuUsage"]} %')


EXCEPTIONS = ('QuorvexException', 'QuorvexUserErrorException', 'QuorvexOutOfMemoryException', 'LogicException',
              'TPathCore::Exception', 'TFormatStringCore::Exception', 'AsyncTask::InvalidFutureException',
              'AsyncTask::CancelException', 'AsyncTask::WaitCycleException', 'AsyncTask::BrokenPromiseException',
              'AsyncTask::PromiseException')

VIEWS = {
    'TStringCore': StringView,
    'TStringStorage': StringView,
    'TStringEditing': StringView,
    'TStringCore::Exception': StringView,
    'TStringView': TextViewView,
    'TConstCodePointIterator': CodePointIteratorView,
    'TCodePointIterator': CodePointIteratorView,
    'TCodePointReference': CodePointIteratorView,
    'TCodePointRange': CodePointsView,
    'TCodePointView': CodePointsView,
    'TPathCore': PathView,
    'TPathCore::iterator': PathIteratorView,
    'TPathCore::ElementRange::iterator': ElementIteratorView,
    'TFormatStringCore': FormatView,
    'qvxsys::detail::InlineVector': VectorView,
    'QuorvexError': ErrorView,
    'TError::ErrorInfo': ErrorInfoView,
    'TError::LocatedErrorInfo': ErrorInfoView,
    'TError::SourceLocation': LocationView,
    **dict.fromkeys(EXCEPTIONS, ExceptionView),
    'TRecursiveMutex': MutexView,
    'TReadWriteLock': ReadWriteLockView,
    'TEvent': EventView,
    'TAutoResetEvent': EventView,
    'TCountdownEvent': CountdownView,
    'TCancelEvent': CancelEventView,
    'TSemaphore': SemaphoreView,
    'RefCntPtr': RefCntPtrView,
    'AsyncTask::Future': FutureView,
    'AsyncTask::SharedFuture': FutureView,
    'AsyncTask::Promise': FutureView,
    'AsyncTask::SharedStateBase': StateView,
    'AsyncTask::detail::TaskState': StateView,
    'AsyncTask::detail::ValueState': StateView,
    'quorvex::BasicStackTrace': StackTraceView,
    'sha2': ShaView,
    'quorvex::hash::Digest': DigestView,
    'ResourceValues': ResourceValuesView,
}


class Storage(gdb.Parameter):
    """Whether strings of qvxsys are shown with their length, and the references and capacity of a shared block."""

    set_doc = 'Set whether strings of qvxsys are shown with how they are stored.'
    show_doc = 'Show whether strings of qvxsys are shown with how they are stored.'

    def __init__(self):
        super().__init__('print qvx-storage', gdb.COMMAND_DATA, gdb.PARAM_BOOLEAN)
        self.value = False

    def get_set_string(self):
        return ''

    def get_show_string(self, value):
        return f'Showing how strings of qvxsys are stored is {value}.'


STORAGE = Storage()


def without_arguments(name):
    """"A<B<C>>::D" is "A::D"."""
    while '<' in name:
        shorter = re.sub(r'<[^<>]*>', '', name)
        if shorter == name:
            return name
        name = shorter
    return name


class Printers(gdb.printing.PrettyPrinter):
    def __init__(self):
        super().__init__('qvxsys', [gdb.printing.SubPrettyPrinter(name) for name in VIEWS])
        self.by_name = {printer.name: printer for printer in self.subprinters}

    def __call__(self, value):
        type_ = value.type.strip_typedefs()
        if type_.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            type_ = type_.target().strip_typedefs()
            value = value.referenced_value()
        name = type_.unqualified().tag
        if type_.code != gdb.TYPE_CODE_STRUCT or not name:
            return None
        printer = self.by_name.get(without_arguments(name))
        if printer is None or not printer.enabled or not type_.fields():
            return None
        view = VIEWS[printer.name]
        return (StorageView if view is StringView and STORAGE.value else view)(value)


def register(objfile=None):
    gdb.printing.register_pretty_printer(objfile, Printers(), replace=True)


def add_types(path):
    """Compilers leave a class with virtual functions to the debug information of the file that has its virtual table:
    the library's. Where that has none, the types come from a file of their own."""
    try:
        known = bool(gdb.lookup_type('TCancelEvent').fields())
    except gdb.error:
        known = False
    added = (objfile.filename for objfile in gdb.objfiles())
    if not known and os.path.isfile(path) and path not in added:
        gdb.execute(f"add-symbol-file '{path}'", to_string=True)


if __name__ == '__main__':
    register()
    add_types(os.path.join(os.path.dirname(os.path.abspath(__file__)), 'libqvxsys_types.o'))
