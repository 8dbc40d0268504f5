# NorvikCore/diagnostics/lldb/norvikcore_lldb.py - lldb shows the library's values, objects and collections by their
# content, as gdb does with ../gdb/norvikcore.py.
#
#   (lldb) command script import /usr/share/norvikcore/lldb/norvikcore_lldb.py
#   (lldb) frame variable net
#   (norvik::Decimal) net = 1234.50
#
# The formatters are the category "norvikcore" (`type category disable norvikcore`). They only read memory and call no
# function of the program, so they work on a core file too. The program's debug information has the members of values;
# OFFSETS replaces it for the library's classes, so that the library may be stripped. Texts about a value that cannot be
# shown are in angle brackets.

import math
import re
import time

import lldb

if not hasattr(lldb, 'SBDebugger'):
    raise ImportError("lldb's own Python module is missing: install python3-lldb-14, and set "
                      'PYTHONPATH=/usr/lib/llvm-14/lib/python3.11/dist-packages')

CATEGORY = 'norvikcore'
# Where members are in their classes, in bytes. A test compares them with those of ../gdb/norvikcore.py.
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
KIND_OFFSET = 24  # of a Value's kind_
GREATEST_TEXT = 1 << 40  # bytes; a longer text is memory that was not initialised


class Unreadable(Exception):
    """A value that the program cannot have made, such as one that is not initialised yet."""


# Memory


def memory_at(process, address, size):
    """By the target, because a core file lacks what is only in the program's file."""
    if not size:
        return b''
    error, target = lldb.SBError(), process.GetTarget()
    found = target.ReadMemory(lldb.SBAddress(address, target), size, error)
    if not error.Success() or found is None or len(found) != size:
        raise Unreadable('no memory at %#x' % address)
    return found


def number_at(process, address, size=8, signed=False):
    return int.from_bytes(memory_at(process, address, size), 'little', signed=signed)


def c_string(process, address, greatest=4096):
    """The bytes before the NUL at that address, which are ASCII."""
    text = b''
    while len(text) < greatest:
        size = 64 - address % 64  # within a page, because the next one may be missing
        part = memory_at(process, address, size)
        text += part.split(b'\0', 1)[0]
        if b'\0' in part:
            return text.decode('ascii', 'replace')
        address += size
    raise Unreadable('not a name')


# Members. The formatters get a value as lldb shows it; its raw form has the members of the program.


def raw(value):
    value = value.GetNonSyntheticValue()
    return value.Dereference() if value.GetType().IsPointerType() else value


def member(value, *path):
    for name in path:
        value = value.GetNonSyntheticValue().GetChildMemberWithName(name, lldb.eNoDynamicValues)
        if not value.IsValid():
            raise Unreadable('no member ' + name)
    return value


def number(value, *path):
    found = member(value, *path)
    error = lldb.SBError()
    result = found.GetValueAsUnsigned(error, 0)
    if not error.Success():
        raise Unreadable('optimized out')
    return result


def signed(value, *path):
    return member(value, *path).GetValueAsSigned()


def real(value, *path):
    error = lldb.SBError()
    result = member(value, *path).GetData().GetDouble(error, 0)
    if not error.Success():
        raise Unreadable('optimized out')
    return result


# Values


def decimal_text(value):
    low, high, sign_and_exponent = (number(value, name) for name in ('low_', 'high_', 'signAndExponent_'))
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
    seconds = real(value, 'seconds_')
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
    return 'true' if value & 1 else 'false'


def number_text(value):
    kind = number(value, 'kind_')
    if kind == 0:
        return boolean_text(number(value, 'boolean_'))
    if kind == 1:
        return str(signed(value, 'integer_'))
    if kind == 2:
        return str(number(value, 'integer_'))
    if kind == 3:
        return repr(real(value, 'double_'))
    if kind == 4:
        return decimal_text(member(value, 'decimal_'))
    raise Unreadable('not an NSNumber')


def range_text(value):
    location = number(value, 'location')
    return '{%s, %d}' % ('NSNotFound' if location == (1 << 63) - 1 else location, number(value, 'length'))


def level_text(value):
    """The name of a level; the flags of a sum without a name."""
    level = signed(value, 'level_', 'value_')
    names = {0: 'OFF', 1: 'ERROR', 3: 'WARN', 7: 'INFO', 15: 'DEBUG', 31: 'VERBOSE'}
    if level in names:
        return 'LOG_LEVEL_' + names[level]
    if not 0 < level < 32:
        return str(level)
    flags = ('ERROR', 'WARN', 'INFO', 'DEBUG', 'VERBOSE')
    return ' | '.join('LOG_FLAG_' + name for bit, name in enumerate(flags) if level >> bit & 1)


ESCAPES = {'"': '\\"', '\\': '\\\\', '\n': '\\n', '\t': '\\t', '\r': '\\r'}


def quoted(process, address, size):
    """The bytes as a quoted text, cut off as lldb cuts off its own texts."""
    if not 0 <= size < GREATEST_TEXT:
        raise Unreadable('not a text')
    debugger = process.GetTarget().GetDebugger()
    setting = lldb.SBDebugger.GetInternalVariableValue('target.max-string-summary-length', debugger.GetInstanceName())
    greatest = int(setting.GetStringAtIndex(0) or 1024)
    found = memory_at(process, address, min(size, greatest))
    if size > greatest:
        while found and found[-1] & 0xC0 == 0x80:  # a character that is cut off
            found = found[:-1]
        if found and found[-1] >= 0xC0:
            found = found[:-1]
    letters = []
    for letter in found.decode('utf-8', 'surrogateescape'):
        code = ord(letter)
        if 0xDC80 <= code <= 0xDCFF:
            letters.append('\\x%02x' % (code - 0xDC00))
        elif letter in ESCAPES:
            letters.append(ESCAPES[letter])
        else:
            letters.append(letter if letter.isprintable() else '\\%03o' % code if code < 128 else letter)
    return '"%s"%s' % (''.join(letters), '...' if size > greatest else '')


def string_text(value):
    return quoted(value.GetProcess(), number(value, 'data_'), number(value, 'bits_') >> 3)


def mutable_string_text(value):
    process, address = value.GetProcess(), member(value, 'bytes_').GetLoadAddress()
    return quoted(process, number_at(process, address), number_at(process, address + 8))  # of a std::string


# Objects


def type_named(target, name):
    """The type of that name with its members, or None."""
    found = target.FindFirstType(name)
    return found if found.IsValid() and found.GetByteSize() else None


def type_info_kinds(process):
    """The addresses with which the type information of classes begins that have one superclass or several."""
    target, kinds = process.GetTarget(), {}
    for kind in ('si', 'vmi'):
        name = '__%s_class_type_info' % kind
        for found in target.FindSymbols('_ZTVN10__cxxabiv1%d%sE' % (len(name), name)):
            address = found.GetSymbol().GetStartAddress().GetLoadAddress(target)
            if address != lldb.LLDB_INVALID_ADDRESS:
                kinds[address + 16] = kind
    return kinds


def plain_name(mangled):
    """'company::Employee' for 'N7company8EmployeeE'; the mangled name itself if it is not that simple."""
    rest, names = mangled, []
    if rest.startswith('N') and rest.endswith('E'):
        rest = rest[1:-1]
    while rest:
        digits = re.match(r'\d+', rest)
        if not digits:
            return mangled
        end = digits.end() + int(digits.group())
        name = rest[digits.end():end]
        names.append('(anonymous namespace)' if name == '_GLOBAL__N_1' else name)
        rest = rest[end:]
    return '::'.join(names) or mangled


KNOWN_CLASSES = {}  # by the process and the address of the table of virtual functions


def classes_of_table(process, table):
    """The C++ names of a class and its superclasses, each with the distance of its members from those of the class, and
    the distance of the class from the object that has the table."""
    distance = number_at(process, table - 16, signed=True)
    classes, found, kinds = [(number_at(process, table - 8), 0)], [], type_info_kinds(process)
    for info, start in classes:
        mangled = c_string(process, number_at(process, info + 8)).lstrip('*')
        if not re.fullmatch(r'[A-Za-z0-9_.$]+', mangled) or len(found) == 100:
            break
        symbol = process.GetTarget().ResolveLoadAddress(info).GetSymbol().GetName() or ''
        known = symbol.startswith('typeinfo for ')
        found.append((symbol[len('typeinfo for '):] if known else plain_name(mangled), start))
        kind = kinds.get(number_at(process, info))
        if kind == 'si':
            classes.append((number_at(process, info + 16), start))
        elif kind == 'vmi':
            for base in range(info + 24, info + 24 + 16 * number_at(process, info + 20, 4), 16):
                classes.append((number_at(process, base), start + (number_at(process, base + 8, signed=True) >> 8)))
    return found, distance


def runtime_classes(process, address):
    """The C++ names of the class of the object at that address and of its superclasses, each with the address of its
    members. The program has them for dynamic_cast, also without symbols and debug information. Empty if there is no
    object."""
    try:
        key = process.GetUniqueID(), number_at(process, address)
        if key not in KNOWN_CLASSES:
            KNOWN_CLASSES[key] = classes_of_table(process, key[1])
    except Unreadable:
        return []
    found, distance = KNOWN_CLASSES[key]
    return [(name, address + distance + start) for name, start in found]


def short(name):
    """The name as an application writes it."""
    return name[len('norvik::'):] if name.startswith('norvik::') else name


class Object:
    """An object of a class derived from NSObject."""

    COLLECTIONS = ('norvik::NSArray', 'norvik::NSDictionary', 'norvik::NSSet')

    def __init__(self, process, address, declared=''):
        self.process, self.address = process, address
        self.classes = runtime_classes(process, address)
        self.root = dict(self.classes).get('norvik::NSObject')
        self.is_there = self.root is not None
        self.name = short(self.classes[0][0] if self.is_there else declared)
        self.is_queue = 'norvik::TSKDispatchQueue' in dict(self.classes)  # whose members only lead to the queue
        immutable = (name.replace('norvik::NSMutable', 'norvik::NS') for name, _ in self.classes)
        self.collection = next((name for name in immutable if name in self.COLLECTIONS), None)

    def member(self, name):
        """The address of a member of the collection."""
        return self.root + OFFSETS['%s::%s' % (self.collection, name)]

    def range(self):
        """The addresses of the first Value and of the end of the last."""
        entries, skipped = 'table_.entries_', 0
        if self.collection == 'norvik::NSArray':
            entries, skipped = 'elements_', number_at(self.process, self.member('first_'))
        first, last = (number_at(self.process, self.member(entries) + offset) for offset in (0, 8))
        return first + skipped * VALUE_SIZE, last

    def count(self):
        if self.collection == 'norvik::NSArray':
            first, last = self.range()
            count = (last - first) // VALUE_SIZE
        else:
            count = number_at(self.process, self.member('table_.count_'))
        if not 0 <= count < GREATEST_TEXT // VALUE_SIZE:
            raise Unreadable('not a collection')
        return count

    def elements(self, greatest):
        """The names and addresses of the elements, or of the keys and values of a dictionary."""
        is_dictionary = self.collection == 'norvik::NSDictionary'
        first, last = self.range()
        found = []
        for address in range(first, last, VALUE_SIZE * (2 if is_dictionary else 1)):
            if len(found) >= greatest:
                break
            if number_at(self.process, address + KIND_OFFSET, 1) == 0:  # removed
                continue
            if is_dictionary:
                index = len(found) // 2
                found += [('key %d' % index, address), ('value %d' % index, address + VALUE_SIZE)]
            else:
                found.append(('[%d]' % len(found), address))
        return found

    def text(self):
        if self.collection:
            return '%s of %d' % (self.name, self.count())
        if self.is_queue:
            core = number_at(self.process, self.root + OFFSETS['norvik::TSKDispatchQueue::queue_'])
            return '%s %#x %s' % (self.name, self.address, core_text(self.process, core))
        return '%s %#x%s' % (self.name, self.address, '' if self.is_there else ' <no object is there>')


def object_text(process, address, declared=''):
    return Object(process, address, declared).text() if address else ABSENT


def pointed_class(pointer):
    """The name of the class that a pointer refers to."""
    return pointer.GetType().GetPointeeType().GetUnqualifiedType().GetName()


def pointer_text(value):
    value = value.GetNonSyntheticValue()
    return object_text(value.GetProcess(), value.GetValueAsUnsigned(), pointed_class(value))


def self_text(value):
    """Of a collection that is shown itself, not by a Ref."""
    return object_text(value.GetProcess(), value.GetLoadAddress(), value.GetType().GetUnqualifiedType().GetName())


def ref_text(value):
    return pointer_text(member(value, 'object_'))


def weak_state(value):
    """The address of the object if it is alive, otherwise a text."""
    record, process = number(value, 'record_'), value.GetProcess()
    if not record:
        return ABSENT
    target = number_at(process, record + OFFSETS['norvik::detail::SideRecord::object_'])
    if not target:
        return '<destroyed>'
    count = number_at(process, target + OFFSETS['norvik::NSObject::count_'], 4)
    return number(value, 'object_') if 0 < count < 1 << 30 else '<being destroyed>'


def weak_text(value):
    state = weak_state(value)
    return state if isinstance(state, str) else ref_text(value)


def closure_name(classes):
    """The first argument of norvik::detail::Closure<...>: the closure's own type."""
    start, depth, name = 'norvik::detail::Closure<', 0, classes[0][0] if classes else 'a closure'
    if not name.startswith(start):
        return name
    for at in range(len(start), len(name)):
        letter = name[at]
        if depth == 0 and letter in ',>':
            return name[len(start):at]
        depth += (letter in '<({[') - (letter in '>)}]')
    return name


def block_text(value):
    address = number(value, 'closure_', 'object_')
    return 'Block of ' + closure_name(runtime_classes(value.GetProcess(), address)) if address else ABSENT


def name_of(string):
    """An NSString without quotes."""
    size = number(string, 'bits_') >> 3
    if size > 10000:
        raise Unreadable('not a name')
    return memory_at(string.GetProcess(), number(string, 'data_'), size).decode('utf-8', 'replace')


def class_text(value):
    name, qualified = name_of(member(value, 'name_')), short(name_of(member(value, 'qualifiedName_')))
    return name if name == qualified else '%s (%s)' % (name, qualified)


def selector_text(value):
    name = member(value, 'name_')
    return string_text(name.Dereference()) if name.GetValueAsUnsigned() else ABSENT


def item_count(process, first):
    """The number of items in a list that is linked by the first word of each."""
    count = 0
    while first and count < 10000:
        first, count = number_at(process, first), count + 1
    return count


def core_text(process, core):
    """The label. Of a serial queue also what it does: a thread is in it, it is suspended, blocks wait."""
    if not core:
        return ABSENT
    label = core + OFFSETS['norvik::detail::QueueCore::label_']
    parts = [quoted(process, number_at(process, label), number_at(process, label + 8))]
    if number_at(process, core + OFFSETS['norvik::detail::QueueCore::kind_'], 1) in (0, 4):  # serial, main
        inbox = number_at(process, core + OFFSETS['norvik::detail::SerialQueue::inbox_'])
        ready = number_at(process, core + OFFSETS['norvik::detail::SerialQueue::ready_'])
        waiting = item_count(process, inbox & ~7) + item_count(process, ready)
        parts += ['busy'] if inbox & 5 == 0 else []  # neither idle nor parked
        parts += ['suspended'] if inbox & 2 else []
        parts += ['%d waiting' % waiting] if waiting else []
    return ', '.join(parts)


def queue_text(value):
    return core_text(value.GetProcess(), number(value, 'core_'))


def value_text(value):
    kind, storage = number(value, 'kind_'), member(value, 'storage_')
    texts = (lambda: ABSENT, lambda: '<null>', lambda: boolean_text(number(storage, 'boolean')),
             lambda: str(signed(storage, 'integer')), lambda: repr(real(storage, 'real')),
             lambda: decimal_text(member(storage, 'decimal')), lambda: date_text(member(storage, 'date')),
             lambda: string_text(member(storage, 'string')), lambda: ref_text(member(storage, 'object')))
    if kind >= len(texts):
        raise Unreadable('not a Value')
    return texts[kind]()


def stored_value(value):
    """A property's value, as lldb shows it."""
    stored = member(value, 'value_')
    stored.SetPreferSyntheticValue(True)
    return stored


def stored_text(value):
    stored = stored_value(value)
    return stored.GetSummary() or stored.GetValue()


# Children


class Children:
    """The base of those that show children: names, and functions that make them."""

    def __init__(self, value, _):
        self.value = value
        self.made = []

    def update(self):
        try:
            self.made = self.find(self.value)
        except Unreadable:
            self.made = []
        return False

    def num_children(self):
        return len(self.made)

    def has_children(self):
        return bool(self.made)

    def get_child_index(self, name):
        return next((at for at, (each, _) in enumerate(self.made) if each == name), -1)

    def get_child_at_index(self, index):
        return self.made[index][1]() if 0 <= index < len(self.made) else None


def collection_children(value, shown):
    type_ = type_named(value.GetTarget(), 'norvik::Value')
    if type_ is None:
        return []

    def make(name, address):
        return lambda: value.CreateValueFromAddress(name, address, type_)

    return [(name, make(name, address)) for name, address in shown.elements(2000)]


def member_children(value):
    """The members, except those of NSObject: first those of the superclasses. A Ref shows as a pointer, because that
    shows no members: objects may refer to one another in circles."""
    found = []
    value = value.GetNonSyntheticValue()
    for index in range(value.GetNumChildren()):
        each = value.GetChildAtIndex(index, lldb.eNoDynamicValues, False)
        name = each.GetName() or ''
        if name == 'norvik::NSObject' or name.startswith('_vptr'):
            continue
        if index < value.GetType().GetNumberOfDirectBaseClasses() and name == each.GetType().GetName():
            found += member_children(each)
            continue
        if each.GetType().GetName().startswith(('norvik::detail::Stored<', 'norvik::detail::AtomicStored<')):
            name, each = name.rstrip('_'), member(each, 'value_')
        if each.GetType().GetCanonicalType().GetName().startswith(('norvik::Ref<', 'norvik::Weak<')):
            each = member(each, 'object_')
            register_class(value.GetTarget().GetDebugger(), pointed_class(each))
        found.append((name, make_child(value, name, each)))
    return found


def make_child(value, name, content):
    # The same memory under the name that is shown.
    return lambda: value.CreateValueFromAddress(name, content.GetLoadAddress(), content.GetType())


def object_children(value, pointer):
    """The elements of a collection, or the members of an object as far as the program describes its class."""
    address = pointer.GetValueAsUnsigned()
    if not address:
        return []
    register_class(value.GetTarget().GetDebugger(), pointed_class(pointer))
    shown = Object(value.GetProcess(), address)
    if shown.collection:
        return collection_children(value, shown)
    if shown.is_queue or REPETITIONS.are_too_many(address):
        return []
    for name, start in shown.classes:
        type_ = type_named(value.GetTarget(), name)
        if type_ is not None and name != 'norvik::NSObject':
            return member_children(value.CreateValueFromAddress('object', start, type_))
    return []


class RefChildren(Children):
    def find(self, value):
        return object_children(value, member(value, 'object_'))


class WeakChildren(Children):
    def find(self, value):
        return [] if isinstance(weak_state(value), str) else object_children(value, member(value, 'object_'))


class CollectionChildren(Children):
    def find(self, value):
        value = raw(value)
        shown = Object(value.GetProcess(), value.GetLoadAddress())
        return collection_children(value, shown) if shown.collection else []


def is_circular(shown, around=(), seen=None):
    """True if the collection contains itself or a circle of collections, or more collections than it is worth to check.
    lldb would show a circle without end."""
    seen = [] if seen is None else seen
    seen.append(shown.address)
    if shown.address in around or len(seen) > 500:
        return True
    for _, address in shown.elements(200):
        if number_at(shown.process, address + KIND_OFFSET, 1) == 8:
            inner = Object(shown.process, number_at(shown.process, address))
            if inner.collection and is_circular(inner, around + (shown.address,), seen):
                return True
    return False


class Repetitions:
    """Counts how many times in a row the members of an object are shown. Objects may refer to one another in circles
    by members that lldb shows itself, such as a std::vector of Refs; lldb would follow a circle until its stack ends."""

    MOST = 30

    def __init__(self):
        self.counts = {}
        self.time = 0

    def are_too_many(self, address):
        now = time.monotonic()
        if now - self.time > 0.5:  # another command
            self.counts = {}
        self.time = now
        self.counts[address] = self.counts.get(address, 0) + 1
        return self.counts[address] > self.MOST


REPETITIONS = Repetitions()


class ValueChildren(Children):
    """The elements of a collection; another object shows no members."""

    def find(self, value):
        value = raw(value)
        if number(value, 'kind_') != 8:
            return []
        shown = Object(value.GetProcess(), number(value, 'storage_', 'object', 'object_'))
        return collection_children(value, shown) if shown.collection and not is_circular(shown) else []


class StoredChildren(Children):
    def find(self, value):
        stored = stored_value(value)
        return [(stored.GetChildAtIndex(at).GetName(), lambda at=at: stored.GetChildAtIndex(at))
                for at in range(stored.GetNumChildren())]


class NoChildren(Children):
    def find(self, value):
        return []


# Commands


def print_object(_, expression, context, result, __):
    """mk_printObject EXPRESSION: the program prints the properties of an object, given by a Ref, a pointer or itself.

    `expression mk_printObjectAt(...)` ends when a getter throws, although mk_printObjectAt catches that."""
    frame = context.GetFrame()
    value = frame.GetValueForVariablePath(expression)
    if not value.IsValid():
        value = frame.EvaluateExpression(expression)
    if not expression or not value.GetError().Success():
        result.SetError(value.GetError().GetCString() or 'mk_printObject needs an expression')
        return
    value = value.GetStaticValue().GetNonSyntheticValue()
    if value.GetType().GetCanonicalType().GetName().replace('const ', '').startswith('norvik::Ref<'):
        value = member(value, 'object_')
    is_pointer = value.GetType().IsPointerType() or value.GetType().IsReferenceType()
    address = value.GetValueAsUnsigned() if is_pointer else value.GetLoadAddress()
    options = lldb.SBExpressionOptions()
    options.SetTrapExceptions(False)
    # By its address: with debug information in a file of its own, lldb gives the function a C++ name that it then does
    # not find.
    target = context.GetTarget()
    addresses = [each.GetSymbol().GetStartAddress().GetLoadAddress(target)
                 for each in target.FindSymbols('mk_printObjectAt')]
    loaded = [each for each in addresses if each != lldb.LLDB_INVALID_ADDRESS]
    if not loaded:
        result.SetError('the program has not loaded NorvikCore')
        return
    call = '((void (*)(const void *))%d)((const void *)%d)' % (loaded[0], address)
    error = frame.EvaluateExpression(call, options).GetError()
    if not error.Success() and error.GetError() != 0x1001:  # an expression without a result
        result.SetError(error)


# Registration

# Type names as regular expressions, the function that gives the text, and the class that gives the children.
FORMATTERS = (
    (r'norvik::Decimal', 'decimal_text', 'NoChildren'),
    (r'norvik::Date', 'date_text', 'NoChildren'),
    (r'norvik::NSString', 'string_text', 'NoChildren'),
    (r'norvik::KeyPath<.+>', 'string_text', 'NoChildren'),
    (r'norvik::NSMutableString', 'mutable_string_text', 'NoChildren'),
    (r'norvik::NSNumber', 'number_text', 'NoChildren'),
    (r'norvik::NSRange', 'range_text', 'NoChildren'),
    (r'norvik::AtomicLogLevel', 'level_text', 'NoChildren'),
    (r'norvik::Value', 'value_text', 'ValueChildren'),
    (r'norvik::Ref<.+>', 'ref_text', 'RefChildren'),
    (r'norvik::Weak<.+>', 'weak_text', 'WeakChildren'),
    (r'norvik::Block<.+>', 'block_text', 'NoChildren'),
    (r'norvik::Class', 'class_text', 'NoChildren'),
    (r'norvik::SEL', 'selector_text', 'NoChildren'),
    (r'norvik::detail::(Atomic)?Stored<.+>', 'stored_text', 'StoredChildren'),
    (r'norvik::detail::Handle<norvik::detail::QueueCore>', 'queue_text', 'NoChildren'),
    (r'norvik::dispatch_queue_t', 'queue_text', 'NoChildren'),
    (r'norvik::NS(Mutable)?(Array|Dictionary|Set)', 'self_text', 'CollectionChildren'),
)


def summary(make_text):
    def show(value, _):
        try:
            value = value.GetNonSyntheticValue()
            return make_text(value if make_text is pointer_text else raw(value))
        except Unreadable as problem:
            return '<%s>' % problem

    return show


for _pattern, _text, _children in FORMATTERS + (('', 'pointer_text', ''),):
    globals()['show_' + _text] = summary(globals()[_text])


def register_class(debugger, name):
    """Lets lldb show pointers to objects of that class."""
    pattern = r'^(const )?%s \*( ?const)?$' % re.escape(name)
    category = debugger.GetCategory(CATEGORY)
    specifier = lldb.SBTypeNameSpecifier(pattern, True)
    if not category.GetSummaryForType(specifier).IsValid():
        options = lldb.eTypeOptionHideValue | lldb.eTypeOptionHideChildren
        shown = lldb.SBTypeSummary.CreateWithFunctionName('%s.show_pointer_text' % __name__, options)
        category.AddTypeSummary(specifier, shown)


def __lldb_init_module(debugger, _):
    category = debugger.CreateCategory(CATEGORY)
    for pattern, text, children in FORMATTERS:
        specifier = lldb.SBTypeNameSpecifier('^%s$' % pattern, True)
        shown = lldb.SBTypeSummary.CreateWithFunctionName('%s.show_%s' % (__name__, text), lldb.eTypeOptionCascade)
        category.AddTypeSummary(specifier, shown)
        synthetic = lldb.SBTypeSynthetic.CreateWithClassName('%s.%s' % (__name__, children), lldb.eTypeOptionCascade)
        category.AddTypeSynthetic(specifier, synthetic)
    register_class(debugger, 'norvik::NSObject')
    debugger.HandleCommand('command script add -f %s.print_object mk_printObject' % __name__)
    category.SetEnabled(True)
