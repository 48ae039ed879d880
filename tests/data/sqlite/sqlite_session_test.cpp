#include "data/sqlite/sqlite_session.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "data/sqlite/database_file.h"
#include "tests/support/raised_by.h"
#include "tests/support/scratch_folder.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

using namespace std::chrono_literals;

class SqliteSessionTest : public testing::Test {
 protected:
  void SetUp() override {
    Make(R"sql(
      CREATE TABLE Clients (Number INTEGER PRIMARY KEY, Name NVARCHAR(50), Email VARCHAR(80) UNIQUE,
        SendEmail BIT, Birthdate DATETIME, AnniversaryDate DATE, Balance MONEY, Weight REAL,
        Photo VARBINARY, Anything);
      INSERT INTO Clients VALUES
        (1, 'Zoë', 'Zoe@Example.org', 1, '1970-11-17 00:00:00', '2002-03-05', 19.9, 2, x'00FF', 1.5),
        (2, 'O''Brien', 'b@x', 0, '1980-11-25', '2001-12-24', 5, 0.1, NULL, 'text'),
        (3, 'a' || char(0) || 'b', NULL, NULL, NULL, NULL, 1e300, NULL, NULL, NULL),
        (4, char(128512), 'É@x', 'yes', NULL, '2026-11-16T15:07:41', 'n/a', 'n/a', NULL, 9007199254740993);
      CREATE TABLE Users (UserID INT, Login VARCHAR(20));
      INSERT INTO Users VALUES (1, 'Admin'), (2, 'jsmith'), (3, 'JSMITH');
      CREATE VIEW Broken AS SELECT * FROM Missing;
      CREATE VIEW Names AS SELECT Name, Birthdate FROM Clients;
    )sql");
  }

  void Make(const std::string& sql) const {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(file_.string().c_str(), &database), SQLITE_OK);
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &error), SQLITE_OK) << error;
    sqlite3_close(database);
  }

  std::unique_ptr<Session> Open(const std::wstring& path, const std::wstring& catalog = L"") {
    ConnectionSettings settings;
    settings.data_source = path;
    settings.initial_catalog = catalog;
    return SqliteOpener([this] { return now_; })(settings);
  }

  std::unique_ptr<Session> Open() { return Open(file_.wstring()); }

  Value Computed(const std::wstring& expression) {
    RowStore rows;
    EXPECT_EQ(ErrorOf([&] { rows = Open()->Query(L"SELECT " + expression); }), "");
    return rows.RowCount() == 1 && rows.ColumnCount() == 1 ? rows.Read(0, 0) : Value{L"no value"};
  }

  // The numbers in the first column.
  std::string Numbers(const std::wstring& sql) {
    std::string numbers;
    const RowStore rows = Open()->Query(sql);
    for (std::size_t row = 0; row < rows.RowCount(); ++row)
      numbers += std::to_string(std::get<std::int64_t>(rows.Read(row, 0)));
    return numbers;
  }

  // "number text", or "" where nothing is raised.
  template <typename Action>
  static std::string ErrorOf(const Action& action) {
    const RuntimeError error = RaisedBy(action);
    return error.number == 0 ? "" : std::to_string(error.number) + " " + ToUtf8(error.description);
  }

  ScratchFolder scratch_;
  std::filesystem::path folder_ = scratch_.Path();
  std::filesystem::path file_ = folder_ / "Agency.v2.db";
  DateTime now_{2026y / 11 / 16, 15h};
};

TEST_F(SqliteSessionTest, GivesValuesByDeclaredType) {
  Make("UPDATE Clients SET Birthdate='unknown' WHERE Number=3");
  const std::unique_ptr<Session> session = Open();
  const RowStore rows = session->Query(L"SELECT * FROM Clients ORDER BY Number");
  const DateTime birth{1980y / 11 / 25};
  const DateTime wedding{2001y / 12 / 24};
  const DateTime today{2026y / 11 / 16};  // of which a DATE keeps the day
  const std::vector<std::vector<Value>> expected = {
      {1, L"Zoë", L"Zoe@Example.org", true, DateTime{1970y / 11 / 17}, DateTime{2002y / 3 / 5},
       Decimal{"19.9"}, 2.0, std::wstring{L"\0\uFFFD", 2}, 1.5},
      {2, L"O'Brien", L"b@x", false, birth, wedding, Decimal{"5"}, 0.1, {}, L"text"},
      {3, std::wstring{L"a\0b", 3}, {}, {}, L"unknown", {}, 1e300, {}, {}, {}},
      {4, L"\U0001F600", L"É@x", L"yes", {}, today, L"n/a", L"n/a", {}, 9007199254740993},
  };
  ASSERT_EQ(rows.RowCount(), expected.size());
  for (std::size_t row = 0; row < expected.size(); ++row)
    for (std::size_t column = 0; column < expected[row].size(); ++column)
      EXPECT_EQ(rows.Read(row, column), expected[row][column]) << row << " " << column;
  EXPECT_EQ(rows.FindColumn(L"BIRTHDATE"), 4U);
}

TEST_F(SqliteSessionTest, FindsClients) {
  const struct {
    std::wstring condition;
    std::string numbers;
  } cases[] = {
      {L"MONTH(Birthdate)*100+DAY(Birthdate) IN (1117,1118)", "1"},
      {L"1=1  AND ((MONTH(AnniversaryDate)<MONTH(GETDATE()) AND "
       L"DATEDIFF(YEAR,AnniversaryDate,GETDATE())=24) OR (MONTH(AnniversaryDate)>=MONTH(GETDATE()) "
       L"AND DATEDIFF(YEAR,AnniversaryDate,GETDATE())=25))",
       "12"},
      {L"Birthdate='1970-11-17'", "1"},
      {L"'19701117'>=Birthdate", "1"},
      {L"Birthdate IN ('11/25/1980')", "2"},
      {L"AnniversaryDate NOT IN ('2001-12-24')", "14"},
      {L"Birthdate BETWEEN '1970-11-17' AND DATEADD(year, -46, GETDATE()) + 9", "12"},
      {L"COALESCE(AnniversaryDate,'19000101')<'2000-01-01'", "3"},
      {L"AnniversaryDate>=GETDATE()", ""},
      {L"AnniversaryDate>=CONVERT(CHAR(10),GETDATE(),101)", "4"},
      {L"AnniversaryDate>='Nov 16, 2026'", "4"},
      {L"AnniversaryDate=(SELECT '11/16/'+'2026')", "4"},
      {L"AnniversaryDate={d '2026-11-16'}", "4"},
      {L"AnniversaryDate<CAST(FLOOR(CAST(GETDATE() AS FLOAT)) AS DATETIME)", "12"},
      {L"Number=ANY (SELECT UserID FROM Users WHERE UserID>1)", "23"},
      {L"Number>=ALL (SELECT UserID FROM Users)", "34"},
      {L"REPLACE(Name,'BRIEN','x')='o''X'", "2"},
      {L"Name='ZOË  '", "1"},
      {L"ISNULL(Name,'')='zoË'", "1"},
      {L"CASE Name WHEN 'ZOË' THEN 1 END=1", "1"},
      {L"Email='zoe@example.ORG'", "1"},
      {L"Email COLLATE Latin1_General_CS_AS='zoe@example.org'", ""},
      {L"Email LIKE '[^a-y]%' ORDER BY Email DESC", "41"},
      {L"Name IN ('zoë','O''BRIEN')", "12"},
      {L"Name=N'o''brien' AND SendEmail='False'", "2"},
      {L"SendEmail<>0", "14"},
      {L"Number='2' OR Number IN ('3')", "23"},
      {L"Number!<2 AND Number!>3 AND Number!=3 AND Number<>0x1F", "2"},
      {L"Number - -2=5 AND Number - -Number*-2=-Number", "3"},
      {L"LEN(Name)=3", "13"},
      {L"Number=(SELECT UserID FROM [agency.V2].dbo.Users WITH (NOLOCK) WHERE [Login]='ADMIN')",
       "1"},
      {L"Number IN (SELECT TOP 2 UserID FROM Users ORDER BY UserID DESC)", "23"},
      {L"EXISTS (SELECT 1 FROM Users u WHERE u.UserID=Clients.Number AND u.Login LIKE 'js%')",
       "23"},
  };
  for (const auto& [condition, numbers] : cases) {
    const std::wstring sql = L"SELECT * FROM Clients WHERE " + condition;
    std::string found;
    EXPECT_EQ(ErrorOf([&] { found = Numbers(sql); }), "") << ToUtf8(sql);
    EXPECT_EQ(found, numbers) << ToUtf8(sql);
  }
}

TEST_F(SqliteSessionTest, UnderstandsStatements) {
  const struct {
    std::wstring sql;
    std::string numbers;
  } cases[] = {
      {L"select u.UserID, COUNT(*) n from Users u group by u.UserID order by 1 desc;", "321"},
      {L"SELECT TOP 2 UserID FROM [Agency.v2].dbo.[Users] WITH (NOLOCK) ORDER BY Login DESC", "23"},
      {L"SELECT DISTINCT TOP (1+1) UserID FROM dbo.Users u (nolock) OPTION (MAXDOP 1)", "12"},
      {L"SELECT TOP 1 UserID FROM Users UNION ALL SELECT TOP 2 UserID FROM Users ORDER BY UserID",
       "112"},
      {L"SELECT (SELECT TOP 1 UserID FROM Users) FROM Users", "111"},
      {L"SELECT a.UserID FROM Users a LEFT JOIN Users b ON a.Login=b.Login AND a.UserID<>b.UserID",
       "123"},
      {L"SELECT 1/* 'x /* nested */ ] */,2--'\n,3 /* 4", "1"},
      {L"SELECT 7\u00A0Größe", "7"},
      {L" \t\r\n\u00A0 -- nothing", ""},
      {L"SET ANSI_NULLS OFF; SET TRANSACTION ISOLATION LEVEL READ UNCOMMITTED; SELECT 1", "1"},
      {L"; SET NOCOUNT ON SELECT 1", "1"},
  };
  for (const auto& [sql, numbers] : cases) {
    std::string found;
    EXPECT_EQ(ErrorOf([&, &query = sql] { found = Numbers(query); }), "") << ToUtf8(sql);
    EXPECT_EQ(found, numbers) << ToUtf8(sql);
  }
}

TEST_F(SqliteSessionTest, ComputesAsTheServerDoes) {
  // As many characters to the server as the platform's wide characters take for it.
  const std::wstring emoji = L"\U0001F600";
  const struct {
    std::wstring expression;
    Value value;
  } cases[] = {
      {L"GETDATE()", DateTime{2026y / 11 / 16, 15h}},
      {L"DATEADD(day, DATEDIFF(day, 0, GETDATE()), 0)", DateTime{2026y / 11 / 16}},
      {L"CONVERT(date, GETDATE())", DateTime{2026y / 11 / 16}},
      {L"GETDATE()-0.5", DateTime{2026y / 11 / 16, 3h}},
      {L"CAST('2026-01-02' AS datetime)-CAST('2026-01-01' AS datetime)", DateTime{1900y / 1 / 2}},
      {L"EOMONTH('2026-02-03', 1)", DateTime{2026y / 3 / 31}},
      {L"DATEADD(month, 1, '2026-01-31')", DateTime{2026y / 2 / 28}},
      {L"DATEFROMPARTS(2026, 11, 16)", DateTime{2026y / 11 / 16}},
      {L"DATENAME(month, GETDATE())+' '+DATENAME(weekday, GETDATE())", L"November Monday"},
      {L"ISDATE('16.11.2026')+ISDATE('11/16/2026')", 1},
      {L"STUFF('abcdef', 2, 3, 'x')+REVERSE('ab')+REPLICATE('y', 2)+STR(1.5, 4, 1)",
       L"axefbayy 1.5"},
      {L"PATINDEX('%[0-9]%', 'ab7')", 3},
      {L"COALESCE(NULL, 2)+IIF(1=2, 5, 7)+NULLIF(3, 3)", {}},
      {L"ROUND(2.345, 2)", Decimal{"2.35"}},
      {L"YEAR(NULL)", {}},
      {L"SUBSTRING('abcdef',2,3)", L"bcd"},
      {L"SUBSTRING('abcdef',0,3)", L"ab"},
      {L"SUBSTRING('abcdef',-5,6)", L""},
      {L"SUBSTRING('abcdef',-5,8)", L"ab"},
      {L"SUBSTRING('abcdef',5,100)", L"ef"},
      {L"SUBSTRING('abcdef',7,1)", L""},
      {L"SUBSTRING(12345,2,2147483647)", L"2345"},
      {L"SUBSTRING('a" + emoji + L"b',2," + std::to_wstring(emoji.size()) + L")", emoji},
      {L"LEN('  a  ')", 3},
      {L"LEN('')", 0},
      {L"LEFT('abc',2)+RIGHT('abc',5)", L"ababc"},
      {L"CHARINDEX('B','abcb',3)", 4},
      {L"CHARINDEX('x','abc')", 0},
      {L"UPPER('straße é')+LOWER('ÀÉ')", L"STRAßE Éàé"},
      {L"'a'+'b'+NULL", {}},
      {L"'5'+3", 8},
      {L"CONVERT(varchar(3),'abcdef')", L"abc"},
      {L"CONVERT(char(5),12)+'|'", L"12   |"},
      {L"CONVERT(varchar,GETDATE())", L"Nov 16 2026  3:00PM"},
      {L"CONVERT(varchar(10),GETDATE(),103)", L"16/11/2026"},
      {L"CONVERT(int,'  42 ')", 42},
      {L"CAST(-2.9 AS int)", -2},
      {L"CONVERT(decimal(10,2),1.005)", Decimal{"1.01"}},
      {L"CONVERT(decimal(5),-2.5)", Decimal{"-3"}},
      {L"CONVERT(datetime,'16/11/2026',103)", DateTime{2026y / 11 / 16}},
      {L"CONVERT(bit,5)", true},
      {L"CASE 'A' WHEN 'a' THEN 1 ELSE 2 END", 1},
      {L"CASE WHEN 1=2 THEN 'x' ELSE NULL END + 'y'", {}},
      {LR"('-- [x] /*'+N'it''s')", L"-- [x] /*it's"},
      {L"1.5e-3+.2E+1", 2.0015},
      {L"7/2", 3},
  };
  for (const auto& [expression, value] : cases)
    EXPECT_EQ(Computed(expression), value) << ToUtf8(expression);
}

TEST_F(SqliteSessionTest, RefusesWhatTheServerRejects) {
  const struct {
    std::wstring sql;
    std::string error;
  } cases[] = {
      {L"SELECT Missing FROM Clients",
       "Invalid column name 'Missing'. (line 1, character 8) (SQL Server error 207)"},
      {L"SELECT \"text\"", "Invalid column name 'text'."},
      {L"SELEC 1", "Incorrect syntax near 'SELEC' (line 1, character 1)."},
      {L"SELECT * FROM Broken", "Invalid object name 'Broken'."},
      {L"SELECT @x", "Must declare the scalar variable \"@x\"."},
      {L"SELECT CONVERT(int,'abc')",
       "Conversion failed when converting the varchar value 'abc' to data type int."},
      {L"SELECT DATEADD(fortnight,1,GETDATE())", "'fortnight' is not a recognized dateadd option."},
      {L"SELECT DATEADD(year,9000,GETDATE())",
       "Adding a value to a 'datetime' column caused an overflow."},
      {L"SELECT SUBSTRING('a',1,-1)",
       "Invalid length parameter passed to the LEFT or SUBSTRING function."},
      {L"SELECT 1 WHERE 1/0=1", "Divide by zero error encountered. (SQL Server error 8134)"},
      {L"SELECT * FROM Clients WHERE Number='abc'",
       "Conversion failed when converting the varchar value 'abc' to data type int."},
      {L"SELECT * FROM Clients WHERE Birthdate>='16.11.2026'",
       "The conversion of a varchar data type to a datetime data type resulted in an out-of-range"},
      {L"SELECT * FROM Clients WHERE Birthdate>='abc'",
       "Conversion failed when converting date and/or time from character string."},
      {L"SELECT DATEDIFF(day, 'no date', GETDATE())",
       "Conversion failed when converting date and/or time from character string."},
      {L"SELECT * FROM Users WHERE UserID IN ()", "Incorrect syntax near ')'"},
      {L"SELECT Login, COUNT(*) FROM Users", "Column 'Login' is invalid in the select list"},
      {L"SELECT FOO(1)", "'FOO' is not a recognized built-in function name. (line 1, character 8)"},
      {L"SELECT CONVERT(varchar(30),GETDATE(),77)",
       "77 is not a valid style number when converting from datetime to a character string."},
      {L"SET LOCK_TIMEOUT soon", "Incorrect syntax near 'soon'"},
      {L"SET LOCK_TIMEOUT ", "Incorrect syntax near 'LOCK_TIMEOUT'"},
      {L"SET LOCK_TIMEOUT -2", "Incorrect syntax near '2'"},
      {L"SET LOCK_TIMEOUT 1.5", "Incorrect syntax near '1.5'"},
      {L"SET ROWCOUNT 5", "Incorrect syntax near 'ROWCOUNT'"},
      {L"SET NOCOUNT", "Incorrect syntax near 'NOCOUNT'"},
      {L"SELECT N'a''", "Unclosed quotation mark after the character string 'a''."},
      {L"SELECT [a]]", "Unclosed quotation mark after the character string 'a]'."},
      {L"SELECT \"", "Unclosed quotation mark after the character string ''."},
      {L"SELECT a +", "Incorrect syntax near '+'"},
      {L"SELECT (a", "Incorrect syntax near 'a'"},
      {L"SELECT CASE WHEN", "Incorrect syntax near 'WHEN'"},
      {L"SELECT x.", "Incorrect syntax near '.'"},
      {L"SELECT f(a", "Incorrect syntax near 'a'"},
      {L"SELECT a COLLATE", "Incorrect syntax near 'COLLATE'"},
      {L"SELECT CONVERT(varchar(x), a)", "Incorrect syntax near 'x'"},
      {L"SELECT 1 WHERE 2=(SELECT UserID FROM Users WHERE Login='jsmith')",
       "Subquery returned more than 1 value. This is not permitted when the subquery follows "
       "=, !=, <, <= , >, >= or when the subquery is used as an expression."},
  };
  for (const auto& [sql, error] : cases) {
    const std::string raised = ErrorOf([&, &query = sql] { Open()->Query(query); });
    EXPECT_TRUE(raised.starts_with("-2147217900 " + error)) << ToUtf8(sql) << ": " << raised;
  }
  for (const wchar_t* opening : {L"(", L"CAST(", L"CASE ", L"f("}) {
    std::wstring sql = L"SELECT ";
    for (int depth = 0; depth < 5000; ++depth) sql += opening;
    EXPECT_EQ(ErrorOf([&] { Open()->Query(sql); }),
              "-2147217900 Some part of your SQL statement is nested too deeply.")
        << opening;
  }
}

TEST_F(SqliteSessionTest, WritesNothing) {
  const auto bytes = std::filesystem::file_size(file_);
  const std::unique_ptr<Session> session = Open();
  for (const wchar_t* sql :
       {L"DELETE FROM Clients", L"UPDATE main.Clients SET Name='x'",
        L"INSERT INTO Users VALUES(9,'x')", L"CREATE TEMP TABLE t (a)", L"DROP VIEW temp.Clients",
        L"PRAGMA user_version=5", L"ATTACH 'other.db' AS other", L"VACUUM INTO 'copy.db'", L"BEGIN",
        L"SELECT 1; DROP TABLE Users"})
    EXPECT_EQ(ErrorOf([&] { session->Execute(sql); }).substr(0, 11), "-2147217900") << sql;
  EXPECT_EQ(session->Query(L"SELECT * FROM Clients").RowCount(), 4U);
  EXPECT_EQ(std::filesystem::file_size(file_), bytes);
}

TEST_F(SqliteSessionTest, LeavesNoFileBesideADatabaseInWriteAheadMode) {
  Make("PRAGMA journal_mode=WAL; INSERT INTO Users VALUES (4, 'new');");
  EXPECT_EQ(Open()->Query(L"SELECT * FROM Users").RowCount(), 4U);
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator{folder_})
    files.push_back(entry.path());
  EXPECT_EQ(files, std::vector<std::filesystem::path>{file_});
}

TEST_F(SqliteSessionTest, ReadsBesideAProgramThatWrites) {
  Make("PRAGMA journal_mode=WAL;");
  const std::unique_ptr<Session> session = Open();
  sqlite3* opened = nullptr;
  ASSERT_EQ(sqlite3_open(file_.string().c_str(), &opened), SQLITE_OK);
  const SqliteDatabase writer{opened};
  const auto write = [opened](const char* sql) {
    EXPECT_EQ(sqlite3_exec(opened, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
  };
  write("INSERT INTO Users VALUES (4, 'new')");
  EXPECT_EQ(session->Query(L"SELECT * FROM Users").RowCount(), 4U);
  write("BEGIN; INSERT INTO Users VALUES (5, 'uncommitted')");
  EXPECT_EQ(session->Query(L"SELECT * FROM Users").RowCount(), 4U);
  EXPECT_EQ(Open()->Query(L"SELECT * FROM Users").RowCount(), 4U);
}

TEST_F(SqliteSessionTest, WaitsForALockFromTheStart) {
  sqlite3* opened = nullptr;
  ASSERT_EQ(sqlite3_open(file_.string().c_str(), &opened), SQLITE_OK);
  const SqliteDatabase writer{opened};
  ASSERT_EQ(sqlite3_exec(opened, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  std::thread release{[opened] {
    std::this_thread::sleep_for(std::chrono::milliseconds{150});
    sqlite3_exec(opened, "COMMIT", nullptr, nullptr, nullptr);
  }};
  EXPECT_EQ(ErrorOf([&] { Open()->Query(L"SELECT * FROM Users"); }), "");
  release.join();
}

TEST_F(SqliteSessionTest, TakesBatches) {
  const std::unique_ptr<Session> session = Open();
  session->Execute(L"SET LOCK_TIMEOUT 60000");
  session->Execute(L"SELECT * FROM Clients");
  const RowStore rows = session->Query(
      LR"(SET NOCOUNT ON; SELECT 1 AS [a]]b], 1 "c""d", 1 AS 'e f', g = 1; SELECT 2 AS Second;)");
  EXPECT_EQ(rows.ColumnCount(), 4U);
  for (const wchar_t* name : {L"a]b", L"c\"d", L"e f", L"g"})
    EXPECT_TRUE(rows.FindColumn(name)) << name;
  EXPECT_EQ(session->Query(L"SET NOCOUNT ON").ColumnCount(), 0U);
  EXPECT_EQ(session->Query(L"").ColumnCount(), 0U);
  EXPECT_EQ(session->Query(L"SELECT * FROM Clients WHERE 1=0").ColumnCount(), 10U);
}

TEST_F(SqliteSessionTest, NamesItsDatabase) {
  EXPECT_EQ(Open()->CurrentDatabase(), L"Agency.v2");
  EXPECT_EQ(Open(file_.wstring(), L"Orbalis")->CurrentDatabase(), L"Orbalis");
  std::wstring path = file_.wstring();
  std::replace(path.begin(), path.end(), L'/', L'\\');
  EXPECT_EQ(Open(path, L" ")->CurrentDatabase(), L"Agency.v2");
}

TEST_F(SqliteSessionTest, OpensNothingButDatabases) {
  const auto refusal = [](const std::string& path, const std::string& why) {
    return "-2147467259 Cannot open the database file \"" + path + "\": " + why;
  };
  EXPECT_EQ(ErrorOf([&] { Open(L""); }), refusal("", "there is no such file."));
  EXPECT_EQ(ErrorOf([&] { Open(L":memory:"); }), refusal(":memory:", "there is no such file."));
  EXPECT_EQ(ErrorOf([&] { Open(folder_.wstring()); }),
            refusal(folder_.string(), "it is not a file."));
  const std::filesystem::path text = folder_ / "a%20text#file";
  std::ofstream{text} << std::string(5000, 'x');
  EXPECT_EQ(ErrorOf([&] { Open(text.wstring()); }), "-2147467259 file is not a database");
}

TEST_F(SqliteSessionTest, KeepsNamesOfFiveThousandCharacters) {
  const std::wstring name(5000, L'é');
  EXPECT_EQ(Computed(L"'" + name + L"'+''"), Value{name});
}

}  // namespace
}  // namespace pxscheduler
