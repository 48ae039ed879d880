#include "platform/windows/windows_registry.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace pxscheduler {
namespace {

constexpr wchar_t kKey[] = L"Software\\Kestrova\\Scheduler Test";

// A key of its own in the 32-bit view of the machine's registry, removed with its values.
class WindowsRegistryTest : public testing::Test {
 protected:
  WindowsRegistryTest() {
    ::RegCreateKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, nullptr, 0, KEY_ALL_ACCESS | KEY_WOW64_32KEY,
                      nullptr, &key_, nullptr);
  }
  ~WindowsRegistryTest() override {
    ::RegCloseKey(key_);
    ::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, kKey, KEY_WOW64_32KEY, 0);
  }
  void Set(const wchar_t* name, DWORD type, const void* bytes, std::size_t size) const {
    ASSERT_EQ(::RegSetValueExW(key_, name, 0, type, static_cast<const BYTE*>(bytes),
                               static_cast<DWORD>(size)),
              ERROR_SUCCESS);
  }
  static std::optional<std::wstring> Read(std::wstring_view name) {
    return WindowsRegistry().Value(RegistryRoot::kLocalMachine, kKey, name);
  }

  HKEY key_ = nullptr;
};

TEST_F(WindowsRegistryTest, ReadsTextAndNumbers) {
  Set(L"Text", REG_SZ, L"Reisebu\u0308ro", sizeof L"Reisebu\u0308ro");
  Set(L"Unterminated", REG_SZ, L"abc", 3 * sizeof(wchar_t));
  Set(L"Expandable", REG_EXPAND_SZ, L"%TEMP%\\x", sizeof L"%TEMP%\\x");
  const DWORD number = 4'000'000'000;
  Set(L"Number", REG_DWORD, &number, sizeof number);
  const ULONGLONG large = 1ULL << 40U;
  Set(L"Large", REG_QWORD, &large, sizeof large);
  Set(L"Binary", REG_BINARY, "abc", 3);
  Set(nullptr, REG_SZ, L"default", sizeof L"default");

  const struct {
    const wchar_t* name;
    std::optional<std::wstring> value;
  } cases[] = {
      {L"Text", L"Reisebu\u0308ro"},
      {L"TEXT", L"Reisebu\u0308ro"},
      {L"Unterminated", L"abc"},
      {L"Expandable", L"%TEMP%\\x"},
      {L"Number", L"4000000000"},
      {L"Large", L"1099511627776"},
      {L"", L"default"},
      {L"Binary", std::nullopt},
      {L"Missing", std::nullopt},
  };
  for (const auto& c : cases) EXPECT_EQ(Read(c.name), c.value) << c.name;
  EXPECT_EQ(WindowsRegistry().Value(RegistryRoot::kCurrentUser, kKey, L"Text"), std::nullopt);
  EXPECT_EQ(Read(std::wstring(L"Text\0x", 6)), std::nullopt);
}

}  // namespace
}  // namespace pxscheduler
