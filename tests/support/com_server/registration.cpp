#include "tests/support/com_server/registration.h"

#include <objbase.h>

#include <stdexcept>

namespace pxscheduler {
namespace {

const std::wstring kClasses = L"Software\\Classes\\";

void Write(const std::wstring& key, const wchar_t* name, const std::wstring& text) {
  const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  if (::RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_SZ, text.c_str(), bytes) !=
      ERROR_SUCCESS)
    throw std::runtime_error("a class cannot be registered");
}

std::wstring LibraryPath() {
  std::wstring path(32768, L'\0');
  path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.rfind(L'\\') + 1) + L"com_server.dll";
}

}  // namespace

ComRegistration::ComRegistration(const std::wstring& program_id, const CLSID& class_id)
    : program_key_(kClasses + program_id + L"\\CLSID") {
  wchar_t identifier[40] = {};
  ::StringFromGUID2(class_id, identifier, 40);
  class_key_ = kClasses + L"CLSID\\" + identifier;
  wchar_t before[64] = {};
  DWORD size = sizeof before;
  if (::RegGetValueW(HKEY_LOCAL_MACHINE, program_key_.c_str(), nullptr, RRF_RT_REG_SZ, nullptr,
                     before, &size) == ERROR_SUCCESS)
    before_ = before;
  Write(program_key_, nullptr, identifier);
  Write(class_key_ + L"\\InprocServer32", nullptr, LibraryPath());
  Write(class_key_ + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
}

ComRegistration::~ComRegistration() {
  ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, class_key_.c_str());
  if (before_)
    Write(program_key_, nullptr, *before_);
  else
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, program_key_.c_str());
}

}  // namespace pxscheduler
