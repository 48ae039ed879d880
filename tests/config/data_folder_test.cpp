#include "config/data_folder.h"

#include <gtest/gtest.h>

#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

std::wstring DataFolderOf(FakeSystem& system, const wchar_t* personal, const wchar_t* title) {
  FakeRegistry registry;
  registry.Set(RegistryRoot::kCurrentUser,
               L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders",
               L"Personal", personal);
  registry.Set(RegistryRoot::kLocalMachine, L"Software\\Kestrova\\Orbalis", L"AppTitle", title);
  return GetDataFolder(system, registry, Latin1CodePage());
}

TEST(DataFolder, IsTheTitleBelowThePersonalFolder) {
  FakeSystem system;
  system.environment[L"USERPROFILE"] = L"C:\\Users\\ann";
  system.environment[L"NESTED"] = L"%USERPROFILE%\\Deep";
  EXPECT_EQ(DataFolderOf(system, L"%NESTED%", L"Brand"), L"C:\\Users\\ann\\Deep\\Brand\\");
  EXPECT_EQ(DataFolderOf(system, L"C:\\a%%b", L"Brand"), L"C:\\ab\\Brand\\");
  EXPECT_EQ(DataFolderOf(system, L"C:\\Docs", L""), L"C:\\Docs\\");
}

TEST(DataFolder, IsMadeWithItsParents) {
  FakeSystem system;
  DataFolderOf(system, L"/srv/agency", L"Brand");
  EXPECT_EQ(system.folders,
            (std::set<std::wstring>{L"/srv", L"/srv/agency", L"/srv/agency\\Brand"}));
}

TEST(DataFolder, AnEntryNamedDataCountsOnlyOnOtherSystemVersions) {
  FakeSystem system;
  system.files[L"Data"] = "";
  EXPECT_EQ(DataFolderOf(system, L"C:\\Docs", L"Brand"), L"C:\\Docs\\Brand\\");
  for (const std::optional<int> version : {std::optional<int>{5}, {10}, {}}) {
    system.os_major_version = version;
    EXPECT_EQ(DataFolderOf(system, L"C:\\Docs", L"Brand"), L"Data\\");
  }
}

}  // namespace
}  // namespace pxscheduler
