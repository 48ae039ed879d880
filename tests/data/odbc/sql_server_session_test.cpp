#include "data/odbc/sql_server_session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

#include "tests/support/fake_platform.h"
#include "tests/support/raised_by.h"
#include "tests/support/tds_server.h"
#include "text/utf8.h"

// Sessions through the real driver with a scripted server.

namespace pxscheduler {
namespace {

using std::chrono::seconds;
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

// Scripted answers to the statement "go".
TdsServer::Options Answering(const std::string& steps, bool procedure = false) {
  return {.answers = R"([{"statement": "go", "procedure": )" +
                     std::string(procedure ? "true" : "false") + R"(, "steps": )" + steps + "}]",
          .arguments = {}};
}

std::string JsonText(const std::string& text) { return '"' + text + '"'; }

// The steps of a row set of one column that ends in a step of another kind.
std::string RowsThen(const std::string& type, const std::string& rows, const std::string& step) {
  return R"([{"columns": [["n", ")" + type + R"("]], "rows": [)" + rows + step + "]}]";
}

// More rows than fit in a block, each with a comma behind it.
std::string ManyRows() {
  std::string rows;
  for (int i = 0; i < 700; ++i) rows += "[" + std::to_string(i) + "],";
  return rows;
}

constexpr char kTwoRows[] = R"({"columns": [["n", "int"]], "rows": [[1], [2]]})";

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
  }
  EXPECT_THAT(
      server.Log(),
      ElementsAre(
          "login\tappuser\ttonal\tSampleAgency\tplain\tPXScheduler",
          "statement\tSET LOCK_TIMEOUT 60000", "statement\tSELECT DB_NAME()",
          "statement\tSELECT 'O''Brien {x}' AS \"Zo\xC3\xAB \xF0\x9F\x98\x80\"\\r\\n-- end"));
}

TEST(SqlServerSessionTest, SendsNoPartOfAStatement) {
  const TdsServer server;
  const auto session = Open(server);
  EXPECT_THAT(RaisedBy([&] { session->Query(std::wstring(L"SELECT 1\0WHERE 1=0", 18)); }),
              IsError(Session::kStatementRejected, L"NUL character"));
  EXPECT_THAT(server.Log("statement"), testing::IsEmpty());
}

TEST(SqlServerSessionTest, CarriesPasswordsUnchanged) {
  for (const std::string password : {"a;DATABASE=master", " blanks ", "{braced}", "a}b", "=",
                                     "\xC5\xBDi\xC5\xBEka \xE2\x82\xAC"}) {
    const TdsServer server({.answers = "[]", .arguments = {"--password", password}});
    ConnectionSettings settings = SettingsFor(server);
    settings.password = FromUtf8(password);
    EXPECT_THAT(RaisedBy([&] { Open(settings); }), IsError(0, L"")) << password;
  }
}

TEST(SqlServerSessionTest, SaysWhyItCannotOpen) {
  const TdsServer server;
  ConnectionSettings settings = SettingsFor(server);
  settings.password = L"wrong";
  EXPECT_THAT(RaisedBy([&] { Open(settings); }),
              IsError(Session::kProviderFailure,
                      L"Login failed for user 'appuser'. (SQL Server error 18456)"));
  settings = SettingsFor(server);
  settings.initial_catalog = L"Nowhere";
  EXPECT_THAT(RaisedBy([&] { Open(settings); }),
              IsError(Session::kProviderFailure, L"(SQL Server error 4060)"));
  EXPECT_THAT(server.Log("login"), testing::SizeIs(2));

  settings.data_source = L"127.0.0.1,1";
  EXPECT_THAT(RaisedBy([&] { Open(settings); }),
              IsError(Session::kProviderFailure, L"SQLSTATE 08001"));
  settings.data_source = L"no-such-host.invalid";
  EXPECT_THAT(RaisedBy([&] { Open(settings); }), IsError(Session::kProviderFailure, L""));
}

TEST(SqlServerSessionTest, GivesUpOnAServerThatNeverAnswers) {
  const TdsServer mute({.answers = "[]", .arguments = {"--mute"}});
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THAT(RaisedBy([&] { Open(mute); }),
              IsError(Session::kProviderFailure, L"Timeout expired"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, seconds(4));
}

TEST(SqlServerSessionTest, EncryptsTheWholeSessionWhereTheServerCan) {
  const TdsServer server({.answers = "[]", .arguments = {"--tls"}});
  EXPECT_EQ(Open(server)->CurrentDatabase(), L"SampleAgency");
  EXPECT_THAT(server.Log("login"),
              ElementsAre("appuser\ttonal\tSampleAgency\tencrypted\tPXScheduler"));
}

TEST(SqlServerSessionTest, ReadsEveryType) {
  const DateTime afternoon{std::chrono::sys_days(std::chrono::year(2026) / 11 / 16),
                           std::chrono::hours(15) + std::chrono::minutes(7) + seconds(41)};
  const DateTime minute{afternoon.date, std::chrono::hours(15) + std::chrono::minutes(8)};
  const std::wstring smiling = L"Zo\u00EB \U0001F600";
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
      {"smallmoney", JsonText("12.3"), Decimal{"12.3"}},
      {"float", "1.1", 1.1},
      {"real", "1.1", 1.1F},
      {"char(5)", JsonText("ab"), L"ab   "},
      {"nchar(5)", JsonText("Zo\u00EB"), L"Zo\u00EB  "},
      {"varchar(10)", JsonText("\u20AC\u017D"), L"\u20AC\u017D"},
      {"varchar(10) collate cp1251", JsonText("\u041F\u0440"), L"\u041F\u0440"},
      {"varchar(10) collate cp932", JsonText("\u65E5\u672C"), L"\u65E5\u672C"},
      {"varchar(10) collate utf-8", JsonText("\u65E5\u672C"), L"\u65E5\u672C"},
      {"nvarchar(20)", JsonText("Zo\u00EB \U0001F600"), smiling},
      {"nvarchar(5)", JsonText(""), L""},
      {"nvarchar(3)", JsonText("a\\u0000b"), std::wstring(L"a\0b", 3)},
      {"text", JsonText("Zo\u00EB"), L"Zo\u00EB"},
      {"ntext", JsonText("Zo\u00EB \U0001F600"), smiling},
      {"varchar(max)", JsonText("Zo\u00EB"), L"Zo\u00EB"},
      {"nvarchar(max)", JsonText("Zo\u00EB \U0001F600"), smiling},
      {"datetime", JsonText("2026-11-16 15:07:41.997"), afternoon},
      {"smalldatetime", JsonText("2026-11-16 15:08"), minute},
      {"date", JsonText("2026-11-16"), DateTime{afternoon.date}},
      {"date", JsonText("0001-01-01"), DateTime{std::chrono::year(1) / 1 / 1}},
      {"datetime2(7)", JsonText("2026-11-16 15:07:41.9999999"), afternoon},
      {"datetime", JsonText("1753-01-01"), DateTime{std::chrono::year(1753) / 1 / 1}},
      {"time(0)", JsonText("23:59:59"), L"23:59:59"},
      {"datetimeoffset(0)", JsonText("2026-11-16 15:07:41+02:00"), L"2026-11-16 15:07:41 +02:00"},
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
  const TdsServer server(Answering(R"([{"columns": [)" + columns + R"(], "rows": [[)" + values +
                                   "],[" + nulls + "],[" + values + "]]}]"));
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
  const TdsServer server(Answering(
      R"json([{"columns": [["a", "int"], ["b", "nvarchar(max)"], ["c", "varchar(5)"],
         ["d", "ntext"], ["e", "int"]], "rows": [)json" +
      row + R"(, [1, null, null, "", null],)" + row + "]}]"));
  const RowStore rows = Open(server)->Query(L"go");
  ASSERT_EQ(rows.RowCount(), 3U);
  for (const std::size_t row_number : {0U, 2U}) {
    EXPECT_EQ(rows.Read(row_number, 0), Value(std::int64_t{1}));
    EXPECT_EQ(rows.Read(row_number, 1), Value(FromUtf8(text)));
    EXPECT_EQ(rows.Read(row_number, 2), Value(L"two"));
    EXPECT_EQ(rows.Read(row_number, 3), Value(FromUtf8(text)));
    EXPECT_EQ(rows.Read(row_number, 4), Value(std::int64_t{3}));
  }
  EXPECT_EQ(rows.Read(1, 1), Value());
  EXPECT_EQ(rows.Read(1, 3), Value(L""));
}

TEST(SqlServerSessionTest, FindsTheFirstRowSet) {
  const std::string rows = kTwoRows;
  const std::string others = R"({"columns": [["x", "int"]], "rows": [[9]]})";
  const struct {
    const char* what;
    std::string steps;
    bool procedure;
  } cases[] = {
      {"SET NOCOUNT ON or DECLARE", R"([{"count": null}, )" + rows + "]", false},
      {"an update", R"([{"count": 3}, )" + rows + "]", false},
      {"an update of nothing", R"([{"count": 0}, {"count": 0}, )" + rows + "]", false},
      {"messages",
       R"([{"info": [0, 0, "hello"]}, {"info": [50000, 10, "careful"]}, )" + rows +
           R"(, {"info": [5701, 0, "Changed database context to 'Other'."]}])",
       false},
      {"messages between the rows",
       R"([{"columns": [["n", "int"]], "rows": [[1], {"info": [8153, 0, "Null eliminated"]}, [2]]}])",
       false},
      {"a procedure", R"([{"info": [0, 0, "hello"]}, {"count": 1}, )" + rows + "]", true},
      {"a second row set", "[" + rows + R"(, {"count": 1}, )" + others + "]", false},
      {"a change of the database", R"([{"database": "Other"}, )" + rows + "]", false},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    const TdsServer server(Answering(each.steps, each.procedure));
    const auto session = Open(server);
    const RowStore store = session->Query(L"go");
    EXPECT_EQ(store.ColumnCount(), 1U);
    ASSERT_EQ(store.RowCount(), 2U);
    EXPECT_EQ(store.Read(1, 0), Value(std::int64_t{2}));
    EXPECT_EQ(session->CurrentDatabase(),
              each.steps.find("Other\"") == std::string::npos ? L"SampleAgency" : L"Other");
  }
}

TEST(SqlServerSessionTest, HasNoColumnsWithoutARowSet) {
  const TdsServer server(Answering(R"([{"count": 3}, {"info": [0, 0, "done"]}])"));
  const auto session = Open(server);
  EXPECT_EQ(session->Query(L"go").ColumnCount(), 0U);
  session->Execute(L"go");
}

// Whatever goes wrong, and wherever, is an error with the server's number and text.
TEST(SqlServerSessionTest, RaisesWhatTheServerRejects) {
  const std::string divide = R"({"error": [8134, 16, "Divide by zero error encountered."]})";
  const std::string warning = R"({"info": [0, 0, "hello"]})";
  const struct {
    const char* what;
    std::string steps;
  } cases[] = {
      {"at once", "[" + warning + "," + divide + "]"},
      {"behind a count", R"([{"count": 3}, )" + divide + "]"},
      {"before any row", RowsThen("int", "", divide)},
      {"behind some rows", RowsThen("int", "[1],[2],", divide)},
      {"behind a warning and some rows", RowsThen("int", "[1]," + warning + ",[2],", divide)},
      {"behind more rows than a block", RowsThen("int", ManyRows(), divide)},
      {"behind long values", RowsThen("nvarchar(max)", R"(["a"],["b"],)", divide)},
      {"behind the row set", "[" + std::string(kTwoRows) + "," + divide + "]"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    const TdsServer server(Answering(each.steps));
    const auto session = Open(server);
    const auto is_rejected = IsError(Session::kStatementRejected,
                                     L"Divide by zero error encountered. (SQL Server error 8134)");
    EXPECT_THAT(RaisedBy([&] { session->Query(L"go"); }), is_rejected);
    EXPECT_THAT(RaisedBy([&] { session->Execute(L"go"); }), is_rejected);
    EXPECT_EQ(session->CurrentDatabase(), L"SampleAgency") << "the session goes on";
  }
}

TEST(SqlServerSessionTest, RaisesWhatBreaksOff) {
  const struct {
    const char* what;
    std::string steps;
  } cases[] = {
      {"closed at once", R"([{"break": "close"}])"},
      {"closed before any row", RowsThen("int", "", R"({"break": "close"})")},
      {"closed behind some rows", RowsThen("int", "[1],[2],", R"({"break": "close"})")},
      {"reset behind some rows", RowsThen("int", "[1],[2],", R"({"break": "reset"})")},
      {"silence behind some rows", RowsThen("int", "[1],[2],", R"({"silence": true})")},
      {"closed behind blocks", RowsThen("int", ManyRows(), R"({"break": "close"})")},
      {"silence behind blocks", RowsThen("int", ManyRows(), R"({"silence": true})")},
      {"closed behind long values", RowsThen("ntext", R"(["a"],)", R"({"break": "close"})")},
      {"closed behind the row set", "[" + std::string(kTwoRows) + R"(, {"break": "close"}])"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    const TdsServer server(Answering(each.steps));
    const auto session = Open(server);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(RaisedBy([&] { session->Query(L"go"); }), IsError(Session::kProviderFailure, L""));
    EXPECT_THAT(RaisedBy([&] { session->CurrentDatabase(); }),
                IsError(Session::kProviderFailure, L""));
    EXPECT_LT(std::chrono::steady_clock::now() - start, seconds(5));
  }
}

TEST(SqlServerSessionTest, KeepsTheCommandTimeout) {
  const TdsServer server(Answering(R"([{"wait": 20}, )" + std::string(kTwoRows) + "]"));
  const auto session = Open(server);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_THAT(RaisedBy([&] { session->Query(L"go"); }),
              IsError(Session::kProviderFailure, L"Timeout expired"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, seconds(3));
  EXPECT_EQ(session->CurrentDatabase(), L"SampleAgency") << "the cancelled command is over";
}

TEST(SqlServerOpenerTest, TakesItsOptionsFromTheEnvironment) {
  FakeSystem system;
  system.environment = {{L"PXSCHEDULER_TEST_LOGIN_TIMEOUT", L"3"},
                        {L"PXSCHEDULER_TEST_COMMAND_TIMEOUT", L"0"},
                        {L"PXSCHEDULER_ODBC_DRIVER", L"/nowhere/driver.so"}};
  const SqlServerOptions options = ReadSqlServerOptions(system);
  EXPECT_EQ(options.login_timeout, seconds(3));
  EXPECT_EQ(options.command_timeout, seconds(30));

  const SessionOpener open = SqlServerOpener(system);
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_THAT(RaisedBy([&] { open({}); }),
                IsError(Session::kProviderFailure, L"/nowhere/driver.so"));
  }
  EXPECT_THAT(system.warnings, testing::SizeIs(1)) << "once for both passwords";
}

}  // namespace
}  // namespace pxscheduler
