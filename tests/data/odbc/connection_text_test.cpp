#include "data/odbc/connection_text.h"

#include <gtest/gtest.h>

#include "data/odbc/driver_library.h"
#include "data/rows/session.h"
#include "tests/support/raised_by.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

OdbcSettings WithPassword(Dialect dialect, const std::wstring& password) {
  return {.driver = L"/lib/driver.so",
          .dialect = dialect,
          .host = L"db1",
          .port = 1433,
          .user_id = L"appuser",
          .password = password,
          .database = L"Agency"};
}

std::wstring PasswordPart(Dialect dialect, const std::wstring& password) {
  const std::wstring text = ConnectionText(WithPassword(dialect, password));
  const std::size_t start = text.find(L"PWD=");
  return text.substr(start, text.rfind(L"DATABASE=") - start);
}

TEST(ConnectionTextTest, IsCompleteForEachDialect) {
  OdbcSettings settings = WithPassword(Dialect::kFreeTds, L"tonal");
  EXPECT_EQ(ConnectionText(settings),
            L"DRIVER=/lib/driver.so;SERVER=db1,1433;UID=appuser;PWD=tonal;DATABASE=Agency;"
            L"APP=PXScheduler;TDS_Version=7.4;ClientCharset=UTF-8;Encryption=require;");
  settings.encryption = Encryption::kIfOffered;
  settings.database.clear();
  EXPECT_EQ(ConnectionText(settings),
            L"DRIVER=/lib/driver.so;SERVER=db1,1433;UID=appuser;PWD=tonal;"
            L"APP=PXScheduler;TDS_Version=7.4;ClientCharset=UTF-8;Encryption=request;");
  settings = WithPassword(Dialect::kStandard, L"tonal");
  settings.driver = L"ODBC Driver 18 for SQL Server";
  EXPECT_EQ(ConnectionText(settings),
            L"DRIVER={ODBC Driver 18 for SQL Server};SERVER=tcp:db1,1433;UID=appuser;PWD=tonal;"
            L"DATABASE=Agency;APP=PXScheduler;Encrypt=yes;TrustServerCertificate=yes;");
  settings.dialect = Dialect::kWindowsOwn;
  settings.driver = L"SQL Server";
  EXPECT_EQ(ConnectionText(settings),
            L"DRIVER={SQL Server};SERVER=tcp:db1,1433;UID=appuser;PWD=tonal;DATABASE=Agency;"
            L"APP=PXScheduler;");
}

TEST(ConnectionTextTest, QuotesAsTheDriverReads) {
  const struct {
    const wchar_t* password;
    const wchar_t* free_tds;
    const wchar_t* standard;
  } cases[] = {
      {L"", L"PWD=;", L"PWD=;"},
      {L"a=b c'\"", L"PWD=a=b c'\";", L"PWD=a=b c'\";"},
      {L"a;DATABASE=x", L"PWD={a;DATABASE=x};", L"PWD={a;DATABASE=x};"},
      {L" a ", L"PWD={ a };", L"PWD={ a };"},
      {L"a}", L"PWD=a};", L"PWD={a}}};"},
      {L"{a", L"PWD={{a};", L"PWD={{a};"},
      {L"{a}", L"PWD={{a}};", L"PWD={{a}}};"},
      {L"\u017Di\u017Eka", L"PWD=\u017Di\u017Eka;", L"PWD=\u017Di\u017Eka;"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(each.password)));
    EXPECT_EQ(PasswordPart(Dialect::kFreeTds, each.password), each.free_tds);
    EXPECT_EQ(PasswordPart(Dialect::kStandard, each.password), each.standard);
  }
}

TEST(ConnectionTextTest, RefusesWhatNoQuotingCarries) {
  for (const std::wstring& password :
       {std::wstring(L"a};DATABASE=x"), std::wstring(L"a;}"), std::wstring(L"a}b;DRIVER=/tmp/x.so"),
        std::wstring(L"a\nb"), std::wstring(L"a\0b", 3)}) {
    for (const Dialect dialect : {Dialect::kFreeTds, Dialect::kStandard}) {
      const RuntimeError error = RaisedBy([&] { ConnectionText(WithPassword(dialect, password)); });
      EXPECT_EQ(error.number, Session::kProviderFailure);
      EXPECT_EQ(error.description,
                L"The password holds characters that an ODBC connection string cannot carry.");
    }
  }
  OdbcSettings settings = WithPassword(Dialect::kStandard, L"a");
  settings.driver = L"a};DATABASE=x";
  EXPECT_THROW(ConnectionText(settings), RuntimeError);
}

TEST(DriverLibraryTest, KnowsHowEachDriverReads) {
  const struct {
    const wchar_t* driver;
    Dialect dialect;
  } cases[] = {
      {L"/usr/lib/odbc/libtdsodbc.so", Dialect::kFreeTds},
      {L"FreeTDS", Dialect::kFreeTds},
      {L"/opt/tds/libmsodbcsql-18.so", Dialect::kStandard},
      {L"ODBC Driver 18 for SQL Server", Dialect::kStandard},
      {L"ODBC Driver 17 for SQL Server", Dialect::kStandard},
      {L"sql server", Dialect::kWindowsOwn},
  };
  for (const auto& each : cases)
    EXPECT_EQ(DialectOf(each.driver), each.dialect) << ToUtf8(each.driver);
}

TEST(DriverLibraryTest, FindsTheDriverOrSaysWhatIsMissing) {
  const Driver found = FindDriver(L"");
  EXPECT_EQ(FindDriver(found.name), found);
  EXPECT_EQ(found.dialect, DialectOf(found.name));
  for (const std::wstring wanted : {L"/nowhere/libtdsodbc.so", L"No such driver"}) {
    const std::wstring description = RaisedBy([&] { FindDriver(wanted); }).description;
    EXPECT_NE(description.find(wanted), std::wstring::npos);
    EXPECT_NE(description.find(L"PXSCHEDULER_ODBC_DRIVER"), std::wstring::npos);
  }
}

}  // namespace
}  // namespace pxscheduler
