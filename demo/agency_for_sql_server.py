"""Writes the sample agency as Transact-SQL that makes it in the current database of a SQL Server.

Usage: agency_for_sql_server.py DATABASE, an SQLite file made by demo/agency.sql
"""

import sqlite3
import sys


def literal(value) -> str:
    if value is None:
        return "NULL"
    if isinstance(value, (int, float)):
        return str(value)
    # A date with "T" in it is read alike whatever language the login has.
    if len(value) == 19 and value[4] + value[7] + value[10] + value[13] + value[16] == "-- ::":
        value = value.replace(" ", "T")
    return "N'" + value.replace("'", "''") + "'"


def main() -> None:
    database = sqlite3.connect(f"file:{sys.argv[1]}?mode=ro", uri=True)
    tables = database.execute("SELECT name, sql FROM sqlite_master WHERE type='table'").fetchall()
    for name, definition in tables:
        print(definition.replace("INTEGER PRIMARY KEY", "INT PRIMARY KEY") + ";")
        for row in database.execute(f"SELECT * FROM {name}"):
            print(f"INSERT INTO {name} VALUES ({', '.join(map(literal, row))});")
    print("GO")


main()
