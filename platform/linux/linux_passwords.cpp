#include "platform/linux/linux_passwords.h"

#include <utility>

#include "platform/linux/files.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

// Nothing where no folder holds it.
std::optional<std::string> ReadCredential(const std::vector<std::string>& folders,
                                          const std::string& name) {
  for (const std::string& folder : folders) {
    if (folder.empty()) continue;
    std::string path = folder;
    path.append("/").append(name);
    std::optional<std::string> text = ReadNativeFileIfAny(path);
    if (!text) continue;
    const std::size_t length = WithoutLineEnd(*text).size();
    text->resize(length);
    return text;
  }
  return std::nullopt;
}

}  // namespace

CredentialPasswords LinuxPasswords(std::vector<std::string> folders,
                                   std::function<void(const std::wstring&)> warn) {
  auto read = [folders = std::move(folders),
               warn](const std::string& name) -> std::optional<std::string> {
    try {
      return ReadCredential(folders, name);
    } catch (const RuntimeError& error) {
      warn(L"Credential not read: " + error.description);
      return std::nullopt;
    }
  };
  return {std::move(read), std::move(warn)};
}

}  // namespace pxscheduler
