#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "config/helper_library.h"
#include "data/ado/data_access.h"
#include "data/value.h"
#include "db/database.h"
#include "db/saved_query.h"
#include "tests/support/com_fixture.h"

namespace pxscheduler {
namespace {

using testing::ElementsAre;

constexpr char kOpenWith[] =
    "Connection.Open(\"Provider=SQLOLEDB;Persist Security Info=False;User ID=appuser;Password=";

class Ado : public ComFixture {
 protected:
  Ado() {
    InstallDataObjects();
    SetRows(
        "? SELECT QueryString\nQueryString\ntext:SELECT * FROM Clients\n"
        "? SELECT *\nEmail\tSendEmail\tNumber\tBirthday\tBalance\n"
        "text:b@x\tbool:True\tlong:7\tdate:46342.75\tmoney:-12.5\n"
        "text:A@x\tbool:False\tlong:-1\tnull\tnull\n");
  }
  void Open() { OpenDatabase(registry_, ansi_, passwords_, *connection_, L"agency"); }

  FakeRegistry registry_;
  Latin1CodePage ansi_;
  FakePasswords passwords_;
  PictureRegional regional_ = EnglishRegional();
  std::unique_ptr<Connection> connection_ = NewWindowsConnection(system_, {});
  std::unique_ptr<Recordset> result_set_ = NewWindowsRecordset();
};

TEST_F(Ado, TheSavedQueryIsLookedUpByTheseCallsInThisOrder) {
  Open();
  connection_->SetCursorLocation(Connection::kUseClient);
  EXPECT_EQ(GetSavedQuery(ansi_, regional_, *connection_, *result_set_, L"News", L""),
            L"SELECT * FROM Clients");
  EXPECT_EQ(connection_->DefaultDatabase(), L"Agency");
  connection_->Close();
  EXPECT_THAT(
      Calls(),
      ElementsAre(kOpenWith + std::string("database secret;Initial Catalog=;Data Source=agency\", "
                                          "\"\", \"\", -1)"),
                  "Connection.State", "Connection.Execute(\"SET LOCK_TIMEOUT 60000\", omitted, -1)",
                  "Recordset released", "Connection.CursorLocation = 3",
                  "Recordset.Open(\"SELECT QueryString FROM MarketingQueries WHERE "
                  "QueryName='News' AND UserID=0\", Connection, -1, -1, -1)",
                  "Recordset.EOF", "Recordset.Fields", "Fields.Item(\"QueryString\")",
                  "Fields released", "Field.Value", "Field released", "Recordset.Close()",
                  "Connection.DefaultDatabase", "Connection.Close()"));
}

TEST_F(Ado, RowsComeSortedWithTheirValues) {
  Open();
  result_set_->Open(L"SELECT *", *connection_, -1, -1, -1);
  result_set_->SetSort(L"Email");
  EXPECT_EQ(result_set_->RecordCount(), 2U);
  EXPECT_EQ(result_set_->Fields(L"EMAIL"), Value(L"A@x"));
  EXPECT_EQ(result_set_->Fields(L"Birthday"), Value(std::monostate{}));
  result_set_->MoveNext();
  EXPECT_EQ(result_set_->Fields(L"EMAIL"), Value(L"b@x"));
  EXPECT_EQ(result_set_->Fields(L"SendEmail"), Value(true));
  EXPECT_EQ(result_set_->Fields(L"Number"), Value(std::int64_t{7}));
  EXPECT_EQ(TextOf(regional_, result_set_->Fields(L"Balance")), L"-12.5");
  EXPECT_EQ(TextOf(regional_, result_set_->Fields(L"Birthday")), L"11/16/2026 6:00:00 PM");
  EXPECT_EQ(RaisedBy([&] { result_set_->Fields(L"Missing"); }).number, 3265);
  result_set_->MoveNext();
  EXPECT_TRUE(result_set_->EndOfFile());
  EXPECT_THAT(Calls(), testing::Contains("Recordset.Sort = \"Email\""));
}

TEST_F(Ado, TheFallbackPasswordFollowsARefusal) {
  Fail(L"Connection.Open 1 80040E4D Login failed");
  Open();
  EXPECT_EQ(connection_->State(), Connection::kStateOpen);
  const std::vector<std::string> calls = Calls();
  EXPECT_TRUE(calls.at(0).starts_with(kOpenWith + std::string("database secret;")));
  EXPECT_TRUE(calls.at(1).starts_with(kOpenWith + std::string("tonal;")));
}

TEST_F(Ado, ErrorsKeepTheirNumberAndText) {
  const struct {
    const wchar_t* failure;
    std::int32_t number;
    const wchar_t* description;  // null where it is the system's own
  } cases[] = {
      {L"Recordset.Open 1 80040E14 Incorrect syntax near 'x'.", -2147217900,
       L"Incorrect syntax near 'x'."},
      {L"Recordset.Open 1 800A0BB9 Wrong type.", 3001, L"Wrong type."},
      {L"Recordset.Open 1 80020005", 13, L"Type mismatch"},
      {L"Recordset.Open 1 80004005", -2147467259, nullptr},
  };
  for (const auto& c : cases) {
    std::filesystem::remove(RecordFile());
    Fail(c.failure);
    if (connection_->State() != Connection::kStateOpen) Open();
    const RuntimeError error =
        RaisedBy([&] { result_set_->Open(L"SELECT *", *connection_, -1, -1, -1); });
    EXPECT_EQ(error.number, c.number);
    if (c.description != nullptr) EXPECT_EQ(error.description, c.description);
    EXPECT_FALSE(error.description.empty());
  }
}

TEST_F(Ado, AnErrorInTheMiddleOfTheRowsIsRaised) {
  Open();
  result_set_->Open(L"SELECT *", *connection_, -1, -1, -1);
  Fail(L"Recordset.MoveNext 2 80004005 Connection lost");
  result_set_->MoveNext();
  EXPECT_EQ(RaisedBy([&] { result_set_->MoveNext(); }).description, L"Connection lost");
}

TEST_F(Ado, AConnectionThatStayedClosedShowsAtTheLookUp) {
  EXPECT_EQ(RaisedBy([&] { result_set_->Open(L"SELECT *", *connection_, -1, -1, -1); }).number,
            3709);
}

}  // namespace
}  // namespace pxscheduler
