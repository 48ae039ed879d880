#pragma once

#include "platform/registry.h"

namespace pxscheduler {

// The system's registry, always its 32-bit view, because the product writes its settings there. A
// key that cannot be read counts as missing.
class WindowsRegistry : public Registry {
 public:
  std::optional<std::wstring> Value(RegistryRoot root, std::wstring_view key,
                                    std::wstring_view name) const override;
  std::wstring FileOf(RegistryRoot /*root*/, std::wstring_view /*key*/,
                      std::wstring_view /*name*/) const override {
    return L"";
  }
};

}  // namespace pxscheduler
