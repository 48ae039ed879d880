#include "config/data_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/runtime_error.h"
#include "tests/support/fake_platform.h"

namespace pxscheduler {
namespace {

constexpr wchar_t kShellFolders[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr wchar_t kProduct[] = L"Software\\Kestrova\\Orbalis";

class DataFolder : public testing::Test {
 protected:
  void SetPersonal(const std::wstring& value) {
    registry_.Set(RegistryRoot::kCurrentUser, kShellFolders, L"Personal", value);
  }
  std::wstring Resolve() { return GetDataFolder(system_, registry_, ansi_); }

  FakeSystem system_;
  FakeRegistry registry_;
  Latin1CodePage ansi_;
};

TEST_F(DataFolder, IsTheTitleBelowThePersonalFolder) {
  system_.environment[L"USERPROFILE"] = L"C:\\Users\\ann";
  system_.environment[L"NESTED"] = L"%USERPROFILE%\\Deep";
  const struct {
    const wchar_t* personal;
    const wchar_t* title;
    const wchar_t* folder;
  } cases[] = {
      {L"%USERPROFILE%\\Documents", nullptr, L"C:\\Users\\ann\\Documents\\Orbalis CS\\"},
      {L"C:\\Docs\\%NOPE%\\x", nullptr, L"C:\\Docs\\\\x\\Orbalis CS\\"},
      {L"C:\\100%\\Docs", nullptr, L"C:\\100%\\Docs\\Orbalis CS\\"},
      {L"%NESTED%", L"Brand X#2", L"C:\\Users\\ann\\Deep\\Brand X\\"},
      {L"C:\\a%%b", nullptr, L"C:\\ab\\Orbalis CS\\"},
      {L"C:\\Docs", L"", L"C:\\Docs\\"},
  };
  for (const auto& c : cases) {
    SetPersonal(c.personal);
    FakeRegistry registry = registry_;
    if (c.title != nullptr) {
      registry.Set(RegistryRoot::kLocalMachine, kProduct, L"AppTitle", c.title);
    }
    EXPECT_EQ(GetDataFolder(system_, registry, ansi_), c.folder) << c.personal;
  }
}

TEST_F(DataFolder, CreatesEveryMissingLevel) {
  SetPersonal(L"C:\\A\\B");
  Resolve();
  EXPECT_TRUE(system_.folders.contains(L"C:\\A"));
  EXPECT_TRUE(system_.folders.contains(L"C:\\A\\B\\Orbalis CS"));
}

TEST_F(DataFolder, FallsBackToDataInTheCurrentFolder) {
  EXPECT_EQ(Resolve(), L"Data\\");
  EXPECT_TRUE(system_.folders.contains(L"Data"));
}

TEST_F(DataFolder, AnEntryNamedDataCountsOnlyOnOtherSystemVersions) {
  SetPersonal(L"C:\\Docs");
  system_.files[L"Data"] = "";
  EXPECT_EQ(Resolve(), L"C:\\Docs\\Orbalis CS\\");
  for (const std::optional<int> version : {std::optional<int>{5}, {10}, {}}) {
    system_.os_major_version = version;
    EXPECT_EQ(Resolve(), L"Data\\");
  }
}

TEST_F(DataFolder, ASettingEndsTheRun) {
  SetPersonal(L"C:\\Docs");
  for (const wchar_t* setting : {L"[PROGRAM PATH]\\Logs", L"C:\\Logs", L" "}) {
    registry_.Set(RegistryRoot::kLocalMachine, kProduct, L"DataFolder", setting);
    try {
      Resolve();
      FAIL() << setting;
    } catch (const RuntimeError& error) {
      EXPECT_EQ(error.number, 424);
    }
  }
  EXPECT_FALSE(system_.folders.contains(L"C:\\Docs"));
}

}  // namespace
}  // namespace pxscheduler
