"""Values of SQL Server's types as TDS 7.4 ([MS-TDS]) carries them."""

import re
import struct
import uuid
from datetime import date, datetime, timedelta
from decimal import Context, Decimal

TYPE = re.compile(r"(\w+)(?:\((max|\d+)(?:, ?(\d+))?\))?( not null)?(?: collate (\S+))?")
# The locale identifier, and the sort order of SQL Server's own collations, that imply a code page.
COLLATIONS = {"cp1252": (0x00D00409, 52), "cp1251": (0x00D00419, 0), "cp932": (0x00D00411, 0),
              "utf-8": (0x04D00409, 0)}
DAYS_TO_1900 = (date(1900, 1, 1) - date(1, 1, 1)).days
TICKS_A_DAY = 86400 * 10**7


def with_length(form, data):
    return struct.pack(form, len(data)) + data


def short_text(text, form="<B"):  # B_VARCHAR
    encoded = text.encode("utf-16-le")
    return struct.pack(form, len(encoded) // 2) + encoded


def long_text(text):  # US_VARCHAR
    return short_text(text, "<H")


def collation(code_page):
    return struct.pack("<IB", *COLLATIONS[code_page])


def itself(value):
    return [value]


def scaled(value, scale):
    return int(Decimal(value).scaleb(scale, Context(prec=38)))


def moment(text):
    """The days since 1 January of the year 1 and the time of day in 100 ns, both of UTC, and the
    minutes that the local time is ahead."""
    whole, fraction, offset = re.fullmatch(r"(.+?)(?:\.(\d+))?([+-]\d\d:\d\d)?", text).groups("")
    local = datetime.fromisoformat(whole + offset)
    ahead = local.utcoffset() or timedelta()
    since = local.replace(tzinfo=None) - ahead - datetime(1, 1, 1)
    ticks = since.seconds * 10**7 + int(fraction.ljust(7, "0"))
    return since.days, ticks, ahead // timedelta(minutes=1)


def since_1900(units_a_day):
    """The days since 1 January 1900, and the units of time in the day."""
    def fields(text):
        days, ticks, _ = moment(text)
        return days - DAYS_TO_1900, int(ticks * units_a_day / TICKS_A_DAY + 0.5)

    return fields


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
    "smallmoney": (0x6E, 0x7A, "<i", lambda value: [scaled(value, 4)]),
    "datetime": (0x6F, 0x3D, "<iI", since_1900(300 * 86400)),
    "smalldatetime": (0x6F, 0x3A, "<HH", since_1900(24 * 60)),
}
DATES_AND_TIMES = {"date": 0x28, "time": 0x29, "datetime2": 0x2A, "datetimeoffset": 0x2B}
CHARACTERS = {"char": 0xAF, "varchar": 0xA7, "nchar": 0xEF, "nvarchar": 0xE7}
TEXTS = {"text": (0x23, 0x7FFFFFFF), "ntext": (0x63, 0x7FFFFFFE)}


def exact_number(size, scale):
    def encode(value):
        number = scaled(value, scale)
        return bytes([number >= 0]) + abs(number).to_bytes(size - 1, "little")

    return encode


def date_and_time(name, scale):
    size = 3 if scale <= 2 else 4 if scale <= 4 else 5

    def encode(value):
        days, ticks, offset = moment("0001-01-01 " + value if name == "time" else value)
        day = days.to_bytes(3, "little")
        time = (ticks // 10 ** (7 - scale)).to_bytes(size, "little")
        return {"date": day, "time": time, "datetime2": time + day,
                "datetimeoffset": time + day + struct.pack("<h", offset)}[name]

    return encode


def characters(code_page, width=0):
    return lambda value: str(value).ljust(width).encode(code_page, "replace")


def nullable(null, encode):
    return lambda value: null if value is None else encode(value)


def short_value(encode):
    return nullable(b"\0", lambda value: with_length("<B", encode(value)))


def medium_value(encode):
    return nullable(b"\xff\xff", lambda value: with_length("<H", encode(value)))


def chunked_value(encode):  # PLP
    def chunks(value):
        data, unknown_length = encode(value), b"\xfe" + b"\xff" * 7
        pieces = [with_length("<I", data[at:at + 5000]) for at in range(0, len(data), 5000)]
        return unknown_length + b"".join(pieces) + bytes(4)

    return nullable(b"\xff" * 8, chunks)


def text_pointer_value(encode):
    pointer = b"\x10" + b"dummy textptr\0\0\0" + b"dummyTS\0"
    return nullable(b"\0", lambda value: pointer + with_length("<I", encode(value)))


def fixed_length_type(with_null, without_null, form, fields, not_null):
    def encode(value):
        return struct.pack(form, *fields(value))

    if not_null:
        return bytes([without_null]), encode
    return bytes([with_null, struct.calcsize(form)]), short_value(encode)


def character_type(name, size, code_page):
    sorting = collation(code_page)
    is_wide = name.startswith("n")
    if is_wide:
        code_page = "utf-16-le"
    if name in TEXTS:
        table = b"\x01" + long_text("Clients")
        return (struct.pack("<BI", *TEXTS[name]) + sorting + table,
                text_pointer_value(characters(code_page)))
    token = CHARACTERS[name]
    if size == "max":
        return struct.pack("<BH", token, 0xFFFF) + sorting, chunked_value(characters(code_page))
    length = int(size)
    encode = characters(code_page, 0 if "var" in name else length)
    return struct.pack("<BH", token, length * (1 + is_wide)) + sorting, medium_value(encode)


def wire_type(declared):
    """How a type is announced (TYPE_INFO) and the function that writes a value of it."""
    name, size, scale, not_null, code_page = TYPE.fullmatch(declared).groups()
    if name in FIXED_LENGTH:
        return fixed_length_type(*FIXED_LENGTH[name], not_null)
    if name in CHARACTERS or name in TEXTS:
        return character_type(name, size, code_page or "cp1252")
    size, scale = int(size or 0), int(scale or 0)
    if name == "decimal":
        length = 5 + 4 * sum(size > limit for limit in (9, 19, 28))
        return bytes([0x6A, length, size, scale]), short_value(exact_number(length, scale))
    if name in DATES_AND_TIMES:
        announced = bytes([DATES_AND_TIMES[name]] + [size] * (name != "date"))
        return announced, short_value(date_and_time(name, size))
    if name == "uniqueidentifier":
        return b"\x24\x10", short_value(lambda value: uuid.UUID(value).bytes_le)
    if name == "varbinary":
        return struct.pack("<BH", 0xA5, size), medium_value(bytes.fromhex)
    raise ValueError(f"no type is called {declared}")
