"""Values of SQL Server's types as TDS 7.4 ([MS-TDS]) carries them."""

import re
import struct
import uuid
from datetime import date, datetime, timedelta
from decimal import Context, Decimal

TYPE_NAME = re.compile(r"(\w+)(?:\((max|[\d, ]+)\))?( not null)?(?: collate (\S+))?", re.I)
# The locale identifier, and the sort order of SQL Server's own collations, that imply a code page.
COLLATIONS = {"cp1252": (0x00D00409, 52), "cp1250": (0x00D00405, 0), "cp1251": (0x00D00419, 0),
              "cp932": (0x00D00411, 0), "utf-8": (0x04D00409, 0)}


def with_length(form, data):
    return struct.pack(form, len(data)) + data


def short_text(text):  # B_VARCHAR
    return bytes([len(text.encode("utf-16-le")) // 2]) + text.encode("utf-16-le")


def long_text(text):  # US_VARCHAR
    return struct.pack("<H", len(text.encode("utf-16-le")) // 2) + text.encode("utf-16-le")


def collation(code_page):
    return struct.pack("<IB", *COLLATIONS[code_page])


def whole_number(size):
    return lambda value: int(value).to_bytes(size, "little", signed=size > 1)


def exact_number(size, scale):
    def encode(value):
        scaled = int(Decimal(str(value)).scaleb(scale, Context(prec=60)))
        return bytes([scaled >= 0]) + abs(scaled).to_bytes(size - 1, "little")

    return encode


def money(size):
    def encode(value):
        amount = int(Decimal(str(value)).scaleb(4)) & ((1 << size * 8) - 1)
        halves = amount.to_bytes(size, "little")
        return halves[4:] + halves[:4]

    return encode


def moment(value):
    """The days since 1 January of the year 1, and the time of day with up to seven decimals."""
    whole, _, fraction = str(value).replace("T", " ").partition(".")
    parsed = datetime.fromisoformat(whole)
    midnight = datetime(parsed.year, parsed.month, parsed.day)
    ticks = int((parsed - midnight).total_seconds()) * 10**7 + int((fraction + "0" * 7)[:7])
    return (parsed.date() - date(1, 1, 1)).days, ticks


DAYS_TO_1900 = (date(1900, 1, 1) - date(1, 1, 1)).days


def old_datetime(value):
    days, ticks = moment(value)
    return struct.pack("<iI", days - DAYS_TO_1900, (ticks * 300 + 5 * 10**6) // 10**7)


def small_datetime(value):
    days, ticks = moment(value)
    return struct.pack("<HH", days - DAYS_TO_1900, ticks // (60 * 10**7))


def date_only(value):
    return moment(value)[0].to_bytes(3, "little")


def time_only(scale):
    size = 3 if scale <= 2 else 4 if scale <= 4 else 5
    return lambda value: (moment("0001-01-01 " + value if ":" in str(value)[:3] else value)[1]
                          // 10 ** (7 - scale)).to_bytes(size, "little")


def new_datetime(scale):
    return lambda value: time_only(scale)(value) + date_only(value)


def date_with_offset(scale):
    def encode(value):
        local, offset = value[:-6], value[-6:]
        minutes = int(offset[0] + "1") * (int(offset[1:3]) * 60 + int(offset[4:]))
        whole, point, fraction = local.partition(".")
        utc = str(datetime.fromisoformat(whole) - timedelta(minutes=minutes)) + point + fraction
        return new_datetime(scale)(utc) + struct.pack("<h", minutes)

    return encode


def short_value(encode):
    return lambda value: b"\0" if value is None else with_length("<B", encode(value))


def medium_value(encode):
    return lambda value: b"\xff\xff" if value is None else with_length("<H", encode(value))


def chunked_value(encode):  # PLP
    def chunks(value):
        if value is None:
            return b"\xff" * 8
        data = encode(value)
        pieces = [data[at:at + 5000] for at in range(0, len(data), 5000)]
        total = b"\xfe" + b"\xff" * 7
        return total + b"".join(with_length("<I", piece) for piece in pieces) + bytes(4)

    return chunks


def text_pointer_value(encode):
    pointer = b"\x10" + b"dummy textptr\0\0\0" + b"dummyTS\0"
    return lambda value: b"\0" if value is None else pointer + with_length("<I", encode(value))


NUMBERS = {  # the type that allows Null, the one that does not, and the encoding
    "tinyint": (0x26, 0x30, 1, whole_number(1)), "smallint": (0x26, 0x34, 2, whole_number(2)),
    "int": (0x26, 0x38, 4, whole_number(4)), "bigint": (0x26, 0x7F, 8, whole_number(8)),
    "bit": (0x68, 0x32, 1, whole_number(1)),
    "real": (0x6D, 0x3B, 4, lambda value: struct.pack("<f", value)),
    "float": (0x6D, 0x3E, 8, lambda value: struct.pack("<d", value)),
    "money": (0x6E, 0x3C, 8, money(8)), "smallmoney": (0x6E, 0x7A, 4, money(4)),
    "datetime": (0x6F, 0x3D, 8, old_datetime), "smalldatetime": (0x6F, 0x3A, 4, small_datetime),
}
CHARACTERS = {"char": 0xAF, "varchar": 0xA7, "nchar": 0xEF, "nvarchar": 0xE7}


def wire_type(declared):
    """How a type is announced (TYPE_INFO) and the function that writes a value of it."""
    name, arguments, not_null, code_page = TYPE_NAME.fullmatch(declared).groups()
    name = name.lower()
    sizes = [int(part) for part in arguments.split(",")] if arguments and arguments != "max" else []
    code_page = code_page or "cp1252"
    if name in NUMBERS:
        nullable, fixed, size, encode = NUMBERS[name]
        if not_null:
            return bytes([fixed]), encode
        return bytes([nullable, size]), short_value(encode)
    if name in ("decimal", "numeric"):
        precision, scale = (sizes + [18, 0][len(sizes):])[:2]
        size = 5 + 4 * sum(precision > limit for limit in (9, 19, 28))
        return bytes([0x6A, size, precision, scale]), short_value(exact_number(size, scale))
    if name == "date":
        return b"\x28", short_value(date_only)
    timed = {"time": (0x29, time_only), "datetime2": (0x2A, new_datetime),
             "datetimeoffset": (0x2B, date_with_offset)}
    if name in timed:
        scale = sizes[0] if sizes else 7
        return bytes([timed[name][0], scale]), short_value(timed[name][1](scale))
    if name == "uniqueidentifier":
        return b"\x24\x10", short_value(lambda value: uuid.UUID(value).bytes_le)
    if name == "varbinary":
        return b"\xa5" + struct.pack("<H", sizes[0]), medium_value(bytes.fromhex)
    code_page = "utf-16-le" if name.startswith("n") else code_page

    def encode(value):
        return str(value).encode(code_page, "surrogatepass" if "utf" in code_page else "replace")

    shown = collation("cp1252" if code_page == "utf-16-le" else code_page)
    if name in ("text", "ntext"):
        token, limit = (0x63, 0x7FFFFFFE) if name == "ntext" else (0x23, 0x7FFFFFFF)
        table = b"\x01" + long_text("Clients")
        return struct.pack("<BI", token, limit) + shown + table, text_pointer_value(encode)
    if arguments == "max":
        return struct.pack("<BH", CHARACTERS[name], 0xFFFF) + shown, chunked_value(encode)
    length = (sizes[0] if sizes else 1) * (2 if name.startswith("n") else 1)
    if name in ("char", "nchar"):
        unpadded = encode
        blank = " ".encode(code_page)
        return (struct.pack("<BH", CHARACTERS[name], length) + shown,
                medium_value(lambda v: unpadded(v).ljust(length, b" ") if blank == b" "
                             else unpadded(str(v).ljust(sizes[0]))))
    return struct.pack("<BH", CHARACTERS[name], length) + shown, medium_value(encode)
