#include "platform/linux/registry_content.h"

#include <algorithm>

#include "platform/letter_case.h"

namespace pxscheduler {
namespace {

// Sorts before every character of a name, so that a key and all keys below it stand together.
constexpr wchar_t kSeparator = L'\1';

// A 64-bit Windows keeps the settings of 32-bit programs, which this product's are, here, and shows
// them to such a program as if this level did not exist.
constexpr std::wstring_view kRedirected = L"software\1wow6432node";

std::wstring Folded(RegistryRoot root, std::wstring_view path) {
  while (path.ends_with(L'\\')) path.remove_suffix(1);
  std::wstring folded = LowerCase(path);
  std::replace(folded.begin(), folded.end(), L'\\', kSeparator);
  if (folded.starts_with(kRedirected) &&
      (folded.size() == kRedirected.size() || folded[kRedirected.size()] == kSeparator))
    folded.erase(kRedirected.find(kSeparator), kRedirected.size() - kRedirected.find(kSeparator));
  folded.insert(0, {root == RegistryRoot::kLocalMachine ? L'M' : L'U', kSeparator});
  return folded;
}

}  // namespace

RegistryContent::Values& RegistryContent::Key(RegistryRoot root, std::wstring_view path) {
  return keys_[Folded(root, path)];
}

void RegistryContent::DeleteKey(RegistryRoot root, std::wstring_view path) {
  std::wstring key = Folded(root, path);
  keys_.erase(key);
  key += kSeparator;
  const auto first = keys_.lower_bound(key);
  key.back() = kSeparator + 1;
  keys_.erase(first, keys_.lower_bound(key));
}

const RegistryValue* RegistryContent::Find(RegistryRoot root, std::wstring_view path,
                                           std::wstring_view name) const {
  const auto key = keys_.find(Folded(root, path));
  if (key == keys_.end()) return nullptr;
  const auto value = key->second.find(LowerCase(name));
  return value == key->second.end() ? nullptr : &value->second;
}

}  // namespace pxscheduler
