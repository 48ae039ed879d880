#include "data/odbc/server_address.h"

#include <gtest/gtest.h>

#include "data/rows/session.h"
#include "tests/support/raised_by.h"

namespace pxscheduler {
namespace {

TEST(ServerAddressTest, TakesDataSourcesApart) {
  const struct {
    const wchar_t* data_source;
    ServerAddress address;
  } cases[] = {
      {L"db1", {L"db1", 0, L""}},
      {L" db1.agency.example ", {L"db1.agency.example", 0, L""}},
      {L"192.0.2.7,1444", {L"192.0.2.7", 1444, L""}},
      {L"db1 , 65535", {L"db1", 65535, L""}},
      {L"TCP:db1,1444", {L"db1", 1444, L""}},
      {L"tcp:2001:db8::1", {L"2001:db8::1", 0, L""}},
      {L"db1\\Orbalis", {L"db1", 0, L"Orbalis"}},
      {L"tcp:db1\\Orbalis,1444", {L"db1", 1444, L""}},
      {L"db1\\mssqlserver", {L"db1", 0, L""}},
      {L".\\SQLEXPRESS", {L"localhost", 0, L"SQLEXPRESS"}},
      {L"(LOCAL)", {L"localhost", 0, L""}},
      {L"", {L"localhost", 0, L""}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(each.data_source)));
    EXPECT_EQ(ParseServerAddress(each.data_source), each.address);
  }
}

TEST(ServerAddressTest, RefusesWhatIsNoAddress) {
  for (const wchar_t* data_source :
       {L"db1,", L"db1,0", L"db1,65536", L"db1,99999999999999999999", L"db1,1433,1", L"db1,http",
        L"db1\\", L"db 1", L"db1;PWD=x", L"{db1}", L"np:\\\\db1\\pipe\\sql", L"db1\\a b", L"a=b"}) {
    SCOPED_TRACE(testing::PrintToString(std::wstring(data_source)));
    const RuntimeError error = RaisedBy([&] { ParseServerAddress(data_source); });
    EXPECT_EQ(error.number, Session::kProviderFailure);
    EXPECT_NE(error.description.find(data_source), std::wstring::npos);
  }
}

}  // namespace
}  // namespace pxscheduler
