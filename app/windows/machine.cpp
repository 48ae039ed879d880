#include "app/windows/machine.h"

#include "platform/dates/picture_regional.h"
#include "platform/windows/windows_code_page.h"
#include "platform/windows/windows_passwords.h"
#include "platform/windows/windows_regional.h"
#include "platform/windows/windows_registry.h"
#include "platform/windows/windows_system.h"

namespace pxscheduler {

WindowsMachine::WindowsMachine()
    : system_(std::make_unique<WindowsSystem>(
          [this]() -> const CodePage& { return TheCodePages().Ansi(); })) {}

WindowsMachine::~WindowsMachine() = default;

System& WindowsMachine::TheSystem() { return *system_; }

const Registry& WindowsMachine::TheRegistry() {
  if (registry_ == nullptr) registry_ = std::make_unique<WindowsRegistry>();
  return *registry_;
}

const CodePages& WindowsMachine::TheCodePages() {
  if (code_pages_ == nullptr) code_pages_ = std::make_unique<WindowsCodePages>();
  return *code_pages_;
}

const Regional& WindowsMachine::TheRegional() {
  if (regional_ == nullptr) {
    RegionalSettings settings = WindowsRegionalSettings();
    settings.today = [this] { return system_->Now().local.date; };
    regional_ = std::make_unique<PictureRegional>(std::move(settings));
  }
  return *regional_;
}

const Passwords& WindowsMachine::ThePasswords() {
  if (passwords_ == nullptr) {
    passwords_ = std::make_unique<CredentialPasswords>(
        WindowsPasswords([this](const std::wstring& line) { system_->Warn(line); }));
  }
  return *passwords_;
}

Platform WindowsMachine::Join(Components& components) {
  return {TheSystem(),           TheRegistry(),  TheRegional(),
          TheCodePages().Ansi(), ThePasswords(), components};
}

}  // namespace pxscheduler
