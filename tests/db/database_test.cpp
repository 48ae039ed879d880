#include "db/database.h"

#include <gtest/gtest.h>

#include "tests/support/fake_components.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

TEST(Database, TheMachinesDataSourceOrWithoutADatabaseTheUsersIsOpened) {
  struct Source {
    const wchar_t* server;
    const wchar_t* database;
  };
  const struct {
    Source machine;
    Source user;
    const wchar_t* opened;
  } cases[] = {
      {{L"db1", L"Agency"}, {L"db2", L"Other"}, L"Initial Catalog=Agency;Data Source=db1"},
      {{L"db1", L""}, {L"", L"Mine"}, L"Initial Catalog=Mine;Data Source=agency"},
  };
  for (const auto& c : cases) {
    FakeRegistry registry;
    const auto set = [&](RegistryRoot root, const Source& source) {
      registry.Set(root, L"software\\odbc\\odbc.ini\\agency", L"Server", source.server);
      registry.Set(root, L"software\\odbc\\odbc.ini\\agency", L"Database", source.database);
    };
    set(RegistryRoot::kLocalMachine, c.machine);
    set(RegistryRoot::kCurrentUser, c.user);
    FakeConnection connection;
    FakeSystem system;
    OpenDatabase(system, registry, Latin1CodePage(), FakePasswords(), connection, L"agency");
    EXPECT_EQ(connection.connection_string,
              L"Provider=SQLOLEDB;Persist Security Info=False;User ID=appuser;"
              L"Password=database secret;" +
                  std::wstring{c.opened});
  }
}

}  // namespace
}  // namespace pxscheduler
