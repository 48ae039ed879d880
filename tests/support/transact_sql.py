"""The statements of saved queries, run on SQLite under SQL Server's names."""

import sqlite3


class Database:
    """A session's view of a database file, or of an empty database."""

    def __init__(self, file, name):
        self.connection = sqlite3.connect(f"file:{file}?mode=ro" if file else ":memory:", uri=True)
        self.connection.create_function("DB_NAME", 0, name)
        self.connection.create_function("MONTH", 1, lambda date: date and int(date[5:7]))
        self.connection.create_function("DAY", 1, lambda date: date and int(date[8:10]))

    def run(self, statement):
        """The steps (as of a scripted answer) that the statement gives."""
        if statement.startswith("SET "):
            return []
        try:
            cursor = self.connection.execute(statement)
            names = [column[0] for column in cursor.description or ()]
            columns = list(zip(names, self.types(statement)))
            return [{"columns": columns, "rows": cursor.fetchall()}]
        except sqlite3.Error as error:
            return [{"error": [102, 15, str(error)]}]

    def types(self, query):
        """The declared type of each column; of an expression, one that holds any text."""
        self.connection.execute(f"CREATE TEMP VIEW Result AS {query}")
        declared = self.connection.execute("PRAGMA table_info(Result)").fetchall()
        self.connection.execute("DROP VIEW Result")
        return [kind.lower() or "nvarchar(max)" for _, _, kind, *_ in declared]
