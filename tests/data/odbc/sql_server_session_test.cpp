#include "data/odbc/sql_server_session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <utility>
#include <vector>

#include "tests/support/fake_platform.h"
#include "tests/support/raised_by.h"
#include "tests/support/tds_server.h"
#include "text/utf8.h"

// Sessions through the real driver with a scripted server.

namespace pxscheduler {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year;
using testing::ElementsAre;

ConnectionSettings SettingsFor(const TdsServer& server) {
  return {.provider = L"SQLOLEDB",
          .user_id = L"appuser",
          .password = L"tonal",
          .initial_catalog = L"SampleAgency",
          .data_source = server.DataSource()};
}

// Through the driver that the whole program would use.
std::unique_ptr<Session> Open(const ConnectionSettings& settings) {
  const char* const driver = std::getenv("PXSCHEDULER_ODBC_DRIVER");
  return OpenSqlServerSession({.driver = FromUtf8(driver == nullptr ? "" : driver),
                               .login_timeout = seconds(2),
                               .command_timeout = seconds(1)},
                              settings);
}

std::unique_ptr<Session> Open(const TdsServer& server) { return Open(SettingsFor(server)); }

MATCHER_P2(IsError, number, text, "") {
  *result_listener << arg.number << ' ' << ToUtf8(arg.description);
  return arg.number == number && arg.description.find(text) != std::wstring::npos;
}

// Statements, which may say what is special about them, and the steps that answer each.
using Script = std::vector<std::pair<std::string, std::string>>;

std::string AnswersOf(const Script& script) {
  std::string answers;
  for (const auto& [statement, steps] : script) {
    answers += answers.empty() ? "[" : ",";
    answers += R"({"statement": ")" + statement + R"(", "procedure": )" +
               (statement == "a procedure" ? "true" : "false") + R"(, "steps": [)" + steps + "]}";
  }
  return answers + "]";
}

std::string JsonText(const std::string& text) { return '"' + text + '"'; }

// A row set of one column. A row with a comma behind it may precede a step of another kind.
std::string RowSet(const std::string& type, const std::string& rows) {
  return R"({"columns": [["n", ")" + type + R"("]], "rows": [)" + rows + "]}";
}

// More rows than fit in a block, each with a comma behind it.
std::string ManyRows() {
  std::string rows;
  for (int i = 0; i < 700; ++i) rows += "[" + std::to_string(i) + "],";
  return rows;
}

const std::string kTwoRows = RowSet("int", "[1], [2]");

TEST(SqlServerSessionTest, LogsInOnceAndRunsStatementsAsGiven) {
  const TdsServer server;
  {
    const auto session = Open(server);
    session->Execute(L"SET LOCK_TIMEOUT 60000");
    EXPECT_EQ(session->CurrentDatabase(), L"SampleAgency");
    const std::wstring sql = L"SELECT 'O''Brien {x}' AS \"Zo\u00EB \U0001F600\"\r\n-- end";
    RowStore rows;
    EXPECT_THAT(RaisedBy([&] { rows = session->Query(sql); }), IsError(0, L""));
    EXPECT_EQ(rows.FindColumn(L"zo\u00EB \U0001F600"), 0U);
    EXPECT_EQ(rows.Read(0, 0), Value(L"O'Brien {x}"));
    EXPECT_THAT(RaisedBy([&] { session->Query(std::wstring(L"SELECT 1\0WHERE 1=0", 18)); }),
                IsError(Session::kStatementRejected, L"NUL character"));
  }
  EXPECT_THAT(
      server.Log(),
      ElementsAre(
          "login\tappuser\ttonal\tSampleAgency\tplain\tPXScheduler",
          "statement\tSET LOCK_TIMEOUT 60000", "statement\tSELECT DB_NAME()",
          "statement\tSELECT 'O''Brien {x}' AS \"Zo\xC3\xAB \xF0\x9F\x98\x80\"\\r\\n-- end"));
}

TEST(SqlServerSessionTest, CarriesPasswordsUnchanged) {
  const TdsServer server;
  std::vector<std::string> logins;
  for (const std::string password : {"", "a;DATABASE=master", " blanks ", "{braced}", "{a", "a}",
                                     "a}b", "a=b c'\"", "\xC5\xBDi\xC5\xBEka \xE2\x82\xAC"}) {
    ConnectionSettings settings = SettingsFor(server);
    settings.password = FromUtf8(password);
    EXPECT_THAT(RaisedBy([&] { Open(settings); }),
                IsError(Session::kProviderFailure,
                        L"Login failed for user 'appuser'. (SQL Server error 18456)"));
    logins.push_back("login\tappuser\t" + password + "\tSampleAgency\tplain\tPXScheduler");
  }
  EXPECT_EQ(server.Log(), logins);
}

TEST(SqlServerSessionTest, SaysWhyItCannotOpen) {
  const TdsServer server;
  ConnectionSettings settings = SettingsFor(server);
  settings.initial_catalog = L"Nowhere";
  EXPECT_THAT(RaisedBy([&] { Open(settings); }),
              IsError(Session::kProviderFailure, L"(SQL Server error 4060)"));
  EXPECT_THAT(server.Log(), testing::SizeIs(1));
  settings.data_source = L"127.0.0.1,1";
  EXPECT_THAT(RaisedBy([&] { Open(settings); }),
              IsError(Session::kProviderFailure, L"SQLSTATE 08001"));
  settings.data_source = L"no-such-host.invalid";
  EXPECT_THAT(RaisedBy([&] { Open(settings); }), IsError(Session::kProviderFailure, L""));
  const TdsServer mute("[]", {"--mute"});
  EXPECT_THAT(RaisedBy([&] { Open(mute); }),
              IsError(Session::kProviderFailure, L"Timeout expired"));
}

TEST(SqlServerSessionTest, EncryptsTheWholeSessionWhereTheServerCan) {
  const TdsServer server("[]", {"--tls"});
  EXPECT_EQ(Open(server)->CurrentDatabase(), L"SampleAgency");
  EXPECT_EQ(server.Log().front(), "login\tappuser\ttonal\tSampleAgency\tencrypted\tPXScheduler");
}

TEST(SqlServerSessionTest, ReadsEveryType) {
  const DateTime afternoon{year{2026} / 11 / 16, hours(15) + minutes(7) + seconds(41)};
  const struct {
    const char* type;
    std::string json;
    Value value;
  } cases[] = {
      {"int", "-2147483648", std::int64_t{-2147483648}},
      {"int not null", "7", std::int64_t{7}},
      {"smallint", "-32768", std::int64_t{-32768}},
      {"tinyint", "255", std::int64_t{255}},
      {"bigint", "-9223372036854775808", INT64_MIN},
      {"bit", "1", true},
      {"bit not null", "0", false},
      {"decimal(18,4)", JsonText("-0.4500"), Decimal{"-0.45"}},
      {"decimal(38,0)", JsonText("99999999999999999999999999999999999999"),
       Decimal{"99999999999999999999999999999999999999"}},
      {"money", JsonText("-922337203685477.5808"), Decimal{"-922337203685477.5808"}},
      {"float", "1.1", 1.1},
      {"real", "1.1", 1.1F},
      {"nchar(5)", JsonText("Zo\u00EB"), L"Zo\u00EB  "},
      {"varchar(10)", JsonText("\u20AC\u017D"), L"\u20AC\u017D"},
      {"nvarchar(20)", JsonText("Zo\u00EB \U0001F600"), L"Zo\u00EB \U0001F600"},
      {"nvarchar(5)", JsonText(""), L""},
      {"nvarchar(3)", JsonText("a\\u0000b"), std::wstring(L"a\0b", 3)},
      {"text", JsonText("Zo\u00EB"), L"Zo\u00EB"},
      {"ntext", JsonText("Zo\u00EB \U0001F600"), L"Zo\u00EB \U0001F600"},
      {"varchar(max)", JsonText("Zo\u00EB"), L"Zo\u00EB"},
      {"nvarchar(max)", JsonText("Zo\u00EB \U0001F600"), L"Zo\u00EB \U0001F600"},
      {"datetime", JsonText("2026-11-16 15:07:41.997"), afternoon},
      {"datetime", JsonText("1753-01-01"), DateTime{year{1753} / 1 / 1}},
      {"smalldatetime", JsonText("2026-11-16 15:08"),
       DateTime{afternoon.date, hours(15) + minutes(8)}},
      {"date", JsonText("0001-01-01"), DateTime{year{1} / 1 / 1}},
      {"datetime2(7)", JsonText("2026-11-16 15:07:41.9999999"), afternoon},
      {"time(0)", JsonText("23:59:59"), L"23:59:59"},
      {"uniqueidentifier", JsonText("6f9619ff-8b86-d011-b42d-00c04fc964ff"),
       L"{6F9619FF-8B86-D011-B42D-00C04FC964FF}"},
      {"varbinary(4)", JsonText("00ff"), L"00ff"},
  };
  std::string columns;
  std::string values;
  std::string nulls;
  for (const auto& each : cases) {
    const char* separator = columns.empty() ? "" : ",";
    const bool not_null = std::string(each.type).ends_with("not null");
    columns += std::string(separator) + R"(["c",")" + each.type + "\"]";
    values += std::string(separator) + each.json;
    nulls += std::string(separator) + (not_null ? "0" : "null");
  }
  const TdsServer server(AnswersOf({{"go", R"({"columns": [)" + columns + R"(], "rows": [[)" +
                                               values + "],[" + nulls + "],[" + values + "]]}"}}));
  const RowStore rows = Open(server)->Query(L"go");
  ASSERT_EQ(rows.RowCount(), 3U);
  for (std::size_t column = 0; column < std::size(cases); ++column) {
    SCOPED_TRACE(cases[column].type);
    EXPECT_EQ(rows.Read(0, column), cases[column].value);
    const bool not_null = std::string(cases[column].type).ends_with("not null");
    EXPECT_EQ(rows.Read(1, column).index() == 0, !not_null);
    EXPECT_EQ(rows.Read(2, column), cases[column].value);
  }
}

TEST(SqlServerSessionTest, ReadsLongTextsBetweenOthers) {
  std::string text;
  for (int i = 0; i < 20000; ++i) text += "Zo\xC3\xAB\xF0\x9F\x98\x80 ";
  const std::string row = "[1," + JsonText(text) + R"(,"two",)" + JsonText(text) + ",3]";
  const TdsServer server(AnswersOf(
      {{"go", R"json({"columns": [["a", "int"], ["b", "nvarchar(max)"], ["c", "varchar(5)"],
         ["d", "ntext"], ["e", "int"]], "rows": [)json" +
                  row + R"(, [1, null, null, "", null],)" + row + "]}"}}));
  const RowStore rows = Open(server)->Query(L"go");
  const Value long_text = FromUtf8(text);
  const std::vector<Value> whole = {std::int64_t{1}, long_text, L"two", long_text, std::int64_t{3}};
  const std::vector<std::vector<Value>> expected = {
      whole, {std::int64_t{1}, {}, {}, L"", {}}, whole};
  ASSERT_EQ(rows.RowCount(), expected.size());
  for (std::size_t at = 0; at < expected.size(); ++at)
    for (std::size_t column = 0; column < whole.size(); ++column)
      EXPECT_TRUE(rows.Read(at, column) == expected[at][column]) << at << ' ' << column;
}

TEST(SqlServerSessionTest, FindsTheFirstRowSet) {
  const Script script = {
      {"SET NOCOUNT ON or DECLARE", R"({"count": null}, )" + kTwoRows},
      {"an update", R"({"count": 3}, )" + kTwoRows},
      {"an update of nothing", R"({"count": 0}, {"count": 0}, )" + kTwoRows},
      {"messages", R"({"info": [0, 0, "hello"]}, {"info": [50000, 10, "careful"]}, )" + kTwoRows +
                       R"(, {"info": [5701, 0, "Changed database context to 'Other'."]})"},
      {"messages between the rows",
       RowSet("int", R"([1], {"info": [8153, 0, "Null eliminated"]}, [2])")},
      {"a procedure", R"({"info": [0, 0, "hello"]}, {"count": 1}, )" + kTwoRows},
      {"a second row set", kTwoRows + R"(, {"count": 1}, )" + RowSet("text", "")},
      {"a change of the database", R"({"database": "Other"}, )" + kTwoRows},
      {"none", R"({"count": 3}, {"info": [0, 0, "done"]})"},
  };
  const TdsServer server(AnswersOf(script));
  const auto session = Open(server);
  for (const auto& [statement, steps] : script) {
    SCOPED_TRACE(statement);
    const RowStore store = session->Query(FromUtf8(statement));
    EXPECT_EQ(store.ColumnCount(), statement == "none" ? 0U : 1U);
    EXPECT_EQ(store.RowCount(), statement == "none" ? 0U : 2U);
    if (store.RowCount() == 2) EXPECT_EQ(store.Read(1, 0), Value(std::int64_t{2}));
    session->Execute(FromUtf8(statement));
  }
  EXPECT_EQ(session->CurrentDatabase(), L"Other");
}

// Whatever goes wrong, and wherever, is an error with the server's number and text.
TEST(SqlServerSessionTest, RaisesWhatTheServerRejects) {
  const std::string divide = R"({"error": [8134, 16, "Divide by zero error encountered."]})";
  const std::string warning = R"({"info": [0, 0, "hello"]})";
  const Script script = {
      {"at once", warning + "," + divide},
      {"behind a count", R"({"count": 3}, )" + divide},
      {"before any row", RowSet("int", divide)},
      {"behind a warning and some rows", RowSet("int", "[1]," + warning + ",[2]," + divide)},
      {"behind more rows than a block", RowSet("int", ManyRows() + divide)},
      {"behind long values", RowSet("nvarchar(max)", R"(["a"],["b"],)" + divide)},
      {"behind the row set", kTwoRows + "," + divide},
  };
  const TdsServer server(AnswersOf(script));
  const auto session = Open(server);
  for (const auto& [where, steps] : script) {
    SCOPED_TRACE(where);
    const auto is_rejected = IsError(Session::kStatementRejected,
                                     L"Divide by zero error encountered. (SQL Server error 8134)");
    EXPECT_THAT(RaisedBy([&, &sql = where] { session->Query(FromUtf8(sql)); }), is_rejected);
    EXPECT_THAT(RaisedBy([&, &sql = where] { session->Execute(FromUtf8(sql)); }), is_rejected);
    EXPECT_EQ(session->CurrentDatabase(), L"SampleAgency") << "the session goes on";
  }
}

TEST(SqlServerSessionTest, RaisesWhatBreaksOff) {
  const std::string close = R"({"break": "close"})";
  const Script script = {
      {"closed at once", close},
      {"closed before any row", RowSet("int", close)},
      {"closed behind some rows", RowSet("int", "[1],[2]," + close)},
      {"reset behind some rows", RowSet("int", R"([1],[2],{"break": "reset"})")},
      {"closed behind blocks", RowSet("int", ManyRows() + close)},
      {"silence behind blocks", RowSet("int", ManyRows() + R"({"silence": true})")},
      {"closed behind long values", RowSet("ntext", R"(["a"],)" + close)},
      {"closed behind the row set", kTwoRows + "," + close},
  };
  const TdsServer server(AnswersOf(script));
  for (const auto& [where, steps] : script) {
    SCOPED_TRACE(where);
    const auto session = Open(server);
    EXPECT_THAT(RaisedBy([&, &sql = where] { session->Query(FromUtf8(sql)); }),
                IsError(Session::kProviderFailure, L""));
    EXPECT_THAT(RaisedBy([&] { session->CurrentDatabase(); }),
                IsError(Session::kProviderFailure, L""));
  }
}

TEST(SqlServerSessionTest, KeepsTheCommandTimeout) {
  const TdsServer server(AnswersOf({{"go", R"({"wait": 20}, )" + kTwoRows}}));
  const auto session = Open(server);
  EXPECT_THAT(RaisedBy([&] { session->Query(L"go"); }),
              IsError(Session::kProviderFailure, L"Timeout expired"));
  EXPECT_EQ(session->CurrentDatabase(), L"SampleAgency") << "the cancelled command is over";
}

TEST(SqlServerOpenerTest, TakesItsOptionsFromTheEnvironment) {
  FakeSystem system;
  const std::pair<const wchar_t*, int> cases[] = {{L"1", 1},    {L"30", 30}, {L"3600", 3600},
                                                  {L"", 15},    {L"0", 15},  {L"-1", 15},
                                                  {L"1.5", 15}, {L"3 ", 15}};
  for (const auto& [text, timeout] : cases) {
    system.environment[L"PXSCHEDULER_TEST_LOGIN_TIMEOUT"] = text;
    EXPECT_EQ(ReadSqlServerOptions(system).login_timeout, seconds(timeout)) << ToUtf8(text);
  }
  system.environment = {{L"PXSCHEDULER_TEST_COMMAND_TIMEOUT", L"4"},
                        {L"PXSCHEDULER_ODBC_DRIVER", L"/nowhere/driver.so"}};
  EXPECT_EQ(ReadSqlServerOptions(system).command_timeout, seconds(4));
  const SessionOpener open = SqlServerOpener(system);
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_THAT(RaisedBy([&] { open({}); }),
                IsError(Session::kProviderFailure, L"/nowhere/driver.so"));
  }
  EXPECT_THAT(system.warnings, testing::SizeIs(1)) << "once for both passwords";
}

}  // namespace
}  // namespace pxscheduler
