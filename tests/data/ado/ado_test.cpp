#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "config/helper_library.h"
#include "data/ado/data_access.h"
#include "db/database.h"
#include "db/saved_query.h"
#include "tests/support/com_fixture.h"

namespace pxscheduler {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

constexpr char kOpenWith[] =
    "Connection.Open(\"Provider=SQLOLEDB;Persist Security Info=False;User ID=appuser;Password=";

class AdoTest : public ComFixture {
 protected:
  AdoTest() { InstallDataObjects(); }
  void Open() { OpenDatabase(system_, registry_, ansi_, passwords_, *connection_, L"agency"); }
  void Query(const std::wstring& sql) { result_set_->Open(sql, *connection_, -1, -1, -1); }

  FakeRegistry registry_;
  Latin1CodePage ansi_;
  FakePasswords passwords_;
  std::unique_ptr<Connection> connection_ = NewWindowsConnection(system_, {});
  std::unique_ptr<Recordset> result_set_ = NewWindowsRecordset();
};

TEST_F(AdoTest, TheSavedQueryIsLookedUpByTheseCallsInThisOrder) {
  const std::wstring lookup =
      L"SELECT QueryString FROM MarketingQueries WHERE QueryName='News' AND UserID=0";
  server_.script.result_sets[lookup] = {{L"QueryString"}, {{L"SELECT * FROM Clients"}}};
  Open();
  connection_->SetCursorLocation(Connection::kUseClient);
  EXPECT_EQ(GetSavedQuery(ansi_, EnglishRegional(), *connection_, *result_set_, L"News", L""),
            L"SELECT * FROM Clients");
  EXPECT_EQ(connection_->DefaultDatabase(), L"Agency");
  connection_->Close();
  EXPECT_THAT(
      Calls(),
      ElementsAre(kOpenWith + std::string("database secret;Initial Catalog=;Data Source=agency\", "
                                          "\"\", \"\", -1)"),
                  "Connection.State", "Connection.Execute(\"SET LOCK_TIMEOUT 60000\", omitted, -1)",
                  "Recordset released", "Connection.CursorLocation = 3",
                  "Recordset.Open(\"" + ToUtf8(lookup) + "\", Connection, -1, -1, -1)",
                  "Recordset.EOF", "Recordset.Fields", "Fields.Item(\"QueryString\")",
                  "Fields released", "Field.Value", "Field released", "Recordset.Close()",
                  "Connection.DefaultDatabase", "Connection.Close()"));
}

TEST_F(AdoTest, RowsComeUntilOneFails) {
  server_.script.result_sets[L"rows"] = {{L"Email", L"Phone"}, {{L"a@x", {}}, {L"b@x", L"7"}}};
  Open();
  Query(L"rows");
  result_set_->SetSort(L"Email");
  EXPECT_EQ(Calls().back(), "Recordset.Sort = \"Email\"");
  EXPECT_EQ(result_set_->RecordCount(), 2U);
  EXPECT_EQ(result_set_->Fields(L"Email"), Value(L"a@x"));
  EXPECT_EQ(result_set_->Fields(L"Phone"), Value());
  EXPECT_EQ(RaisedBy([&] { result_set_->Fields(L"Missing"); }).number, 3265);
  result_set_->MoveNext();
  EXPECT_EQ(result_set_->Fields(L"Email"), Value(L"b@x"));
  EXPECT_EQ(Calls().back(), "Field.Value") << "without another look-up of the field";
  FailNext("Recordset.MoveNext", E_FAIL, L"Connection lost");
  EXPECT_EQ(RaisedBy([&] { result_set_->MoveNext(); }).description, L"Connection lost");
  EXPECT_FALSE(result_set_->EndOfFile());
  result_set_->MoveNext();
  EXPECT_TRUE(result_set_->EndOfFile());
}

TEST_F(AdoTest, TheFallbackPasswordFollowsARefusal) {
  FailNext("Connection.Open", static_cast<HRESULT>(0x80040E4D), L"Login failed");
  Open();
  EXPECT_EQ(connection_->State(), Connection::kStateOpen);
  EXPECT_THAT(Calls().at(0), StartsWith(kOpenWith + std::string("database secret;")));
  EXPECT_THAT(Calls().at(1), StartsWith(kOpenWith + std::string("tonal;")));
}

TEST_F(AdoTest, ErrorsKeepTheirNumberAndText) {
  const struct {
    std::uint32_t result;
    const wchar_t* description;
    std::int32_t number;
    const wchar_t* raised;  // null where it is the system's own
  } cases[] = {
      {0x80040E14, L"Incorrect syntax near 'x'.", -2147217900, L"Incorrect syntax near 'x'."},
      {0x800A0BB9, L"Wrong type.", 3001, L"Wrong type."},
      {0x80020003, L"", 438, L"Object doesn't support this property or method"},
      {0x80020005, L"", 13, L"Type mismatch"},
      {0x80004005, L"", -2147467259, nullptr},
  };
  Open();
  for (const auto& [result, description, number, raised] : cases) {
    FailNext("Recordset.Open", static_cast<HRESULT>(result), description);
    const RuntimeError error = RaisedBy([&] { Query(L"rows"); });
    EXPECT_EQ(error.number, number);
    EXPECT_FALSE(error.description.empty());
    if (raised != nullptr) EXPECT_EQ(error.description, raised);
  }
}

}  // namespace
}  // namespace pxscheduler
