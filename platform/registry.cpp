#include "platform/registry.h"

namespace pxscheduler {

std::wstring PlaceOf(const Registry& registry, RegistryRoot root, std::wstring_view key,
                     std::wstring_view name) {
  std::wstring place = L"\"" + std::wstring(name) + L"\" under ";
  place += root == RegistryRoot::kLocalMachine ? L"HKEY_LOCAL_MACHINE\\" : L"HKEY_CURRENT_USER\\";
  place += key;
  const std::wstring file = registry.FileOf(root, key, name);
  return file.empty() ? place : place + L" (" + file + L")";
}

}  // namespace pxscheduler
