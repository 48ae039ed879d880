#include "data/odbc/connection_text.h"

#include <gtest/gtest.h>

#include <utility>

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
  EXPECT_TRUE(ConnectionText(settings).ends_with(L"DATABASE=Agency;APP=PXScheduler;"));
}

// How FreeTDS reads is shown by sessions through it.
TEST(ConnectionTextTest, QuotesByTheStandard) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"", L""},          {L"a=b c'\"", L"a=b c'\""}, {L"a;DATABASE=x", L"{a;DATABASE=x}"},
      {L" a ", L"{ a }"},  {L"a}", L"{a}}}"},          {L"{a", L"{{a}"},
      {L"{a}", L"{{a}}}"},
  };
  for (const auto& [password, quoted] : cases)
    EXPECT_NE(ConnectionText(WithPassword(Dialect::kStandard, password))
                  .find(std::wstring(L";PWD=") + quoted + L";DATABASE="),
              std::wstring::npos)
        << ToUtf8(password);
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
