#include "data/rows/connection_settings.h"

#include <gtest/gtest.h>

namespace pxscheduler {
namespace {

TEST(ConnectionSettingsTest, ReadsConnectionStrings) {
  const struct {
    std::wstring text;
    ConnectionSettings settings;
  } cases[] = {
      {L"Provider=SQLOLEDB;Persist Security Info=False;User ID=appuser;Password=tonal;"
       L"Initial Catalog=Agency;Data Source=server\\orbalis",
       {L"SQLOLEDB", L"appuser", L"tonal", L"Agency", L"server\\orbalis"}},
      {L"Provider=SQLOLEDB;User ID=appuser;Password=;Initial Catalog=;Data Source=",
       {L"SQLOLEDB", L"appuser", L"", L"", L""}},
      // A password ends at its first ";"; what follows is a pair of its own or nothing.
      {L"Password=a=b c;Data Source=host;x", {L"", L"", L"a=b c", L"", L"host"}},
      {L"Password=a;Data Source=evil;Data Source=host", {L"", L"", L"a", L"", L"host"}},
      {L"Password= 'a\"}{ ;pAsSwOrD2=b", {L"", L"", L" 'a\"}{ ", L"", L""}},
      {L" PROVIDER = SQLOLEDB ; data source = sqlite:/a b/c.db ;;=;",
       {L"SQLOLEDB", L"", L"", L"", L"sqlite:/a b/c.db"}},
      {L"server=s;database=d;uid=u;pwd=p", {L"", L"u", L"p", L"d", L"s"}},
  };
  for (const auto& [text, settings] : cases)
    EXPECT_EQ(ReadConnectionString(text), settings) << text;
}

TEST(ConnectionSettingsTest, TellsFilesFromServers) {
  EXPECT_EQ(EmbeddedDatabasePath(L"SQLite:C:\\data\\agency.db"), L"C:\\data\\agency.db");
  EXPECT_EQ(EmbeddedDatabasePath(L"sqlite:"), L"");
  for (const wchar_t* server : {L"", L"sqlite", L"host\\sqlite:", L" sqlite:x"})
    EXPECT_EQ(EmbeddedDatabasePath(server), std::nullopt) << server;
}

}  // namespace
}  // namespace pxscheduler
