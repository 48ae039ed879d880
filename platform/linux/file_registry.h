#pragma once

#include <string>
#include <vector>

#include "platform/linux/registry_content.h"
#include "platform/registry.h"

namespace pxscheduler {

// The registry that export files describe.
class FileRegistry : public Registry {
 public:
  // Reads the files in turn, each over what the ones before it left. A file that does not exist is
  // empty. Raises the errors of ApplyRegistryExport, and PermissionDenied or FileAccessError for a
  // file that cannot be read.
  explicit FileRegistry(const std::vector<std::string>& paths);

  std::optional<std::wstring> Value(RegistryRoot root, std::wstring_view key,
                                    std::wstring_view name) const override;
  std::wstring FileOf(RegistryRoot root, std::wstring_view key,
                      std::wstring_view name) const override;

 private:
  RegistryContent content_;
};

// The files of this machine: `only` alone where it is not empty, else the machine's file and then,
// where `home` is not empty, the user's.
std::vector<std::string> RegistryFiles(const std::string& only, const std::string& home);

}  // namespace pxscheduler
