#include "app/run_driver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/fake_components.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

using testing::ElementsAre;
using testing::EndsWith;

constexpr wchar_t kLogFile[] = L"Data\\PXScheduler.log";

// Notes for each message what the log says when the message is sent.
class LogWatchingMail : public FakeMailComponent {
 public:
  LogWatchingMail(const FakeSystem& system, std::vector<std::wstring>& logs)
      : system_(system), logs_(logs) {}
  void Send() override { logs_.push_back(system_.appended.at(kLogFile)); }

 private:
  const FakeSystem& system_;
  std::vector<std::wstring>& logs_;
};

// One recordset that holds the saved query and its rows, and a mail component that takes
// everything.
class OneQuery : public Components {
 public:
  explicit OneQuery(const FakeSystem& system) : system_(system) {}

  void AddRow(const std::wstring& email, Value send_email) {
    FakeRecordset::Row row = ClientRow(email, std::move(send_email));
    row[L"QueryString"] = L"SELECT * FROM Clients";
    rows_.push_back(std::move(row));
  }

  std::unique_ptr<Connection> NewConnection() override {
    return std::make_unique<FakeConnection>();
  }
  std::unique_ptr<Recordset> NewRecordset() override {
    auto recordset = std::make_unique<FakeRecordset>();
    recordset->rows = rows_;
    return recordset;
  }
  std::unique_ptr<MailComponent> NewMailComponent() override {
    return std::make_unique<LogWatchingMail>(system_, logs_at_send);
  }
  std::unique_ptr<TextControl> NewTextControl() override { return nullptr; }

  std::vector<std::wstring> logs_at_send;

 private:
  const FakeSystem& system_;
  std::vector<FakeRecordset::Row> rows_;
};

// Messages are composed ahead of the outcome of the one before, but nothing is sent ahead of it,
// and a row that ends the run takes no outcome with it.
TEST(RunDriver, EachOutcomeIsLoggedBeforeTheNextMessageIsSent) {
  FakeSystem system;
  system.folders.insert(L"Data");
  system.command_line = L"/QMailing /SHello /Fbody.txt";
  OneQuery components(system);
  components.AddRow(L"ann@example.com", true);
  components.AddRow(L"skipped@example.com", false);
  components.AddRow(L"bob@example.com", true);
  components.AddRow(L"carl@example.com", L"neither true nor false");
  const FakeRegistry registry;
  const PictureRegional regional = EnglishRegional();
  const Latin1CodePage ansi;
  const FakePasswords passwords;

  EXPECT_THROW(Main({system, registry, regional, ansi, passwords, components}), RuntimeError);

  EXPECT_THAT(components.logs_at_send, ElementsAre(EndsWith(L"Running query: Mailing\r\n"),
                                                   EndsWith(L"Sent: ann@example.com\r\n")));
  EXPECT_THAT(system.appended[kLogFile],
              EndsWith(L"Sent: ann@example.com\r\nSent: bob@example.com\r\n"));
}

}  // namespace
}  // namespace pxscheduler
