#include "data/rows/data_connection.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "data/rows/data_recordset.h"
#include "tests/support/raised_by.h"

namespace pxscheduler {
namespace {

// Answers every query with two rows, or without a row set for an empty statement.
class FakeSession : public Session {
 public:
  explicit FakeSession(std::vector<std::wstring>& log) : log_{log} {}
  FakeSession(const FakeSession&) = delete;
  FakeSession& operator=(const FakeSession&) = delete;
  ~FakeSession() override { log_.emplace_back(L"closed"); }

  void Execute(const std::wstring& sql) override { log_.push_back(sql); }
  RowStore Query(const std::wstring& sql) override {
    if (sql.empty()) return {};
    RowStore rows{{L"Email", L"Größe"}};
    for (const char* email : {"b@x", "A@x"}) {
      rows.AppendText(email);
      rows.AppendNull();
      rows.EndRow();
    }
    return rows;
  }
  std::wstring CurrentDatabase() override { return L"Agency"; }

 private:
  std::vector<std::wstring>& log_;
};

class DataConnectionTest : public testing::Test {
 protected:
  SessionOpener Opener(const std::wstring& engine) {
    return [this, engine](const ConnectionSettings& settings) -> std::unique_ptr<Session> {
      log_.push_back(engine + L" " + settings.data_source + L" " + settings.user_id + L" " +
                     settings.password);
      if (settings.password == L"wrong")
        throw RuntimeError{Session::kProviderFailure, L"Login failed"};
      return std::make_unique<FakeSession>(log_);
    };
  }

  void Open(const std::wstring& text) { connection_.Open(text, L"", L"", -1); }

  std::vector<std::wstring> log_;
  DataConnection connection_{{Opener(L"file"), Opener(L"server")}};
};

TEST_F(DataConnectionTest, PicksTheEngineByDataSource) {
  Open(L"Provider=sqloledb;User ID=u;Password=p;Data Source=host,1433");
  EXPECT_EQ(connection_.State(), Connection::kStateOpen);
  EXPECT_EQ(connection_.DefaultDatabase(), L"Agency");
  connection_.Execute(L"SET LOCK_TIMEOUT 60000", -1);
  EXPECT_EQ(RaisedBy([&] { Open(L"Provider=SQLOLEDB"); }).number, 3705);
  connection_.Close();
  connection_.Open(L"Provider=SQLOLEDB;User ID=u;Data Source=sqlite:C:\\a.db", L"me", L"secret",
                   -1);
  EXPECT_EQ(log_, (std::vector<std::wstring>{L"server host,1433 u p", L"SET LOCK_TIMEOUT 60000",
                                             L"closed", L"file C:\\a.db me secret"}));
}

TEST_F(DataConnectionTest, StaysClosedWhereItCannotOpen) {
  EXPECT_EQ(RaisedBy([&] { Open(L"Provider=MSDASQL;Data Source=host"); }).number, 3706);
  EXPECT_EQ(RaisedBy([&] { Open(L"Data Source=host"); }).number, 3706);
  EXPECT_EQ(RaisedBy([&] { Open(L"Provider=SQLOLEDB;Password=wrong"); }).number,
            Session::kProviderFailure);
  EXPECT_EQ(connection_.State(), Connection::kStateClosed);
  EXPECT_EQ(RaisedBy([&] { connection_.Execute(L"x", -1); }).number, 3704);
  EXPECT_EQ(RaisedBy([&] { connection_.DefaultDatabase(); }).number, 3704);
  EXPECT_EQ(RaisedBy([&] { connection_.Close(); }).number, 3704);
  DataRecordset recordset;
  EXPECT_EQ(RaisedBy([&] { recordset.Open(L"x", connection_, -1, -1, -1); }).number, 3709);
}

TEST_F(DataConnectionTest, WalksAResultSet) {
  Open(L"Provider=SQLOLEDB");
  DataRecordset recordset;
  EXPECT_EQ(RaisedBy([&] { recordset.EndOfFile(); }).number, 3704);
  recordset.Open(L"q", connection_, -1, -1, -1);
  EXPECT_EQ(RaisedBy([&] { recordset.Open(L"q", connection_, -1, -1, -1); }).number, 3705);
  EXPECT_EQ(recordset.RecordCount(), 2U);
  EXPECT_EQ(recordset.Fields(L"EMAIL"), Value{L"b@x"});
  EXPECT_EQ(recordset.Fields(L"gRÖßE"), Value{});
  EXPECT_EQ(RaisedBy([&] { recordset.Fields(L"SendEmail"); }).number, 3265);
  EXPECT_EQ(RaisedBy([&] { recordset.SetSort(L"SendEmail"); }).number, 3265);
  recordset.MoveNext();
  recordset.SetSort(L"email");
  EXPECT_EQ(recordset.Fields(L"Email"), Value{L"A@x"});
  recordset.MoveNext();
  EXPECT_EQ(recordset.Fields(L"Email"), Value{L"b@x"});
  recordset.MoveNext();
  EXPECT_TRUE(recordset.EndOfFile());
  EXPECT_EQ(RaisedBy([&] { recordset.Fields(L"Email"); }).number, 3021);
  EXPECT_EQ(RaisedBy([&] { recordset.MoveNext(); }).number, 3021);
  recordset.Close();
  EXPECT_EQ(RaisedBy([&] { recordset.Close(); }).number, 3704);
  recordset.Open(L"", connection_, -1, -1, -1);
  EXPECT_EQ(RaisedBy([&] { recordset.SetSort(L"Email"); }).number, 3704);
}

}  // namespace
}  // namespace pxscheduler
