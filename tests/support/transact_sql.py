"""The statements of saved queries, run on SQLite under SQL Server's names."""

import re
import sqlite3
from datetime import datetime, timedelta

OUTSIDE_LITERALS = re.compile(r"('(?:[^']|'')*')|([^']+)")
CONVERSION = re.compile(r"\bCONVERT\s*\(\s*(\w+(?:\s*\(\s*\w+\s*\))?)", re.I)
UNITS = {"yy": "year", "yyyy": "year", "mm": "month", "m": "month", "dd": "day", "d": "day",
         "wk": "week", "ww": "week", "hh": "hour", "mi": "minute", "n": "minute", "ss": "second"}
SECONDS = {"week": 604800, "day": 86400, "hour": 3600, "minute": 60, "second": 1}


class Rejected(Exception):
    """A statement that the server does not take: the error's number and text."""


def read(text):
    return None if text is None else datetime.fromisoformat(str(text))


def part(name):
    return lambda text: None if text is None else getattr(read(text), name)


def date_diff(unit, start, end):
    unit = UNITS.get(unit.lower(), unit.lower())
    start, end = read(start), read(end)
    if start is None or end is None:
        return None
    if unit == "year":
        return end.year - start.year
    if unit == "month":
        return (end.year - start.year) * 12 + end.month - start.month
    if unit == "week":  # Sundays passed
        return (end.toordinal() // 7) - (start.toordinal() // 7)
    seconds = SECONDS[unit]
    return int(end.timestamp()) // seconds - int(start.timestamp()) // seconds if seconds < 86400 \
        else end.toordinal() - start.toordinal()


def date_add(unit, count, text):
    unit = UNITS.get(unit.lower(), unit.lower())
    if count is None or text is None:
        return None
    moment = read(text)
    if unit not in ("year", "month"):
        return str(moment + timedelta(seconds=count * SECONDS[unit]))
    months = moment.year * 12 + moment.month - 1 + count * (12 if unit == "year" else 1)
    for day in range(moment.day, 27, -1):
        try:
            return str(moment.replace(months // 12, months % 12 + 1, day))
        except ValueError:
            pass
    return str(moment.replace(months // 12, months % 12 + 1))


def convert(kind, value, style=0):
    kind = kind.lower()
    if value is None:
        return None
    if "char" in kind:
        forms = {101: "%m/%d/%Y", 112: "%Y%m%d", 120: "%Y-%m-%d %H:%M:%S", 23: "%Y-%m-%d"}
        text = read(value).strftime(forms[style]) if style in forms else str(value)
        size = re.search(r"\d+", kind)
        return text[:int(size[0])] if size else text
    if "date" in kind:
        return str(read(value))[:10] if kind == "date" else str(read(value))
    return int(value) if "int" in kind else float(value)


def to_sqlite(statement):
    """Bare date parts and types become text, ISNULL( becomes IFNULL(, N'x' becomes 'x'."""

    def rewrite(match):
        literal, code = match.groups()
        if literal:
            return literal
        code = re.sub(r"\bISNULL\s*\(", "IFNULL(", code, flags=re.I)
        code = re.sub(r"\b(DATEDIFF|DATEADD)\s*\(\s*(\w+)", r"\1('\2'", code, flags=re.I)
        code = CONVERSION.sub(r"CONVERT('\1'", code)
        return re.sub(r"\bN$", "", code)

    return OUTSIDE_LITERALS.sub(rewrite, statement)


class Database:
    """A session's view of a database file, or of a fresh database that a script makes."""

    def __init__(self, source, name):
        if source and source.endswith(".sql"):
            self.connection = sqlite3.connect(":memory:")
            with open(source, encoding="utf-8") as script:
                self.connection.executescript(script.read())
        else:
            place = f"file:{source}?mode=ro" if source else ":memory:"
            self.connection = sqlite3.connect(place, uri=True)
        define = self.connection.create_function
        define("GETDATE", 0, lambda: str(datetime.now())[:23])
        define("DB_NAME", 0, name)
        define("LEN", 1, lambda text: None if text is None else len(str(text).rstrip(" ")))
        define("DATEDIFF", 3, date_diff)
        define("DATEADD", 3, date_add)
        define("CONVERT", -1, convert)
        for function in ("YEAR", "MONTH", "DAY"):
            define(function, 1, part(function.lower()))

    def run(self, statement):
        """The steps (as of a scripted answer) that the statement gives. Raises Rejected."""
        if setting := re.fullmatch(r"\s*SET\s+(\w+)\s+(.*?)\s*;?\s*", statement, re.I | re.S):
            if setting[1].upper() == "LOCK_TIMEOUT" and not re.fullmatch(r"-?\d+", setting[2]):
                raise Rejected(102, f"Incorrect syntax near '{setting[2]}'.", 15)
            return []
        try:
            query = to_sqlite(statement)
            cursor = self.connection.execute(query)
            if cursor.description is None:
                return [{"count": cursor.rowcount}]
            rows = [list(row) for row in cursor.fetchall()]
            names = [column[0] for column in cursor.description]
            return [{"columns": self.columns(query, names, rows), "rows": rows}]
        except sqlite3.Error as error:
            text = str(error)
            if missing := re.fullmatch(r"no such (table|column): (.*)", text):
                number, what = (208, "object") if missing[1] == "table" else (207, "column")
                raise Rejected(number, f"Invalid {what} name '{missing[2]}'.") from error
            raise Rejected(102, text, 15) from error

    def columns(self, query, names, rows):
        """The declared type of each column; of an expression, one that holds its values."""
        self.connection.execute(f"CREATE TEMP VIEW Result AS {query}")
        declared = [row[2] for row in self.connection.execute("PRAGMA table_info(Result)")]
        self.connection.execute("DROP VIEW Result")
        return [(name, kind.lower() if kind and kind != "INTEGER" else self.fitting(kind, values))
                for name, kind, values in zip(names, declared, zip(*rows) if rows else [()] * len(names))]

    @staticmethod
    def fitting(kind, values):
        if kind == "INTEGER":
            return "int"
        values = [value for value in values if value is not None]
        if all(isinstance(value, int) for value in values):
            return "int"
        if all(isinstance(value, (int, float)) for value in values):
            return "float"
        is_long = any(len(str(value)) > 4000 for value in values)
        return "nvarchar(max)" if is_long else "nvarchar(4000)"
