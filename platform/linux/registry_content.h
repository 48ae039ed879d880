#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/registry.h"

namespace pxscheduler {

struct RegistryValue {
  std::wstring text;
  std::string file;  // that it comes from
};

// Registry keys and the values below them, in memory.
class RegistryContent {
 public:
  // The values of one key by their names in lower case.
  using Values = std::map<std::wstring, RegistryValue>;

  // Made where it does not exist. Lives until DeleteKey removes it.
  Values& Key(RegistryRoot root, std::wstring_view path);
  // With everything below it. Does nothing where the key does not exist.
  void DeleteKey(RegistryRoot root, std::wstring_view path);
  // Null where there is no such value.
  const RegistryValue* Find(RegistryRoot root, std::wstring_view path,
                            std::wstring_view name) const;

 private:
  std::map<std::wstring, Values> keys_;
};

}  // namespace pxscheduler
