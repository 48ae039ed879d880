#include "platform/com/com_error.h"

#include <oleauto.h>

#include <memory>
#include <utility>

namespace pxscheduler {
namespace {

struct LocalFreeing {
  void operator()(wchar_t* text) const { ::LocalFree(text); }
};

struct BstrFreeing {
  void operator()(wchar_t* text) const { ::SysFreeString(text); }
};
using OwnedBstr = std::unique_ptr<wchar_t, BstrFreeing>;

std::wstring SystemText(HRESULT result) {
  wchar_t* buffer = nullptr;
  // With ALLOCATE_BUFFER the argument is where the system puts the pointer.
  const DWORD length = ::FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, static_cast<DWORD>(result), 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  const std::unique_ptr<wchar_t, LocalFreeing> owned(buffer);
  if (length == 0) return L"Automation error";
  std::wstring text(buffer, length);
  text.erase(text.find_last_not_of(L" \r\n") + 1);
  return text;
}

std::wstring Text(const OwnedBstr& text) {
  return text ? std::wstring(text.get(), ::SysStringLen(text.get())) : std::wstring{};
}

}  // namespace

RuntimeError ComError(HRESULT result, const std::wstring& description) {
  switch (result) {
    case DISP_E_UNKNOWNNAME:
    case DISP_E_MEMBERNOTFOUND:
      return {438, L"Object doesn't support this property or method"};
    case DISP_E_BADPARAMCOUNT:
      return {450, L"Wrong number of arguments or invalid property assignment"};
    case DISP_E_TYPEMISMATCH:
      return TypeMismatch();
    case DISP_E_OVERFLOW:
      return Overflow();
    case E_OUTOFMEMORY:
      return OutOfMemory();
    default:
      break;
  }
  const bool is_automation_error = HRESULT_FACILITY(result) == FACILITY_CONTROL;
  return {is_automation_error ? HRESULT_CODE(result) : result,
          description.empty() ? SystemText(result) : description};
}

RuntimeError ComException(EXCEPINFO& details) {
  // A component may put off filling in what nobody may want to know.
  if (details.pfnDeferredFillIn != nullptr) details.pfnDeferredFillIn(&details);
  const OwnedBstr source(std::exchange(details.bstrSource, nullptr));
  const OwnedBstr help_file(std::exchange(details.bstrHelpFile, nullptr));
  const OwnedBstr description(std::exchange(details.bstrDescription, nullptr));
  if (details.wCode != 0)
    return {details.wCode, description ? Text(description) : L"Automation error"};
  return ComError(FAILED(details.scode) ? details.scode : E_FAIL, Text(description));
}

RuntimeError CannotCreateObject() { return {429, L"ActiveX component can't create object"}; }

void CheckResult(HRESULT result) {
  if (FAILED(result)) throw ComError(result);
}

}  // namespace pxscheduler
