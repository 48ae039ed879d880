#include "data/sqlite/sql_translator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace pxscheduler {
namespace {

const SqlSchema kSchema{"Agency",
                        {{"TRAVELDATE", ColumnType::kDateTime},
                         {"BIRTHDATE", ColumnType::kDateTime},
                         {"SENDEMAIL", ColumnType::kBoolean},
                         {"NUMBER", ColumnType::kInteger},
                         {"NAME", ColumnType::kText}}};

std::string ErrorOf(const std::string& sql) {
  try {
    return "none: " + TranslateSql(sql, kSchema).sql;
  } catch (const SqlSyntaxError& error) {
    return error.description;
  }
}

struct Case {
  std::string sql;
  std::string translated;
};

template <std::size_t count>
void ExpectTranslated(const Case (&cases)[count]) {
  for (const auto& [sql, translated] : cases) EXPECT_EQ(ErrorOf(sql), "none: " + translated) << sql;
}

TEST(SqlTranslatorTest, LeavesWhatBothLanguagesShare) {
  for (const std::string sql :
       {"SELECT * FROM Clients", ")", "", "SELECT a FROM t LEFT JOIN u ON t.a=u.a",
        "SELECT Name FROM Clients WHERE MONTH(Birthdate)*100+DAY(Birthdate) IN (1117,1118)",
        "SELECT 1 WHERE NOT EXISTS (SELECT 1) AND Name IS NOT NULL"})
    EXPECT_EQ(ErrorOf(sql), "none: " + sql);
}

TEST(SqlTranslatorTest, RewritesTheDialect) {
  const Case cases[] = {
      {"select c.*, COUNT(*) n from Clients c group by c.Name order by 2 desc;",
       "SELECT c.*, COUNT(*) n FROM Clients c GROUP BY c.Name ORDER BY 2 DESC;"},
      {"SELECT a - -b*-2", "SELECT SQL_SUBTRACT(a, -b* -2)"},
      {"SELECT Number - -2", "SELECT Number-  -2"},
      {"SELECT TOP 5 * FROM [Agency].dbo.[Clients] WITH (NOLOCK) ORDER BY Name",
       "SELECT * FROM \"Clients\" ORDER BY Name LIMIT 5"},
      {"SELECT DISTINCT TOP (2+3) Name FROM dbo.Clients c (nolock) OPTION (MAXDOP 1)",
       "SELECT DISTINCT Name FROM Clients c LIMIT (2+3)"},
      {"SELECT TOP 1 a FROM t UNION ALL SELECT TOP 2 a FROM u ORDER BY a",
       " SELECT * FROM (SELECT a FROM t LIMIT 1) UNION ALL "
       "SELECT * FROM ( SELECT a FROM u LIMIT 2) ORDER BY a"},
      {"SELECT (SELECT TOP 1 a FROM t) FROM u", "SELECT (SELECT a FROM t LIMIT 1) FROM u"},
      {"SELECT DATEDIFF(yy, Birthdate, GETDATE()), DATEADD(day,-1,CURRENT_TIMESTAMP)",
       "SELECT DATEDIFF('yy',Birthdate,GETDATE()), DATEADD('day', -1,GETDATE())"},
      {"SELECT CONVERT(varchar(10), Birthdate, 101), CAST(Number AS decimal(10,2))",
       "SELECT CONVERT('VARCHAR',10,NULL,Birthdate,101), CONVERT('DECIMAL',10,2,Number,NULL)"},
      {"SELECT CAST(Birthdate AS nvarchar(max))", "SELECT CONVERT('NVARCHAR',-1,NULL,Birthdate,0)"},
      {"SELECT ISNULL(a,0), LEFT(b,1), a AS 'My name', Full_Name = a + N' ' + b",
       "SELECT \"ISNULL\"(a,0), \"LEFT\"(b,1), a AS \"My name\", SQL_ADD(SQL_ADD(a,' '),b) AS "
       "\"Full_Name\""},
      {"SELECT CASE WHEN a=1 THEN 'x' ELSE NULL END + 'y'",
       "SELECT SQL_ADD(CASE WHEN a=1 THEN 'x' ELSE NULL END,'y')"},
      {"SELECT CASE Name WHEN 'x' THEN 1 END",
       "SELECT CASE Name WHEN 'x' COLLATE SQLSERVER THEN 1 END"},
  };
  ExpectTranslated(cases);
}

TEST(SqlTranslatorTest, ReadsEveryToken) {
  const Case cases[] = {
      {" \t\r\n\xC2\xA0 -- all", ""},
      {"SELECT a.[b]]c]+N'it''s'", "SELECT SQL_ADD(a.\"b]c\",'it''s')"},
      {R"(SELECT "a""b", '-- [x] /*')", R"(SELECT "a""b", '-- [x] /*')"},
      {"SELECT a/* 'x /* nested */ ] */,b--'\n,c /* d", "SELECT a, b, c"},
      {"SELECT 1.5e-3,.2E+x", "SELECT 1.5e-3, .2 SQL_ADD(E,x)"},
      {"SELECT 1 WHERE Number!<1 AND Number!>2 AND Number!=3 AND Number<>0x1F",
       "SELECT 1 WHERE Number>=1 AND Number<=2 AND Number!=3 AND Number<>0x1F"},
      {"SELECT a||b", "SELECT a || b"},
      {"SELECT N=N@x", "SELECT N@x AS \"N\""},
      {"SELECT Größe\xC2\xA0#t", "SELECT Größe #t"},
  };
  ExpectTranslated(cases);
}

TEST(SqlTranslatorTest, ComparesAsSqlServerDoes) {
  const Case cases[] = {
      {"Name='x'", "Name=('x') COLLATE SQLSERVER"},
      {"Name='x' COLLATE Latin1_General_CS_AS", "Name='x' COLLATE \"Latin1_General_CS_AS\""},
      {"Number='5'", "Number='5'"},
      {"Number IN ('5')", "Number IN ('5')"},
      {"COALESCE(TravelDate,'19000101')<'2000-01-01'",
       "COALESCE(TravelDate,'1900-01-01 00:00:00')<('2000-01-01 00:00:00') COLLATE SQLSERVER"},
      {"a.Id=b.Id", "a.Id=b.Id"},
      {"SendEmail='True'", "SendEmail=1"},
      {"'20261116'<=TravelDate", "'2026-11-16 00:00:00'<=(TravelDate) COLLATE SQLSERVER"},
      {"TravelDate BETWEEN '11/1/2026' AND GETDATE()-7",
       "TravelDate BETWEEN ('2026-11-01 00:00:00') COLLATE SQLSERVER AND "
       "(SQL_SUBTRACT(GETDATE(),7)) COLLATE SQLSERVER"},
      {"TravelDate NOT IN ('2026-11-16')",
       "(TravelDate) COLLATE SQLSERVER NOT IN ('2026-11-16 00:00:00')"},
      {"Name IN (SELECT a FROM t)", "Name IN (SELECT a FROM t)"},
      {"UserID=(SELECT 1)",
       "UserID=((WITH ONLY_VALUE(V) AS (SELECT 1) SELECT SQL_ONLY_VALUE(V) FROM ONLY_VALUE)) "
       "COLLATE SQLSERVER"},
  };
  ExpectTranslated(cases);
}

TEST(SqlTranslatorTest, CarriesOutLeadingSettings) {
  const struct {
    std::string sql;
    std::string translated;
    std::optional<std::int64_t> lock_timeout_ms;
  } cases[] = {
      {"SET LOCK_TIMEOUT 60000", "", 60000},
      {"set lock_timeout -1;", "", -1},
      {"SET NOCOUNT ON SELECT 1", "SELECT 1", {}},
      {"; SET ANSI_NULLS OFF; SET TRANSACTION ISOLATION LEVEL READ UNCOMMITTED; SELECT 1",
       "SELECT 1",
       {}},
  };
  for (const auto& [sql, translated, lock_timeout_ms] : cases) {
    const TranslatedSql result = TranslateSql(sql, kSchema);
    EXPECT_EQ(result.sql, translated) << sql;
    EXPECT_EQ(result.lock_timeout_ms, lock_timeout_ms) << sql;
  }
}

TEST(SqlTranslatorTest, RefusesWhatTheServerWould) {
  const Case cases[] = {
      {"SET LOCK_TIMEOUT ten", "Incorrect syntax near 'ten'."},
      {"SET LOCK_TIMEOUT ", "Incorrect syntax near 'LOCK_TIMEOUT'."},
      {"SET LOCK_TIMEOUT -2", "Incorrect syntax near '2'."},
      {"SET LOCK_TIMEOUT 1.5", "Incorrect syntax near '1.5'."},
      {"SET ROWCOUNT 5", "Incorrect syntax near 'ROWCOUNT'."},
      {"SET NOCOUNT", "Incorrect syntax near 'NOCOUNT'."},
      {"SELECT 'x", "Unclosed quotation mark after the character string 'x'."},
      {"SELECT N'a''", "Unclosed quotation mark after the character string 'a''."},
      {"SELECT [a]]", "Unclosed quotation mark after the character string 'a]'."},
      {"SELECT \"", "Unclosed quotation mark after the character string ''."},
      {"SELECT a +", "Incorrect syntax near '+'."},
      {"SELECT (a", "Incorrect syntax near 'a'."},
      {"SELECT CASE WHEN", "Incorrect syntax near 'WHEN'."},
      {"SELECT x.", "Incorrect syntax near '.'."},
      {"SELECT f(a", "Incorrect syntax near 'a'."},
      {"SELECT a COLLATE", "Incorrect syntax near 'COLLATE'."},
      {"SELECT CONVERT(varchar(x), a)", "Incorrect syntax near 'x'."},
  };
  for (const auto& [sql, description] : cases) EXPECT_EQ(ErrorOf(sql), description) << sql;
  for (const std::string opening : {"(", "CAST(", "CASE ", "f(", "SELECT TOP (", "a IN ("}) {
    std::string sql = "SELECT ";
    for (int depth = 0; depth < 5000; ++depth) sql += opening;
    EXPECT_EQ(ErrorOf(sql), "Some part of your SQL statement is nested too deeply.") << opening;
  }
}

}  // namespace
}  // namespace pxscheduler
