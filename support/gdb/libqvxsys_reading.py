"""How the views read the program's memory: objects, members, smart pointers, classes, texts. What does not hold together
raises Unsound."""
import re
import struct

import gdb

INLINE_LENGTH = 14
MOST_ITEMS = 10000  # of what may be a ring by accident
MOST_CAUSES = 100
MARKER = 0xC466E877  # of live RefCntObjects


class Unsound(Exception):
    """Says why an object is not what its type promises."""


# Reading


def memory(address, size):
    try:
        return bytes(gdb.selected_inferior().read_memory(address, size))
    except (gdb.error, OverflowError):
        raise Unsound(f'no memory at {address:#x}') from None


def word(address):
    return int.from_bytes(memory(address, 8), 'little')


def address_of(value):
    if value.address is None:
        raise Unsound('it is not in memory')
    return int(value.address)


def at(address, type_):
    memory(address, type_.sizeof)  # gdb gives up the whole print where it finds out by itself
    return gdb.Value(address).cast(type_.pointer()).dereference()


def plain(type_):
    return type_.strip_typedefs().unqualified()


def find_member(type_, name):
    """Its offset and type, in bases and anonymous unions too; None where there is none."""
    for field in plain(type_).fields():
        if field.name == name and not field.is_base_class and hasattr(field, 'bitpos'):
            return field.bitpos // 8, field.type
        if field.is_base_class or not field.name:
            inner = find_member(field.type, name)
            if inner:
                return field.bitpos // 8 + inner[0], inner[1]
    return None


class Place:
    """An object in memory by its declared type. Values of gdb look for the class that an object really is, and gdb
    complains where it has no debug information of that."""

    def __init__(self, address, type_):
        self.address, self.type = address, plain(type_)

    def __getitem__(self, name):
        found = find_member(self.type, name)
        if found is None:
            raise Unsound(f'no debug information of {self.type}' if not self.type.fields() else f'no member {name}')
        return at(self.address + found[0], found[1])


def inside(value, type_):
    """What a wrapper of one value holds (std::atomic, std::unique_ptr, the pointer of a std::shared_ptr), whatever the
    standard library calls its members."""
    return at(address_of(value), type_)


def pointee(pointer):
    """The place that a smart pointer points to; None for null."""
    address = word(address_of(pointer))
    return Place(address, plain(pointer.type).template_argument(0)) if address else None


def atomic(value):
    return int(inside(value, plain(value.type).template_argument(0)))


_demangled = {}


def class_name(info):
    """The name of the class that a std::type_info is of; None where there is no such thing."""
    try:
        name = memory(word(info + 8), 1)
        start = word(info + 8)
        while name[-1] and len(name) < 4096:
            name += memory(start + len(name), 1)
    except Unsound:
        return None
    mangled = name[:-1].decode('ascii', 'replace').lstrip('*')
    if not re.fullmatch(r'([0-9NSZ][\w.$]*|[a-z])', mangled, re.ASCII):
        return None
    if mangled not in _demangled:
        text = gdb.execute(f'demangle -- _ZTS{mangled}', to_string=True).strip()
        _demangled[mangled] = text.replace('typeinfo name for ', '', 1)
    return _demangled[mangled]


def class_of(value):
    """The class of which the object with virtual functions is, whatever its declared type."""
    try:
        found = class_name(word(word(address_of(value)) - 8))
    except Unsound:
        found = None
    if found is None:
        raise Unsound('it is not constructed yet, destroyed, or overwritten')
    return found


def require_class(value, name):
    if value.address is not None and class_of(value) != name:
        raise Unsound(f'it is destroyed or overwritten: its virtual table is that of {class_of(value)}')


def whole(value):
    """The object as the class that it really is, where debug information describes that."""
    name, address = class_of(value), address_of(value)
    try:
        type_ = gdb.lookup_type(name)
    except gdb.error:
        return value
    to_top = struct.unpack('<q', memory(word(address) - 16, 8))[0]
    return Place(address + to_top, type_)


def has_member(value, name):
    return find_member(value.type, name) is not None


# Texts


def most_units():
    """The units of one text that gdb is going to print; None for all."""
    for name in ('print characters', 'print elements'):
        try:
            most = gdb.parameter(name)
        except RuntimeError:
            continue
        if most is None or isinstance(most, int):
            return most or None
    return None


class Units:
    """UTF-16 code units in the program or, of short strings, in a list."""

    def __init__(self, element, length, address=0, units=None):
        self.element, self.length, self.address, self.units = element, length, address, units

    def read(self, start, count):
        if self.units is not None:
            return self.units[start:start + count]
        return list(struct.unpack(f'<{count}H', memory(self.address + 2 * start, 2 * count)))

    def shown(self, replaced=None):
        """What gdb prints as a text, with its rules of length, repetition and escapes."""
        most = most_units()
        count = self.length if most is None else min(self.length, most)
        units = [ord(replaced[1]) if replaced and u == ord(replaced[0]) else u for u in self.read(0, count)]
        units.append(0)  # gdb drops one at the end
        value = gdb.Value(struct.pack(f'<{len(units)}H', *units), self.element.array(count))
        return value if count == self.length else value.format_string() + '...'

    def literal(self):
        text = self.shown()
        return text if isinstance(text, str) else text.format_string()

    def part(self, start, end):
        if not 0 <= start <= end <= self.length:
            raise Unsound(f'units {start} to {end} of a text of {self.length}')
        units = None if self.units is None else self.units[start:end]
        return Units(self.element, end - start, self.address + 2 * start, units)

    def code_point(self, index):
        """As the library reads it, lone surrogates as U+FFFD."""
        units = self.read(index, min(2, self.length - index))
        unit = units[0]
        if not 0xD800 <= unit < 0xE000:
            return unit
        if unit < 0xDC00 and len(units) == 2 and 0xDC00 <= units[1] < 0xE000:
            return 0x10000 + ((unit - 0xD800) << 10) + (units[1] - 0xDC00)
        return 0xFFFD


def string_units(string):
    """Of a TStringCore."""
    slots = string['m_units']
    element = plain(slots.type.target())
    units = [int(slots[i]) for i in range(16)]
    form = units[15]
    if form < 0x8000:  # as a signed number the form is the length, or negative for a block
        if form > INLINE_LENGTH or units[form] != 0:
            raise Unsound('no string: neither a short text nor a block')
        return Units(element, form, units=units)
    address, _, _, length = string_block(units)
    return Units(element, length, address + 12)


def string_block(units):
    """The address of the block, its references, capacity and length."""
    address = sum(unit << 16 * i for i, unit in enumerate(units[:4]))
    try:
        shared, capacity, length = struct.unpack('<iii', memory(address, 12))
        if units[15] == 0xFFFF and shared > 0 and capacity >= 16 and 0 <= length < capacity:
            return address, shared, capacity, length
    except Unsound:
        pass
    raise Unsound(f'no string: no block at {address:#x}')


def view_units(view):
    address, length = int(view['m_data']), int(view['m_length'])
    if length > 0x7FFFFFFF or (address == 0 and length != 0):
        raise Unsound(f'no view: {length} units at {address:#x}')
    return Units(plain(view['m_data'].type.target()), length, address, [] if length == 0 else None)


def text_units(container):
    """Of whatever has code points: a string or a view."""
    return view_units(container) if has_member(container, 'm_data') else string_units(container)


def quoted(string):
    return string_units(string).literal()
