#include "platform/linux/file_registry.h"

#include "platform/linux/files.h"
#include "platform/linux/native_text.h"
#include "platform/linux/registry_export.h"

namespace pxscheduler {

FileRegistry::FileRegistry(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    const std::optional<std::string> bytes = ReadNativeFileIfAny(path);
    if (bytes) ApplyRegistryExport(*bytes, path, content_);
  }
}

std::optional<std::wstring> FileRegistry::Value(RegistryRoot root, std::wstring_view key,
                                                std::wstring_view name) const {
  const RegistryValue* value = content_.Find(root, key, name);
  if (value == nullptr) return std::nullopt;
  return value->text;
}

std::wstring FileRegistry::FileOf(RegistryRoot root, std::wstring_view key,
                                  std::wstring_view name) const {
  const RegistryValue* value = content_.Find(root, key, name);
  return value == nullptr ? L"" : FromNative(value->file);
}

std::vector<std::string> RegistryFiles(const std::string& only, const std::string& home) {
  if (!only.empty()) return {only};
  std::vector<std::string> paths = {"/etc/orbalis/orbalis.reg"};
  if (!home.empty()) paths.push_back(home + "/.config/orbalis/orbalis.reg");
  return paths;
}

}  // namespace pxscheduler
