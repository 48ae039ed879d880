#include "tests/support/com_server/automation.h"

#include <cstdlib>
#include <cwchar>
#include <fstream>
#include <iterator>
#include <sstream>

#include "tests/support/com_server/com_server.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

std::wstring Described(const VARIANT& value) {
  switch (V_VT(&value)) {
    case VT_BSTR:
      return L'"' + std::wstring(V_BSTR(&value), ::SysStringLen(V_BSTR(&value))) + L'"';
    case VT_BSTR | VT_BYREF:
      return L"&\"" + std::wstring(*V_BSTRREF(&value)) + L'"';
    case VT_I2:
      return L"short " + std::to_wstring(V_I2(&value));
    case VT_I4:
      return std::to_wstring(V_I4(&value));
    case VT_DISPATCH:
      return static_cast<Automation*>(V_DISPATCH(&value))->Name();
    case VT_ERROR:
      return V_ERROR(&value) == DISP_E_PARAMNOTFOUND ? L"omitted" : L"error";
    default:
      return L"type " + std::to_wstring(V_VT(&value));
  }
}

std::wstring Described(const std::wstring& call, WORD kind, const Arguments& arguments) {
  if (kind == DISPATCH_PROPERTYGET && arguments.empty()) return call;
  std::wstring text = call;
  const std::size_t listed = arguments.size() - (kind == DISPATCH_PROPERTYPUT ? 1 : 0);
  if (kind != DISPATCH_PROPERTYPUT || listed != 0) {
    text += L'(';
    for (std::size_t i = 0; i < listed; ++i)
      text += (i == 0 ? L"" : L", ") + Described(arguments[i]);
    text += L')';
  }
  if (kind == DISPATCH_PROPERTYPUT) text += L" = " + Described(arguments.back());
  return text;
}

// What COM_SERVER_FAILURE asks for when `call` is made now, S_OK where nothing is asked for. The
// occurrences are those in the record.
HRESULT AskedFailure(const std::wstring& call, std::wstring& description) {
  std::wistringstream wanted(EnvironmentText(kComFailure));
  std::wstring name;
  std::size_t occurrence = 0;
  std::wstring code;
  if (!(wanted >> name >> occurrence >> code) || name != call) return S_OK;
  std::wistringstream record(FromUtf8(ReadWhole(EnvironmentText(kComRecord))));
  std::size_t made = 0;
  for (std::wstring line; std::getline(record, line);) {
    const std::wstring_view rest =
        std::wstring_view(line).substr(std::min(call.size(), line.size()));
    if (line.starts_with(call) && (rest.empty() || rest[0] == L'(' || rest[0] == L' ')) ++made;
  }
  if (made != occurrence) return S_OK;
  std::getline(wanted >> std::ws, description);
  return static_cast<HRESULT>(std::wcstoul(code.c_str(), nullptr, 16));
}

}  // namespace

std::wstring EnvironmentText(const wchar_t* name) {
  std::wstring text(4096, L'\0');
  text.resize(::GetEnvironmentVariableW(name, text.data(), static_cast<DWORD>(text.size())));
  return text;
}

std::string ReadWhole(const std::wstring& path) {
  std::ifstream file(path.c_str(), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void Record(const std::wstring& line) {
  std::ofstream file(EnvironmentText(kComRecord).c_str(), std::ios::binary | std::ios::app);
  file << ToUtf8(line) << '\n';
}

BSTR NewText(const std::wstring& text) {
  return ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

HRESULT Automation::QueryInterface(REFIID wanted, void** found) {
  const bool known = wanted == __uuidof(IUnknown) || wanted == __uuidof(IDispatch);
  *found = known ? static_cast<IDispatch*>(this) : nullptr;
  if (!known) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

ULONG Automation::Release() {
  const ULONG left = --references_;
  if (left == 0) {
    Record(name_ + L" released");
    delete this;
  }
  return left;
}

HRESULT Automation::GetTypeInfoCount(UINT* count) {
  *count = 0;
  return S_OK;
}

HRESULT Automation::GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** info) {
  *info = nullptr;
  return E_NOTIMPL;
}

HRESULT Automation::GetIDsOfNames(REFIID /*reserved*/, LPOLESTR* names, UINT /*count*/,
                                  LCID /*locale*/, DISPID* identifiers) {
  for (std::size_t i = 0; i < members_.size(); ++i) {
    if (members_[i] != names[0]) continue;
    identifiers[0] = static_cast<DISPID>(i + 1);
    return S_OK;
  }
  identifiers[0] = DISPID_UNKNOWN;
  return DISP_E_UNKNOWNNAME;
}

HRESULT Automation::Invoke(DISPID member, REFIID /*reserved*/, LCID /*locale*/, WORD kind,
                           DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* details,
                           UINT* /*wrong_argument*/) {
  const Arguments arguments(std::make_reverse_iterator(parameters->rgvarg + parameters->cArgs),
                            std::make_reverse_iterator(parameters->rgvarg));
  const std::wstring call = name_ + L'.' +
                            (members_.empty() ? std::to_wstring(member)
                                              : members_.at(static_cast<std::size_t>(member) - 1));
  Record(Described(call, kind, arguments));
  std::wstring description;
  HRESULT outcome = AskedFailure(call, description);
  if (SUCCEEDED(outcome)) outcome = Carry(member, kind, arguments, result);
  if (SUCCEEDED(outcome) || description.empty()) return outcome;
  *details = {};
  details->scode = outcome;
  details->bstrDescription = NewText(description);
  return DISP_E_EXCEPTION;
}

}  // namespace pxscheduler
