#include "db/database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/fake_components.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

using testing::ElementsAre;

class Database : public testing::Test {
 protected:
  void SetDataSource(RegistryRoot root, const std::wstring& name, const std::wstring& value) {
    registry_.Set(root, L"software\\odbc\\odbc.ini\\agency", name, value);
  }
  void Open(const std::wstring& dsn) {
    OpenDatabase(registry_, ansi_, passwords_, connection_, dsn);
  }
  // The string of an open with that password.
  static std::wstring Opened(const std::wstring& password, const std::wstring& database,
                             const std::wstring& server) {
    return L"Open Provider=SQLOLEDB;Persist Security Info=False;User ID=appuser;Password=" +
           password + L";Initial Catalog=" + database + L";Data Source=" + server;
  }

  FakeRegistry registry_;
  Latin1CodePage ansi_;
  FakePasswords passwords_;
  FakeConnection connection_;
};

TEST_F(Database, OpensTheMachinesDataSourceAndSetsTheLockTimeout) {
  SetDataSource(RegistryRoot::kLocalMachine, L"Server", L"db1");
  SetDataSource(RegistryRoot::kLocalMachine, L"Database", L"Agency");
  SetDataSource(RegistryRoot::kCurrentUser, L"Database", L"Other");
  Open(L"agency");
  EXPECT_THAT(connection_.calls, ElementsAre(Opened(L"database secret", L"Agency", L"db1"),
                                             L"Execute SET LOCK_TIMEOUT 60000"));
}

TEST_F(Database, TheUsersDataSourceReplacesOneWithoutADatabase) {
  SetDataSource(RegistryRoot::kLocalMachine, L"Server", L"machine");
  SetDataSource(RegistryRoot::kCurrentUser, L"Database", L"Mine");
  Open(L"agency");
  EXPECT_EQ(connection_.calls.front(), Opened(L"database secret", L"Mine", L"agency"));
}

TEST_F(Database, NothingRegisteredLeavesServerAndDatabaseEmpty) {
  Open(L"");
  EXPECT_EQ(connection_.calls.front(), Opened(L"database secret", L"", L""));
}

TEST_F(Database, TheFallbackPasswordIsTriedOnce) {
  registry_.Set(RegistryRoot::kLocalMachine, L"Software\\Kestrova\\Orbalis", L"LockTimeout",
                L" -1x");
  connection_.refused_passwords = {L"database secret"};
  Open(L"agency");
  EXPECT_THAT(connection_.calls,
              ElementsAre(Opened(L"database secret", L"", L"agency"),
                          Opened(L"tonal", L"", L"agency"), L"Execute SET LOCK_TIMEOUT  -1x"));
}

TEST_F(Database, AConnectionThatStaysClosedIsNotReported) {
  connection_.refused_passwords = {L"database secret", L"tonal"};
  Open(L"agency");
  EXPECT_EQ(connection_.calls.size(), 2U);
  EXPECT_EQ(connection_.State(), Connection::kStateClosed);
}

}  // namespace
}  // namespace pxscheduler
