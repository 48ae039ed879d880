#include "config/data_folder.h"

#include <optional>

#include "config/helper_library.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

constexpr wchar_t kShellFoldersKey[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr int kPersonalFolderMajorVersion = 6;
constexpr wchar_t kSeparators[] = L"\\/";

// "%NAME%" gives way to the variable's value, from the first "%" again after each one; a variable
// whose value holds its own reference never ends this.
std::wstring ExpandEnvironmentReferences(const System& system, const CodePage& ansi,
                                         std::wstring text) {
  for (;;) {
    const std::size_t opening = text.find(L'%');
    if (opening == std::wstring::npos) return text;
    const std::size_t closing = text.find(L'%', opening + 1);
    if (closing == std::wstring::npos) return text;
    const std::wstring name = text.substr(opening + 1, closing - opening - 1);
    text = Stuff(ansi, text, L"%" + name + L"%", system.EnvironmentVariable(name));
  }
}

// False for what cannot be examined, which may still be created.
bool Exists(const System& system, const std::wstring& path) {
  try {
    return !system.FirstEntry(path).empty();
  } catch (const RuntimeError&) {
    return false;
  }
}

// The error of the first folder that could not be made; those below it are tried all the same.
std::optional<RuntimeError> MakeMissingFolders(System& system, const std::wstring& path) {
  const std::size_t separator = path.find_last_of(kSeparators);
  std::optional<RuntimeError> first_error;
  if (separator != std::wstring::npos)
    first_error = MakeMissingFolders(system, path.substr(0, separator));
  if (path.empty() || separator == path.size() - 1) return first_error;

  if (Exists(system, path)) return first_error;
  try {
    system.MakeFolder(path);
  } catch (const RuntimeError& error) {
    if (!first_error) first_error = error;
  }
  return first_error;
}

}  // namespace

std::wstring GetDataFolder(System& system, const Registry& registry, const CodePage& ansi) {
  std::wstring folder =
      GetRegValue(registry, ansi, RegistryRoot::kLocalMachine, kProductKey, L"DataFolder", L"");
  if (!folder.empty()) {
    folder = Stuff(ansi, folder, L"[PROGRAM PATH]", system.ProgramFolder());
    // "[DATABASE]" stands for the name of the open database, and none is open this early: the
    // setting ends the run whether or not it holds the placeholder.
    throw Explained(ObjectRequired(),
                    PlaceOf(registry, RegistryRoot::kLocalMachine, kProductKey, L"DataFolder") +
                        L" is set, which ends every run: remove it.");
  }

  folder =
      GetRegValue(registry, ansi, RegistryRoot::kCurrentUser, kShellFoldersKey, L"Personal", L"");
  if (~IsBlank(folder) != 0) {
    folder = ExpandEnvironmentReferences(system, ansi, folder);
    const std::wstring title = GetRegValue(registry, ansi, RegistryRoot::kLocalMachine, kProductKey,
                                           L"AppTitle", L"Orbalis CS");
    folder += L"\\" + Parse(ansi, title, L"#");
  }

  const bool keeps_personal_folder = system.OsMajorVersion() == kPersonalFolderMajorVersion;
  const bool has_data_entry = !system.FirstEntry(L"Data").empty();
  if ((has_data_entry && !keeps_personal_folder) || folder.empty()) folder = L"Data";

  if (folder.back() != L'\\') folder += L'\\';
  CreateFolder(system, folder);
  return folder;
}

void CreateFolder(System& system, const std::wstring& path) {
  const std::optional<RuntimeError> error = MakeMissingFolders(system, path);
  // A drive, which cannot be made, may be there, and another run may have made the rest meanwhile.
  if (error && !Exists(system, path.substr(0, path.find_last_not_of(kSeparators) + 1)))
    system.Warn(L"The folder of the run log could not be made. " + error->description);
}

}  // namespace pxscheduler
