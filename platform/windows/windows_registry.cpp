#include "platform/windows/windows_registry.h"

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace pxscheduler {
namespace {

class RegistryKey {
 public:
  RegistryKey(HKEY root, const std::wstring& path) {
    if (::RegOpenKeyExW(root, path.c_str(), 0, KEY_QUERY_VALUE | KEY_WOW64_32KEY, &key_) !=
        ERROR_SUCCESS)
      key_ = nullptr;
  }
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;
  ~RegistryKey() {
    if (key_ != nullptr) ::RegCloseKey(key_);
  }

  bool IsOpen() const { return key_ != nullptr; }
  HKEY Get() const { return key_; }

 private:
  HKEY key_ = nullptr;
};

struct RawValue {
  DWORD type = REG_NONE;
  std::vector<BYTE> bytes;
};

std::optional<RawValue> ReadRawValue(HKEY key, const std::wstring& name) {
  RawValue value;
  DWORD size = 0;
  LSTATUS status = ::RegQueryValueExW(key, name.c_str(), nullptr, &value.type, nullptr, &size);
  // Another program may make it longer between the two calls.
  for (int i = 0; i < 8 && (status == ERROR_SUCCESS || status == ERROR_MORE_DATA); ++i) {
    value.bytes.resize(size);
    status = ::RegQueryValueExW(key, name.c_str(), nullptr, &value.type, value.bytes.data(), &size);
    if (status == ERROR_SUCCESS) {
      value.bytes.resize(size);
      return value;
    }
  }
  return std::nullopt;
}

// Up to its terminator, which a program may have stored or not.
std::wstring TextOf(const std::vector<BYTE>& bytes) {
  std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
  std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
  return text.substr(0, text.find(L'\0'));
}

template <typename Number>
std::optional<std::wstring> DecimalOf(const std::vector<BYTE>& bytes) {
  Number number = 0;
  if (bytes.size() != sizeof number) return std::nullopt;
  std::memcpy(&number, bytes.data(), sizeof number);
  return std::to_wstring(number);
}

}  // namespace

std::optional<std::wstring> WindowsRegistry::Value(RegistryRoot root, std::wstring_view key,
                                                   std::wstring_view name) const {
  // The system would take a text with a NUL inside for a shorter one, which names something else.
  if (key.find(L'\0') != std::wstring_view::npos || name.find(L'\0') != std::wstring_view::npos)
    return std::nullopt;
  const RegistryKey opened(
      root == RegistryRoot::kLocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER,
      std::wstring(key));
  if (!opened.IsOpen()) return std::nullopt;
  const std::optional<RawValue> value = ReadRawValue(opened.Get(), std::wstring(name));
  if (!value) return std::nullopt;
  switch (value->type) {
    case REG_SZ:
    case REG_EXPAND_SZ:
      return TextOf(value->bytes);
    case REG_DWORD:
      return DecimalOf<std::uint32_t>(value->bytes);
    case REG_QWORD:
      return DecimalOf<std::uint64_t>(value->bytes);
    default:
      return std::nullopt;
  }
}

}  // namespace pxscheduler
