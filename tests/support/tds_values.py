"""Values of SQL Server's types as TDS 7.4 ([MS-TDS]) carries them."""

import re
import struct
import uuid
from datetime import date, datetime
from decimal import Context, Decimal

TYPE = re.compile(r"(\w+)(?:\((max|\d+)(?:, ?(\d+))?\))?( not null)?")
# The locale identifier and the sort order of a collation whose code page is 1252.
COLLATION = struct.pack("<IB", 0x00D00409, 52)
DAYS_TO_1900 = (date(1900, 1, 1) - date(1, 1, 1)).days
TICKS_A_DAY = 86400 * 10**7


def with_length(form, data):
    return struct.pack(form, len(data)) + data


def short_text(text, form="<B"):  # B_VARCHAR
    encoded = text.encode("utf-16-le")
    return struct.pack(form, len(encoded) // 2) + encoded


def long_text(text):  # US_VARCHAR
    return short_text(text, "<H")


def itself(value):
    return [value]


def scaled(value, scale):
    return int(Decimal(value).scaleb(scale, Context(prec=38)))


def moment(text):
    """The days since 1 January of the year 1 and the time of day in 100 ns."""
    whole, _, fraction = text.partition(".")
    since = datetime.fromisoformat(whole) - datetime(1, 1, 1)
    return since.days, since.seconds * 10**7 + int(fraction.ljust(7, "0"))


def since_1900(text, units_a_day):
    """The days since 1 January 1900, and the units of time in the day."""
    days, ticks = moment(text)
    return days - DAYS_TO_1900, int(ticks * units_a_day / TICKS_A_DAY + 0.5)


FIXED_LENGTH = {  # the type that allows Null, the one that does not, the fields and their values
    "tinyint": (0x26, 0x30, "<B", itself),
    "smallint": (0x26, 0x34, "<h", itself),
    "int": (0x26, 0x38, "<i", itself),
    "integer": (0x26, 0x38, "<i", itself),
    "bigint": (0x26, 0x7F, "<q", itself),
    "bit": (0x68, 0x32, "<B", itself),
    "real": (0x6D, 0x3B, "<f", itself),
    "float": (0x6D, 0x3E, "<d", itself),
    "money": (0x6E, 0x3C, "<iI", lambda value: divmod(scaled(value, 4), 1 << 32)),
    "datetime": (0x6F, 0x3D, "<iI", lambda value: since_1900(value, 300 * 86400)),
    "smalldatetime": (0x6F, 0x3A, "<HH", lambda value: since_1900(value, 24 * 60)),
}
DATES_AND_TIMES = {"date": 0x28, "time": 0x29, "datetime2": 0x2A}
CHARACTERS = {"varchar": 0xA7, "nchar": 0xEF, "nvarchar": 0xE7}
TEXTS = {"text": (0x23, 0x7FFFFFFF), "ntext": (0x63, 0x7FFFFFFE)}


def exact_number(value, size, scale):
    number = scaled(value, scale)
    return bytes([number >= 0]) + abs(number).to_bytes(size - 1, "little")


def date_and_time(value, name, scale):
    days, ticks = moment("0001-01-01 " + value if name == "time" else value)
    size = 3 if scale <= 2 else 4 if scale <= 4 else 5
    day, time = days.to_bytes(3, "little"), (ticks // 10 ** (7 - scale)).to_bytes(size, "little")
    return {"date": day, "time": time, "datetime2": time + day}[name]


def in_chunks(data):  # PLP
    pieces = [with_length("<I", data[at:at + 5000]) for at in range(0, len(data), 5000)]
    unknown_length = struct.pack("<Q", 0xFFFFFFFFFFFFFFFE)
    return unknown_length + b"".join(pieces) + bytes(4)


# Null, and how the bytes of any other value are delimited.
SHORT = b"\0", lambda data: with_length("<B", data)
MEDIUM = b"\xff\xff", lambda data: with_length("<H", data)
CHUNKED = b"\xff" * 8, in_chunks
TEXT_POINTER = b"\0", lambda data: b"\x10dummy textptr\0\0\0dummyTS\0" + with_length("<I", data)


def nullable(delimiting, encode):
    null, delimited = delimiting
    return lambda value: null if value is None else delimited(encode(value))


def character_type(name, size):
    encoding, width = ("utf-16-le", 2) if name.startswith("n") else ("cp1252", 1)
    padding = int(size) if name == "nchar" else 0

    def encode(value):
        return str(value).ljust(padding).encode(encoding, "replace")

    if name in TEXTS:
        table = b"\x01" + long_text("Clients")
        return struct.pack("<BI", *TEXTS[name]) + COLLATION + table, nullable(TEXT_POINTER, encode)
    length, delimiting = (0xFFFF, CHUNKED) if size == "max" else (int(size) * width, MEDIUM)
    return struct.pack("<BH", CHARACTERS[name], length) + COLLATION, nullable(delimiting, encode)


def wire_type(declared):
    """How a type is announced (TYPE_INFO) and the function that writes a value of it."""
    name, size, scale, not_null = TYPE.fullmatch(declared).groups()
    if name in CHARACTERS or name in TEXTS:
        return character_type(name, size)
    size, scale = int(size or 0), int(scale or 0)
    if name in FIXED_LENGTH:
        with_null, without_null, form, fields = FIXED_LENGTH[name]
        if not_null:
            return bytes([without_null]), lambda value: struct.pack(form, *fields(value))
        return (bytes([with_null, struct.calcsize(form)]),
                nullable(SHORT, lambda value: struct.pack(form, *fields(value))))
    if name == "decimal":
        length = 5 + 4 * sum(size > limit for limit in (9, 19, 28))
        return (bytes([0x6A, length, size, scale]),
                nullable(SHORT, lambda value: exact_number(value, length, scale)))
    if name in DATES_AND_TIMES:
        announced = [DATES_AND_TIMES[name]] if name == "date" else [DATES_AND_TIMES[name], size]
        return bytes(announced), nullable(SHORT, lambda value: date_and_time(value, name, size))
    if name == "uniqueidentifier":
        return b"\x24\x10", nullable(SHORT, lambda value: uuid.UUID(value).bytes_le)
    if name == "varbinary":
        return struct.pack("<BH", 0xA5, size), nullable(MEDIUM, bytes.fromhex)
    raise ValueError(f"no type is called {declared}")
