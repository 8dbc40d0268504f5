# NorvikCore/diagnostics/gdb/norvikcore.py - gdb shows the library's values, objects and collections by their content.
#
#   (gdb) print net
#   $1 = 1234.50
#
# gdb loads this file with the library (docs/diagnostics.md); `source norvikcore.py` loads it by hand. The printers only
# read memory and call no function of the program, so they work on a core file too. Members are found by the debug
# information of the program. The queues' labels and the state of a Weak need that of the library; without it the text
# says so. Text that a printer makes up itself is in angle brackets.

import math
import re

import gdb
import gdb.printing
import gdb.types

ABSENT = '(null)'
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


def standard_vector(value):
    """The address of the first element of a std::vector, and the number of elements."""
    first, last = value['_M_impl']['_M_start'], value['_M_impl']['_M_finish']
    return first, int(last - first)


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
    level = int(value['level_']['_M_i'])
    names = {0: 'OFF', 1: 'ERROR', 3: 'WARN', 7: 'INFO', 15: 'DEBUG', 31: 'VERBOSE'}
    if level in names:
        return 'LOG_LEVEL_' + names[level]
    if not 0 < level < 32:
        return str(level)
    flags = ('ERROR', 'WARN', 'INFO', 'DEBUG', 'VERBOSE')
    return ' | '.join('LOG_FLAG_' + name for bit, name in enumerate(flags) if level >> bit & 1)


# Printers


class TextPrinter:
    """Shows a text that is made when the value is."""

    def __init__(self, text):
        self.text = text

    def to_string(self):
        return self.text


class QuotedPrinter:
    """Shows bytes as gdb shows a string: quoted, escaped, cut off at 'print elements'. A lone half shows as its bytes."""

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


VALUE_PRINTERS = (
    ('norvik::Decimal', text_printer(decimal_text)),
    ('norvik::Date', text_printer(date_text)),
    ('norvik::NSString', string_printer),
    ('norvik::NSMutableString', mutable_string_printer),
    ('norvik::NSNumber', text_printer(number_text)),
    ('norvik::NSRange', text_printer(range_text)),
    ('norvik::AtomicLogLevel', text_printer(level_text)),
)


class Printers(gdb.printing.PrettyPrinter):
    """Finds the printer of a value by the name of its type, without template arguments."""

    def __init__(self):
        super().__init__('NorvikCore', [])
        self.by_name = {}
        for name, make in VALUE_PRINTERS:
            self.by_name[name] = gdb.printing.SubPrettyPrinter(name.replace('norvik::', '').replace('detail::', ''))
            self.by_name[name].make = make
            self.subprinters.append(self.by_name[name])

    def __call__(self, value):
        found = self.by_name.get(template_name(value.type))
        if found is None or not found.enabled or complete(value.type) is None:
            return None
        try:
            if value.type.strip_typedefs().code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
                value = value.referenced_value()
            return found.make(value)
        except (gdb.error, Unreadable) as problem:
            return TextPrinter('<%s>' % problem)


gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers(), replace=True)
