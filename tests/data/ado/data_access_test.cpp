#include "data/ado/data_access.h"

#include <gtest/gtest.h>

#include "tests/support/com_fixture.h"

namespace pxscheduler {
namespace {

class DataAccessTest : public ComFixture {
 protected:
  // Which engine a connection to that source ends at, by the text of the error it raises; "ado"
  // where the data objects take it.
  std::wstring EngineOf(const std::wstring& source, const std::wstring& access) {
    system_.environment[L"PXSCHEDULER_DATA_ACCESS"] = access;
    const auto refuse = [](const wchar_t* engine) {
      return [engine](const ConnectionSettings&) -> std::unique_ptr<Session> {
        throw RuntimeError{Session::kProviderFailure, engine};
      };
    };
    const auto connection = NewWindowsConnection(system_, {refuse(L"file"), refuse(L"odbc")});
    EXPECT_EQ(connection->State(), Connection::kStateClosed);
    const RuntimeError error = RaisedBy(
        [&] { connection->Open(L"Provider=SQLOLEDB;Data Source=" + source, L"", L"", -1); });
    return error.number == 0 ? L"ado" : error.description;
  }
};

TEST_F(DataAccessTest, FollowsWhatIsInstalledAndWhatIsWanted) {
  EXPECT_EQ(EngineOf(L"host", L""), L"odbc");
  server_.Install(L"ADODB.Connection");
  EXPECT_EQ(EngineOf(L"host", L""), L"odbc") << "without the provider";
  server_.Install(L"SQLOLEDB");
  EXPECT_EQ(EngineOf(L"host", L""), L"ado");
  EXPECT_EQ(EngineOf(L"host", L" ADO "), L"ado");
  EXPECT_EQ(EngineOf(L"host", L"odbc"), L"odbc");
  EXPECT_EQ(EngineOf(L"SQLITE:C:\\a.db", L""), L"file");
  EXPECT_EQ(EngineOf(L"sqlite:C:\\a.db", L"ado"), L"file");
  const RuntimeError error = RaisedBy([&] { EngineOf(L"host", L"oledb"); });
  EXPECT_EQ(error.number, 5);
  EXPECT_NE(error.description.find(L"PXSCHEDULER_DATA_ACCESS is \"oledb\""), std::wstring::npos);
}

TEST_F(DataAccessTest, KeepsWhatComesBeforeOpen) {
  InstallDataObjects();
  const auto connection = NewWindowsConnection(system_, {});
  const auto result_set = NewWindowsRecordset();
  const auto query = [&] { result_set->Open(L"rows", *connection, -1, -1, -1); };
  EXPECT_EQ(RaisedBy(query).number, 3709);
  connection->SetCursorLocation(Connection::kUseClient);
  EXPECT_TRUE(Calls().empty());
  FailNext("ADODB.Connection.CreateInstance", E_FAIL);
  const auto open = [&] { connection->Open(L"Provider=SQLOLEDB;Data Source=host", L"", L"", -1); };
  EXPECT_EQ(RaisedBy(open).number, 429);
  EXPECT_EQ(RaisedBy(query).number, 429);
  open();
  EXPECT_EQ(Calls().front(), "Connection.CursorLocation = 3");
}

}  // namespace
}  // namespace pxscheduler
