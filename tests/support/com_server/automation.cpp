#include "tests/support/com_server/automation.h"

#include <iterator>

#include "text/utf8.h"

namespace pxscheduler {
namespace {

std::string Described(const VARIANT& value) {
  switch (V_VT(&value)) {
    case VT_BSTR:
      return '"' + ToUtf8({V_BSTR(&value), ::SysStringLen(V_BSTR(&value))}) + '"';
    case VT_BSTR | VT_BYREF:
      return "&\"" + ToUtf8(*V_BSTRREF(&value)) + '"';
    case VT_I2:
      return "short " + std::to_string(V_I2(&value));
    case VT_I4:
      return std::to_string(V_I4(&value));
    case VT_DISPATCH:
      return static_cast<Automation*>(V_DISPATCH(&value))->Name();
    case VT_ERROR:
      return V_ERROR(&value) == DISP_E_PARAMNOTFOUND ? "omitted" : "error";
    default:
      return "type " + std::to_string(V_VT(&value));
  }
}

// As ComScript::calls has it.
std::string Described(std::string call, WORD kind, const Arguments& arguments) {
  const bool is_put = kind == DISPATCH_PROPERTYPUT;
  const std::size_t listed = arguments.size() - (is_put ? 1 : 0);
  if (kind == DISPATCH_METHOD || listed != 0) {
    call += '(';
    for (std::size_t i = 0; i < listed; ++i) call += (i == 0 ? "" : ", ") + Described(arguments[i]);
    call += ')';
  }
  return is_put ? call + " = " + Described(arguments.back()) : call;
}

}  // namespace

HRESULT Give(VARIANT& result, LONG number) {
  V_VT(&result) = VT_I4;
  V_I4(&result) = number;
  return S_OK;
}

HRESULT Give(VARIANT& result, const std::wstring& text) {
  V_VT(&result) = VT_BSTR;
  V_BSTR(&result) = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  return S_OK;
}

HRESULT Give(VARIANT& result, IDispatch* object) {
  V_VT(&result) = VT_DISPATCH;
  V_DISPATCH(&result) = object;
  return S_OK;
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
    Record(" released");
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
  identifiers[0] = DISPID_UNKNOWN;
  for (std::size_t i = 0; i < members_.size(); ++i)
    if (members_[i].first == names[0]) identifiers[0] = static_cast<DISPID>(i + 1);
  return identifiers[0] == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK;
}

HRESULT Automation::Invoke(DISPID member, REFIID /*reserved*/, LCID /*locale*/, WORD kind,
                           DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* details,
                           UINT* /*wrong_argument*/) {
  const Arguments arguments(std::make_reverse_iterator(parameters->rgvarg + parameters->cArgs),
                            std::make_reverse_iterator(parameters->rgvarg));
  const std::string name = members_.empty()
                               ? std::to_string(member)
                               : ToUtf8(members_.at(static_cast<std::size_t>(member) - 1).first);
  Record(Described('.' + name, kind, arguments));
  const auto failure = script_.TakeFailure(name_ + '.' + name);
  VARIANT given;
  ::VariantInit(&given);
  if (!failure) {
    const HRESULT outcome = Carry(member, kind, arguments, given);
    if (result != nullptr) *result = given;
    return outcome;
  }
  if (failure->description.empty()) return failure->result;
  *details = {};
  details->scode = failure->result;
  details->bstrDescription = ::SysAllocString(failure->description.c_str());
  return DISP_E_EXCEPTION;
}

HRESULT Automation::Carry(DISPID member, WORD /*kind*/, const Arguments& arguments,
                          VARIANT& result) {
  return members_.at(static_cast<std::size_t>(member) - 1).second(arguments, result);
}

}  // namespace pxscheduler
