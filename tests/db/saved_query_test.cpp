#include "db/saved_query.h"

#include <gtest/gtest.h>

#include "tests/support/fake_components.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

class SavedQuery : public testing::Test {
 protected:
  SavedQuery() { connection_.state = Connection::kStateOpen; }

  std::wstring Get(const std::wstring& name, const std::wstring& login) {
    return GetSavedQuery(ansi_, EnglishRegional(), connection_, result_set_, name, login);
  }

  Latin1CodePage ansi_;
  FakeConnection connection_;
  FakeRecordset result_set_;
};

TEST_F(SavedQuery, AsksForTheSharedOrTheUsersQuery) {
  Get(L"Mum's day", L" ");
  EXPECT_EQ(result_set_.opened.back(),
            L"SELECT QueryString FROM MarketingQueries WHERE QueryName='Mum''s day' AND UserID=0");
  Get(L"Birthdays", L"o'hara");
  EXPECT_EQ(result_set_.opened.back(),
            L"SELECT QueryString FROM MarketingQueries WHERE QueryName='Birthdays' AND "
            L"UserID=(SELECT UserID FROM Users WHERE (UserID=1 OR "
            L"SUBSTRING(Permissions,200,1)='1') AND Login='o''hara')");
  EXPECT_EQ(result_set_.closed, 2);
}

TEST_F(SavedQuery, TheFirstRowCountsAndNullIsEmpty) {
  EXPECT_EQ(Get(L"none", L""), L"");
  result_set_.rows = {{{L"QueryString", L"SELECT 1"}}, {{L"QueryString", L"SELECT 2"}}};
  EXPECT_EQ(Get(L"two", L""), L"SELECT 1");
  result_set_.rows = {{{L"QueryString", std::monostate{}}}};
  EXPECT_EQ(Get(L"null", L""), L"");
}

TEST_F(SavedQuery, AClosedConnectionIsAnError) {
  connection_.state = Connection::kStateClosed;
  EXPECT_THROW(Get(L"any", L""), RuntimeError);
}

}  // namespace
}  // namespace pxscheduler
