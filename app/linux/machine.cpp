#include "app/linux/machine.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <vector>

#include "platform/dates/picture_regional.h"
#include "platform/linux/file_registry.h"
#include "platform/linux/icu_code_page.h"
#include "platform/linux/icu_names.h"
#include "platform/linux/linux_passwords.h"
#include "platform/linux/linux_system.h"

namespace pxscheduler {
namespace {

// A file opened in the place of standard error would take the messages meant for that.
void OpenStandardDescriptors() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) == -1 && errno == EBADF) {
      // Takes the lowest number that is free, which is this one; it stays open to the end.
      static_cast<void>(::open("/dev/null", O_RDWR));
    }
  }
}

// The text of a regional setting, which a registry may hold empty as well as not at all.
RegionalSettings ReadRegionalSettings(const Registry& registry) {
  const auto read = [&registry](std::wstring_view name, std::wstring otherwise) {
    return registry.Value(RegistryRoot::kCurrentUser, L"Control Panel\\International", name)
        .value_or(std::move(otherwise));
  };
  RegionalSettings settings;
  settings.short_date = read(L"sShortDate", settings.short_date);
  settings.long_time = read(L"sTimeFormat", settings.long_time);
  settings.short_time = read(L"sShortTime", settings.short_time);
  settings.morning = read(L"s1159", settings.morning);
  settings.afternoon = read(L"s2359", settings.afternoon);
  settings.names = [locale = read(L"LocaleName", L"en-US")] { return IcuCalendarNames(locale); };
  return settings;
}

}  // namespace

LinuxMachine::LinuxMachine(int argument_count, const char* const* arguments) {
  OpenStandardDescriptors();
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
  system_ =
      std::make_unique<LinuxSystem>(std::vector<std::string>(arguments, arguments + argument_count),
                                    [this]() -> const CodePage& { return TheCodePages().Ansi(); });
}

LinuxMachine::~LinuxMachine() = default;

System& LinuxMachine::TheSystem() { return *system_; }

const Registry& LinuxMachine::TheRegistry() {
  if (registry_ == nullptr) {
    registry_ = std::make_unique<FileRegistry>(RegistryFiles(
        NativeEnvironmentVariable("PXSCHEDULER_REGISTRY"), NativeEnvironmentVariable("HOME")));
  }
  return *registry_;
}

const CodePages& LinuxMachine::TheCodePages() {
  if (code_pages_ == nullptr) {
    code_pages_ = std::make_unique<IcuCodePages>(
        TheRegistry()
            .Value(RegistryRoot::kLocalMachine,
                   L"System\\CurrentControlSet\\Control\\Nls\\CodePage", L"ACP")
            .value_or(L"1252"));
  }
  return *code_pages_;
}

const Regional& LinuxMachine::TheRegional() {
  if (regional_ == nullptr) {
    RegionalSettings settings = ReadRegionalSettings(TheRegistry());
    settings.today = [this] { return system_->Now().local.date; };
    regional_ = std::make_unique<PictureRegional>(std::move(settings));
  }
  return *regional_;
}

const Passwords& LinuxMachine::ThePasswords() {
  if (passwords_ == nullptr) {
    passwords_ = std::make_unique<CredentialPasswords>(LinuxPasswords(
        std::vector<std::string>{NativeEnvironmentVariable("CREDENTIALS_DIRECTORY"),
                                 NativeEnvironmentVariable("PXSCHEDULER_CREDENTIALS")},
        [this](const std::wstring& line) { system_->Warn(line); }));
  }
  return *passwords_;
}

Platform LinuxMachine::Join(Components& components) {
  return {TheSystem(),           TheRegistry(),  TheRegional(),
          TheCodePages().Ansi(), ThePasswords(), components};
}

}  // namespace pxscheduler
