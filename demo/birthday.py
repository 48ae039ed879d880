"""Writes birthday.qzw, the letter of the sample agency, beside itself: the 30 bytes that begin such
a file, then the letter as a word processor would save it."""

import pathlib
import struct
import zlib

BLUE = (0, 84, 147)
SUN = (245, 158, 11)


def logo(width, height):
    """A PNG of the sun going down behind waves, on white."""
    samples = 4
    rows = []
    for y in range(height):
        row = bytearray([0])
        for x in range(width):
            total = [0, 0, 0]
            for i in range(samples * samples):
                u = (x + (i % samples + 0.5) / samples) / height
                v = (y + (i // samples + 0.5) / samples) / height
                total = [a + b for a, b in zip(total, colour_at(u, v))]
            row += bytes(part // (samples * samples) for part in total)
        rows.append(bytes(row))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(
            ">I", zlib.crc32(kind + data))

    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
            chunk(b"IDAT", zlib.compress(b"".join(rows), 9)) + chunk(b"IEND", b""))


def colour_at(u, v):
    """The colour at a place in units of the logo's height, which is half of its width."""
    for i, top in enumerate((0.62, 0.76, 0.90)):
        wave = ((u * 2.5 + i * 0.5) % 1 - 0.5) ** 2 * 0.28
        if top - wave <= v <= top + 0.07 - wave:
            return BLUE
    distance = ((u - 1) ** 2 + (v - 0.62) ** 2) ** 0.5
    if v < 0.56 and distance < 0.34:
        return SUN
    if v < 0.56 and 0.40 < distance < 0.54 and ray(u - 1, 0.62 - v):
        return SUN
    return (255, 255, 255)


def ray(x, y):
    """Whether one of nine rays points there."""
    import math
    return abs(math.degrees(math.atan2(y, x)) / 180 * 10 % 1 - 0.5) > 0.36


def rtf(text):
    """Text with everything escaped that RTF needs escaped, in Windows-1252 where it can be."""
    out = []
    for letter in text:
        if letter in "\\{}":
            out.append("\\" + letter)
        elif letter < "\x80":
            out.append(letter)
        else:
            try:
                out.append("\\'%02x" % letter.encode("cp1252")[0])
            except UnicodeEncodeError:
                out.append("\\u%d?" % ord(letter))
    return "".join(out)


def link(address, text):
    return (r'{\field{\*\fldinst HYPERLINK "%s"}{\fldrslt{\ul\cf1 %s}}}' % (address, rtf(text)))


OFFERS = [
    ("Lisbon", "Hotel Três Rios, breakfast", "4", "€399"),
    ("Reykjavík", "Whales, hot springs, northern lights", "3", "€1,250"),
    ("Kraków", "Old town walk and salt mine", "3", "€285"),
]
WIDTHS = (2100, 4500, 1100, 1500)


def table_row(cells, header=False):
    edges, definition = 0, r"\trowd\trgaph108\trrh380" + (r"\trhdr" if header else "")
    for width in WIDTHS:
        edges += width
        definition += r"\clvertalc\clbrdrb\brdrs\brdrw10\brdrcf3"
        definition += (r"\clcbpat1" if header else "") + r"\cellx%d" % edges
    content = ""
    for i, cell in enumerate(cells):
        content += r"\pard\intbl\%s " % ("qr" if i == 3 else "qc" if i == 2 else "ql")
        content += r"{\b\cf4 %s}\cell" % rtf(cell) if header else rtf(cell) + r"\cell"
        content += "\n"
    return definition + "\n" + content + r"\row" + "\n"


def bullet(text):
    return (r"\pard\plain\f0\fs22\ls1\ilvl0\li720\fi-360\sa60{\listtext\f2\'b7\tab}" + rtf(text) +
            "\\par\n")


PARAGRAPH = r"\pard\plain\f0\fs22\sa160\sl276\slmult1 "

LETTER = "".join([
    r"{\rtf1\ansi\ansicpg1252\deff0\uc1\paperw11906\paperh16838\margl1134\margr1134\margt851\margb851",
    "\n",
    r"{\fonttbl{\f0\fswiss\fcharset0 Arial;}{\f1\froman\fcharset0 Georgia;}"
    r"{\f2\froman\fcharset2 Symbol;}}", "\n",
    r"{\colortbl;\red0\green84\blue147;\red96\green96\blue96;\red191\green191\blue191;"
    r"\red255\green255\blue255;}", "\n",
    r"{\stylesheet{\s0 Normal;}{\s1\sb120\sa160\b\f1\fs36 heading 1;}{\s2\sb240\sa80\b\f1\fs26 heading 2;}}",
    "\n",
    r"{\*\listtable{\list{\listlevel\levelnfc23\levelstartat1{\leveltext\'01\u8226 ?;}{\levelnumbers;}"
    r"\fi-360\li720}\listid1}}{\*\listoverridetable{\listoverride\listid1\ls1}}", "\n",
    r"\pard\qc {\pict\pngblip\picw240\pich120\picwgoal1800\pichgoal900", "\n@LOGO@",
    r"{\*\picprop{\sp{\sn wzDescription}{\sv Sunset Travel}}}}\par", "\n",
    r"\pard\plain\s1\qc\sb120\sa160\outlinelevel0\f1\fs36\cf1\b Happy birthday, [First Name]!\par", "\n",
    PARAGRAPH, r"Dear [Salutation],\par", "\n",
    PARAGRAPH, r"everybody at Sunset Travel wishes you {\i many happy returns} on [Birthday]. ",
    rtf("We hope that the year ahead takes you to all the places on your list – cafés by the sea included."),
    r"\par", "\n",
    PARAGRAPH, r"As a present, your next booking of a week or more comes with {\b the first night on us}. ",
    rtf("Here is what we would pick for you this month:"), r"\par", "\n",
    r"\pard\plain\s2\sb240\sa80\outlinelevel1\f1\fs26\cf1\b Our offers\par", "\n",
    r"\pard\plain\f0\fs22 ",
    table_row(("Trip", "What is special", "Nights", "Price from"), header=True),
    *(table_row(offer) for offer in OFFERS),
    r"\pard\plain\s2\sb240\sa80\outlinelevel1\f1\fs26\cf1\b Your present holds\par", "\n",
    bullet("for every trip of seven nights or more,"),
    bullet("for two people who travel together,"),
    bullet("until the day before your next birthday."),
    r"\pard\plain\f0\fs22\sb160\sa160\sl276\slmult1 Tell us before you travel, and we do the rest: ",
    link("https://www.sunset.example/birthday?client=%5BNumber%5D", "see this month’s offers"),
    r" or call us at +1 555 0100.\par", "\n",
    PARAGRAPH, r"With our warmest wishes,\line {\b Your travel agents at Sunset Travel}\par", "\n",
    r"\pard\plain\qc\brdrt\brdrs\brdrw10\brsp80\brdrcf3\sb240\f0\fs16\cf2 ",
    "You get this message at [Email Address] because you asked for our birthday greetings. "
    "Client number [Number].",
    r"\line ", link("https://www.sunset.example/unsubscribe?client=%5BNumber%5D", "Unsubscribe"),
    rtf(" · "), link("https://www.sunset.example/privacy", "Privacy"), rtf(" · "),
    link("mailto:marketing@agency.example", "marketing@agency.example"), r"\par", "\n}\n",
])


def hexadecimal(data):
    digits = data.hex()
    return "".join(digits[i:i + 128] + "\n" for i in range(0, len(digits), 128))


letter = LETTER.replace("@LOGO@", hexadecimal(logo(240, 120)))
header = b"Sample letter".ljust(29) + b"\n"
pathlib.Path(__file__).with_name("birthday.qzw").write_bytes(header + letter.encode("ascii"))
