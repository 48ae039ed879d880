#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

enum class RegistryRoot { kLocalMachine, kCurrentUser };

// The machine's settings, read and never written.
class Registry {
 public:
  virtual ~Registry() = default;

  // The text stored at root\key\name, expandable strings as stored; a number (dword, qword) in
  // decimal. Nothing where the key or the value does not exist or holds anything else. Keys and
  // names compare without case; "" names the key's default value.
  virtual std::optional<std::wstring> Value(RegistryRoot root, std::wstring_view key,
                                            std::wstring_view name) const = 0;
  // The file that holds the value, as the machine writes paths. "" where the registry is no file,
  // or has no such value.
  virtual std::wstring FileOf(RegistryRoot root, std::wstring_view key,
                              std::wstring_view name) const = 0;
};

// Where an operator finds the value, or would put it:
// "EmailFrom" under HKEY_LOCAL_MACHINE\Software\X (/etc/orbalis/orbalis.reg).
std::wstring PlaceOf(const Registry& registry, RegistryRoot root, std::wstring_view key,
                     std::wstring_view name);

}  // namespace pxscheduler
