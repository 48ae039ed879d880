#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace pxscheduler {

// Registers one class of the test server, for the whole machine, until the end of the scope; what
// was registered under the name before comes back then.
class ComRegistration {
 public:
  ComRegistration(const std::wstring& program_id, const CLSID& class_id);
  ComRegistration(const ComRegistration&) = delete;
  ComRegistration& operator=(const ComRegistration&) = delete;
  ~ComRegistration();

 private:
  std::wstring program_key_;
  std::wstring class_key_;
  std::optional<std::wstring> before_;
};

}  // namespace pxscheduler
