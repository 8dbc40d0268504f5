# NorvikCore/diagnostics/gdb/norvikcore.py - gdb shows the library's values, objects and collections by their content.
#
#   (gdb) print net
#   $1 = 1234.50
#
# gdb loads this file with the library, by norvikcore-gdb.py; `source norvikcore.py` loads it by hand. The printers only
# read memory and call no function of the program, so they work on a core file too. Members are found by the program's
# debug information. That lacks the library's classes with virtual functions, because the compiler describes those only
# where their functions are; OFFSETS replaces it, so that the library may be stripped. Texts about a value that cannot
# be shown are in angle brackets.

import math
import re

import gdb
import gdb.printing
import gdb.types

# Where members are in their classes, in bytes. tests/diagnostics/gdb/layout.txt compares them with the compiler's.
OFFSETS = {
    'norvik::NSObject::count_': 8,
    'norvik::NSArray::elements_': 16,
    'norvik::NSArray::first_': 40,
    'norvik::NSDictionary::table_.entries_': 16,
    'norvik::NSDictionary::table_.count_': 88,
    'norvik::NSSet::table_.entries_': 16,
    'norvik::NSSet::table_.count_': 88,
    'norvik::detail::QueueCore::kind_': 24,
    'norvik::detail::QueueCore::label_': 208,
    'norvik::detail::SerialQueue::inbox_': 256,
    'norvik::detail::SerialQueue::ready_': 320,
    'norvik::detail::SideRecord::object_': 40,
    'norvik::TSKDispatchQueue::queue_': 24,
}
ABSENT = '(null)'
VALUE_SIZE = 32  # bytes of a Value
GREATEST_TEXT = 1 << 40  # bytes; a longer text is memory that was not initialised


class Unreadable(Exception):
    """A value that the program cannot have made, such as one that is not initialised yet."""


def complete(type_):
    """The type with its members, or None if the debug information only declares it."""
    type_ = gdb.types.get_basic_type(type_)
    try:
        return type_ if type_.fields() else None
    except (TypeError, gdb.error):
        return None


def named_type(name):
    """The type of that name with its members, or None."""
    try:
        return complete(gdb.lookup_type(name))
    except gdb.error:
        return None


def template_name(type_):
    """'norvik::Ref' for Ref<Payslip>; '' for a type without a name."""
    type_ = gdb.types.get_basic_type(type_)
    return (type_.tag or type_.name or '').split('<', 1)[0]


def standard_string(value):
    """The address of the bytes of a std::string, and their number."""
    return value['_M_dataplus']['_M_p'], int(value['_M_string_length'])


# Values


def decimal_text(value):
    low, high, sign_and_exponent = (int(value[name]) for name in ('low_', 'high_', 'signAndExponent_'))
    if high == (1 << 64) - 1:
        return 'NaN'
    mantissa = high << 64 | low
    exponent = sign_and_exponent & 0xFFFFFFFF
    if exponent >= 1 << 31:
        exponent -= 1 << 32
    if mantissa >= 10 ** 38 or not -128 <= exponent <= 127 or sign_and_exponent >> 32 & 0x7FFFFFFF:
        raise Unreadable('not a Decimal')
    digits = str(mantissa)
    if exponent > 0 and mantissa:
        digits += '0' * exponent
    elif exponent < 0:
        digits = digits.rjust(1 - exponent, '0')
        digits = digits[:exponent] + '.' + digits[exponent:]
    return ('-' if sign_and_exponent >> 63 else '') + digits


def date_text(value):
    """As Date::description(), except that an instant that is not a number shows as NaN."""
    seconds = float(value['seconds_'])
    if math.isnan(seconds):
        return 'NaN'
    limit = 34722222222 * 86400
    day, second = divmod(math.floor(max(-limit, min(limit, seconds))), 86400)
    # Counted from 0000-03-01, so that the leap day is the last day of a year.
    cycle, day = divmod(day + 730791, 146097)
    year = (day - day // 1460 + day // 36524 - day // 146096) // 365
    day -= 365 * year + year // 4 - year // 100
    month = (5 * day + 2) // 153
    day -= (153 * month + 2) // 5 - 1
    month += 3 if month < 10 else -9
    year += 400 * cycle + (month <= 2)
    return '%s%04d-%02d-%02d %02d:%02d:%02d +0000' % ('-' if year < 0 else '', abs(year), month, day, second // 3600,
                                                      second // 60 % 60, second % 60)


def boolean_text(value):
    return 'true' if int(value) & 1 else 'false'


def double_text(value):
    """The shortest digits that read back as the same number; a whole one ends in ".0"."""
    return repr(float(value))


def number_text(value):
    kind = int(value['kind_'])
    if kind == 0:
        return boolean_text(value['boolean_'])
    if kind == 1:
        return str(int(value['integer_']))
    if kind == 2:
        return str(int(value['integer_']) & (1 << 64) - 1)
    if kind == 3:
        return double_text(value['double_'])
    if kind == 4:
        return decimal_text(value['decimal_'])
    raise Unreadable('not an NSNumber')


def range_text(value):
    location = int(value['location'])
    return '{%s, %d}' % ('NSNotFound' if location == (1 << 63) - 1 else location, int(value['length']))


def level_text(value):
    """The name of a level; the flags of a sum without a name."""
    level = int(value['level_']['value_'])
    names = {0: 'OFF', 1: 'ERROR', 3: 'WARN', 7: 'INFO', 15: 'DEBUG', 31: 'VERBOSE'}
    if level in names:
        return 'LOG_LEVEL_' + names[level]
    if not 0 < level < 32:
        return str(level)
    flags = ('ERROR', 'WARN', 'INFO', 'DEBUG', 'VERBOSE')
    return ' | '.join('LOG_FLAG_' + name for bit, name in enumerate(flags) if level >> bit & 1)


# Objects


def number_at(address, type_name='unsigned long'):
    """The number in the program's memory at that address."""
    return int(gdb.Value(address).cast(gdb.lookup_type(type_name).pointer()).dereference())


def text_of(string):
    """An NSString as a text of Python, for names."""
    size = int(string['bits_']) >> 3
    if size > 10000:
        raise Unreadable('not a name')
    return string['data_'].string('utf-8', 'replace', length=size)


def c_string(address, greatest=4096):
    """The bytes before the NUL at that address, which are ASCII."""
    text = b''
    while len(text) < greatest:
        size = 64 - address % 64  # within a page, because the next one may be missing
        part = gdb.selected_inferior().read_memory(address, size).tobytes()
        text += part.split(b'\0', 1)[0]
        if b'\0' in part:
            return text.decode('ascii', 'replace')
        address += size
    raise Unreadable('not a name')


def runtime_class(address):
    """The C++ names of the class of the object at that address and of its superclasses, and the address of its
    NSObject. The program has them for dynamic_cast, also without symbols and debug information. No names if there is no
    object."""
    names, root = [], address
    try:
        table = number_at(address)
        classes = [(number_at(table - 8), address + number_at(table - 16, 'long'))]
        for info, start in classes:
            mangled = c_string(number_at(info + 8)).lstrip('*')
            if not re.fullmatch(r'[A-Za-z0-9_.$]+', mangled) or len(names) == 100:
                break
            text = gdb.execute('demangle -l c++ -- _ZTI' + mangled, to_string=True).strip()
            names.append(text.replace('typeinfo for ', '', 1))
            if names[-1] == 'norvik::NSObject':
                root = start
            kind = gdb.execute('info symbol %d' % number_at(info), to_string=True)
            if '__si_class_type_info' in kind:  # one superclass
                classes.append((number_at(info + 16), start))
            elif '__vmi_class_type_info' in kind:  # several, each with its offset
                for base in range(info + 24, info + 24 + 16 * number_at(info + 20, 'unsigned int'), 16):
                    classes.append((number_at(base), start + (number_at(base + 8, 'long') >> 8)))
    except (gdb.error, Unreadable):
        pass
    return names, root


def short(name):
    """The name as an application writes it."""
    return name[len('norvik::'):] if name.startswith('norvik::') else name


def bases(type_):
    """The type and those it is derived from."""
    type_ = gdb.types.get_basic_type(type_)
    yield type_
    if complete(type_) is not None:
        for field in type_.fields():
            if field.is_base_class:
                yield from bases(field.type)


def is_object(type_, address):
    """True if an object of the type at that address, which may be 0, is derived from NSObject."""
    found = list(bases(type_))
    if any(base.tag == 'norvik::NSObject' for base in found):
        return True
    # The debug information only declares the library's classes that have virtual functions.
    declared = [base.tag for base in found if (base.tag or '').startswith('norvik::') and complete(base) is None]
    if address:
        return bool(declared) and 'norvik::NSObject' in runtime_class(address)[0]
    return any(tag.startswith('norvik::NS') for tag in declared)


class Object:
    """An object of a class derived from NSObject: its class and, if the program's debug information has them, its
    members."""

    COLLECTIONS = ('norvik::NSArray', 'norvik::NSDictionary', 'norvik::NSSet')

    def __init__(self, pointer):
        self.address = int(pointer)
        names, self.root = runtime_class(self.address)
        self.name = short(names[0] if names else gdb.types.get_basic_type(pointer.type.target()).tag)
        immutable = (name.replace('norvik::NSMutable', 'norvik::NS') for name in names)
        self.collection = next((name for name in immutable if name in self.COLLECTIONS), None)
        self.members = self.best_known(pointer, names) if names else None
        self.is_there = bool(names)
        self.is_queue = 'norvik::TSKDispatchQueue' in names  # whose members only lead to the queue

    @staticmethod
    def best_known(pointer, names):
        """The object as the most derived type whose members are known; None if there is none."""
        try:
            dynamic = pointer.dynamic_type
            if complete(dynamic.target()) is not None:
                return pointer.cast(dynamic).dereference()
        except gdb.error:
            pass
        for name in names:
            found = named_type(name)
            if found is not None:
                return pointer.cast(found.pointer()).dereference()
        return None

    def member(self, name):
        """The address of a member of the collection."""
        return self.root + OFFSETS['%s::%s' % (self.collection, name)]

    def elements(self):
        """The elements of an array or a set, or the keys and values of a dictionary, as pairs."""
        value = named_type('norvik::Value')
        if value is None:
            raise Unreadable('no debug information of Value')
        step, entries, skipped = 1, 'table_.entries_', 0
        if self.collection == 'norvik::NSArray':
            entries, skipped = 'elements_', number_at(self.member('first_'))
        elif self.collection == 'norvik::NSDictionary':
            step = 2
        first, last = (number_at(self.member(entries) + offset) for offset in (0, 8))
        for address in range(first + skipped * value.sizeof, last, step * value.sizeof):
            found = gdb.Value(address).cast(value.pointer())
            if int(found.dereference()['kind_']) != 0:  # otherwise it was removed
                yield found.dereference() if step == 1 else (found.dereference(), (found + 1).dereference())

    def count(self):
        if self.collection == 'norvik::NSArray':
            first, last = (number_at(self.member('elements_') + offset) for offset in (0, 8))
            count = (last - first) // VALUE_SIZE - number_at(self.member('first_'))
        else:
            count = number_at(self.member('table_.count_'))
        if not 0 <= count < GREATEST_TEXT:
            raise Unreadable('not a collection')
        return count

    def text(self):
        if self.collection:
            return '%s of %d' % (self.name, self.count())
        if self.is_queue:
            core = number_at(self.root + OFFSETS['norvik::TSKDispatchQueue::queue_'])
            return '%s %#x %s' % (self.name, self.address, queue_text(core))
        return '%s %#x%s' % (self.name, self.address, '' if self.is_there else ' <no object is there>')


def members_of(value):
    """The names and values of the members, except those of NSObject: first those of the superclasses."""
    type_ = complete(value.type)
    for field in type_.fields() if type_ else ():
        if field.is_base_class:
            if field.name != 'norvik::NSObject':
                yield from members_of(value[field])
        elif not field.artificial and hasattr(field, 'bitpos') and field.name and not field.name.startswith('_vptr'):
            name, member = field.name, value[field]
            if template_name(member.type) in ('norvik::detail::Stored', 'norvik::detail::AtomicStored'):
                name, member = name.rstrip('_'), member['value_']
            yield name, briefly(member)


def until_unreadable(pairs):
    """The pairs up to the first that cannot be read; instead of that one, the reason."""
    try:
        yield from pairs
    except (gdb.error, Unreadable) as problem:
        yield 'unreadable', problem_text(problem)


def briefly(value):
    """The pointer instead of a Ref, because it shows no members: objects may refer to one another in circles."""
    kind = template_name(value.type)
    try:
        if kind == 'norvik::Ref':
            return value['object_']
        if kind == 'norvik::Weak':
            return weak_object(value, lambda pointer: pointer)
    except (gdb.error, Unreadable) as problem:
        return problem_text(problem)
    return value


def weak_object(value, show):
    """show(pointer) if the object is alive, otherwise a text."""
    record, pointer = value['record_'], value['object_']
    if not int(record):
        return ABSENT
    target = number_at(int(record) + OFFSETS['norvik::detail::SideRecord::object_'])
    if not target:
        return '<destroyed>'
    count = number_at(target + OFFSETS['norvik::NSObject::count_'], 'unsigned int')
    return show(pointer) if 0 < count < 1 << 30 else '<being destroyed>'


def closure_text(names):
    """The first argument of norvik::detail::Closure<...>: the closure's own type."""
    start, depth, name = 'norvik::detail::Closure<', 0, names[0] if names else 'a closure'
    if not name.startswith(start):
        return name
    for at in range(len(start), len(name)):
        letter = name[at]
        if depth == 0 and letter in ',>':
            return name[len(start):at]
        depth += (letter in '<({[') - (letter in '>)}]')
    return name


def class_text(value):
    name, qualified = text_of(value['name_']), short(text_of(value['qualifiedName_']))
    return name if name == qualified else '%s (%s)' % (name, qualified)


def item_count(first):
    """The number of items in a list that is linked by the first word of each."""
    count = 0
    while first and count < 10000:
        first, count = number_at(first), count + 1
    return count


def queue_text(core):
    """The label. Of a serial queue also what it does: a thread is in it, it is suspended, blocks wait."""
    if not core:
        return ABSENT
    label = core + OFFSETS['norvik::detail::QueueCore::label_']
    size = number_at(label + 8)
    if not 0 <= size < 10000:
        raise Unreadable('not a queue')
    text = gdb.Value(number_at(label)).cast(gdb.lookup_type('char').pointer()).lazy_string('UTF-8', size).value()
    parts = [text.format_string(max_elements=0) if size else '""']
    if number_at(core + OFFSETS['norvik::detail::QueueCore::kind_'], 'unsigned char') in (0, 4):  # serial, main
        inbox = number_at(core + OFFSETS['norvik::detail::SerialQueue::inbox_'])
        waiting = item_count(inbox & ~7) + item_count(number_at(core + OFFSETS['norvik::detail::SerialQueue::ready_']))
        parts += ['busy'] if inbox & 5 == 0 else []  # neither idle nor parked
        parts += ['suspended'] if inbox & 2 else []
        parts += ['%d waiting' % waiting] if waiting else []
    return ', '.join(parts)


def problem_text(problem):
    text = str(problem)
    return '<optimized out>' if 'optimized out' in text else '<%s>' % text


# Printers


class TextPrinter:
    """Shows a text that is made when the value is."""

    def __init__(self, text):
        self.text = text

    def to_string(self):
        return self.text


class QuotedPrinter:
    """Shows bytes as gdb shows a string: quoted, escaped, cut off at 'print elements'. A lone half is its bytes."""

    def __init__(self, address, size):
        if not 0 <= size < GREATEST_TEXT:
            raise Unreadable('not a text')
        self.text = address.lazy_string('UTF-8', size)

    def to_string(self):
        return self.text

    def display_hint(self):
        return 'string'


def text_printer(make_text):
    return lambda value: TextPrinter(make_text(value))


def string_printer(value):
    return QuotedPrinter(value['data_'], int(value['bits_']) >> 3)


def mutable_string_printer(value):
    return QuotedPrinter(*standard_string(value['bytes_']))


class CollectionPrinter:
    """Shows the class, the number of elements and the elements."""

    def __init__(self, shown):
        self.shown = shown
        self.text = shown.text()

    def to_string(self):
        return self.text

    def children(self):
        return until_unreadable(self.pairs())

    def pairs(self):
        for index, element in enumerate(self.shown.elements()):
            if self.shown.collection == 'norvik::NSDictionary':
                yield 'key %d' % index, element[0]
                yield 'value %d' % index, element[1]
            else:
                yield '[%d]' % index, element

    def display_hint(self):
        return 'map' if self.shown.collection == 'norvik::NSDictionary' else 'array'


class ObjectPrinter:
    """Shows the class, the address and the members."""

    def __init__(self, shown):
        self.shown = shown

    def to_string(self):
        return self.shown.text()

    def children(self):
        return until_unreadable(members_of(self.shown.members))


class MemberPrinter:
    """Shows a member that has no printer of its own."""

    def __init__(self, member):
        self.member = member

    def to_string(self):
        return self.member


def object_printer(pointer, with_members=True):
    if not int(pointer):
        return TextPrinter(ABSENT)
    shown = Object(pointer)
    if shown.collection:
        return CollectionPrinter(shown)
    has_members = with_members and shown.members is not None and not shown.is_queue
    return ObjectPrinter(shown) if has_members else TextPrinter(shown.text())


def ref_printer(value):
    return object_printer(value['object_'])


def pointer_printer(value):
    """The class and the address of an object, or the number of elements. None for a pointer to anything else."""
    target, address = gdb.types.get_basic_type(value.type.target()), int(value)
    if target.code != gdb.TYPE_CODE_STRUCT or not target.tag:
        return None
    if not is_object(target, address):
        return None
    return TextPrinter(Object(value).text() if address else ABSENT)


def weak_printer(value):
    shown = weak_object(value, object_printer)
    return TextPrinter(shown) if isinstance(shown, str) else shown


def block_printer(value):
    address = int(value['closure_']['object_'])
    return TextPrinter('Block of ' + closure_text(runtime_class(address)[0]) if address else ABSENT)


def value_printer(value):
    kind, storage = int(value['kind_']), value['storage_']
    if kind == 7:
        return string_printer(storage['string'])
    if kind == 8:
        return object_printer(storage['object']['object_'], with_members=False)
    texts = (lambda: ABSENT, lambda: '<null>', lambda: boolean_text(storage['boolean']),
             lambda: str(int(storage['integer'])), lambda: double_text(storage['real']),
             lambda: decimal_text(storage['decimal']), lambda: date_text(storage['date']))
    if kind > 8:
        raise Unreadable('not a Value')
    return TextPrinter(texts[kind]())


def selector_printer(value):
    name = value['name_']
    return string_printer(name.dereference()) if int(name) else TextPrinter(ABSENT)


def stored_printer(value):
    return gdb.default_visualizer(value['value_']) or MemberPrinter(value['value_'])


def queue_printer(value):
    core = value['core_']
    if template_name(core.type.target()) != 'norvik::detail::QueueCore':
        return None  # the handle of a group, a semaphore or a source
    return TextPrinter(queue_text(int(core)))


PRINTERS = (
    ('norvik::Decimal', text_printer(decimal_text)),
    ('norvik::Date', text_printer(date_text)),
    ('norvik::NSString', string_printer),
    ('norvik::KeyPath', string_printer),
    ('norvik::NSMutableString', mutable_string_printer),
    ('norvik::NSNumber', text_printer(number_text)),
    ('norvik::NSRange', text_printer(range_text)),
    ('norvik::AtomicLogLevel', text_printer(level_text)),
    ('norvik::Value', value_printer),
    ('norvik::Ref', ref_printer),
    ('norvik::Weak', weak_printer),
    ('norvik::Block', block_printer),
    ('norvik::Class', text_printer(class_text)),
    ('norvik::SEL', selector_printer),
    ('norvik::detail::Stored', stored_printer),
    ('norvik::detail::AtomicStored', stored_printer),
    ('norvik::detail::Handle', queue_printer),
    ('norvik::NSObject', lambda value: object_printer(value.address)),  # and every class derived from it
)


class Printers(gdb.printing.PrettyPrinter):
    """Finds the printer of a value by the name of its type, without template arguments."""

    def __init__(self):
        super().__init__('NorvikCore', [])
        self.by_name = {}
        for name, make in PRINTERS:
            self.by_name[name] = self.add(short(name).replace('detail::', ''), make)
        self.pointer = self.add('NSObject *', pointer_printer)

    def add(self, name, make):
        printer = gdb.printing.SubPrettyPrinter(name)
        printer.make = make
        self.subprinters.append(printer)
        return printer

    def __call__(self, value):
        try:
            if value.type.strip_typedefs().code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
                value = value.referenced_value()
            printer = self.printer_of(value)
            return printer.make(value) if printer is not None and printer.enabled else None
        except (gdb.error, Unreadable) as problem:
            return TextPrinter(problem_text(problem))

    def printer_of(self, value):
        if value.type.strip_typedefs().code == gdb.TYPE_CODE_PTR:
            return self.pointer
        type_ = complete(value.type)
        if type_ is None or type_.code not in (gdb.TYPE_CODE_STRUCT, gdb.TYPE_CODE_UNION):
            return None
        printer = self.by_name.get(template_name(type_))
        if printer is None and value.address is not None and is_object(type_, int(value.address)):
            printer = self.by_name['norvik::NSObject']
        return printer


gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers(), replace=True)
