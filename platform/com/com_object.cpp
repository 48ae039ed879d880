#include "platform/com/com_object.h"

#include <olectl.h>

#include <array>
#include <utility>
#include <vector>

#include "platform/com/com_error.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

constexpr WORD kMethod = DISPATCH_METHOD;
constexpr WORD kPropertyGet = DISPATCH_PROPERTYGET;
constexpr WORD kPropertyPut = DISPATCH_PROPERTYPUT;

ComPointer<IDispatch> DispatchOf(const Variant& value) {
  const VARIANT& held = value.Get();
  if (V_VT(&held) != VT_DISPATCH || V_DISPATCH(&held) == nullptr) throw ObjectRequired();
  return ShareComObject(*V_DISPATCH(&held));
}

bool HasInProcessServer(const CLSID& class_id) {
  std::array<wchar_t, 40> text{};  // 38 characters and the zero
  ::StringFromGUID2(class_id, text.data(), static_cast<int>(text.size()));
  const std::wstring key = L"CLSID\\" + std::wstring(text.data()) + L"\\InprocServer32";
  return ::RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), nullptr, RRF_RT_ANY, nullptr, nullptr,
                        nullptr) == ERROR_SUCCESS;
}

}  // namespace

// A thread that somebody made free-threaded before is used as it is.
ComApartment::ComApartment() {
  const HRESULT result = ::OleInitialize(nullptr);
  entered_ = SUCCEEDED(result);
  if (!entered_ && result != RPC_E_CHANGED_MODE) throw ComError(result);
}

ComApartment::~ComApartment() {
  if (entered_) ::OleUninitialize();
}

std::optional<CLSID> FindClass(const std::wstring& program_id) {
  CLSID class_id;
  if (FAILED(::CLSIDFromProgID(program_id.c_str(), &class_id))) return std::nullopt;
  if (!HasInProcessServer(class_id)) return std::nullopt;
  return class_id;
}

ComObject::ComObject(const Variant& value) : object_(DispatchOf(value)) {}

ComObject ComObject::Create(const std::wstring& program_id) {
  const std::optional<CLSID> class_id = FindClass(program_id);
  if (!class_id) throw CannotCreateObject();
  void* created = nullptr;
  const HRESULT result =
      ::CoCreateInstance(*class_id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IDispatch), &created);
  if (result == CLASS_E_NOTLICENSED) throw ComError(result);
  if (FAILED(result)) throw CannotCreateObject();
  return ComObject(ComPointer<IDispatch>(static_cast<IDispatch*>(created)));
}

Variant ComObject::Call(const std::wstring& name, Arguments arguments) const {
  return Invoke(IdentifierOf(name), kMethod, arguments);
}

Variant ComObject::Get(const std::wstring& name, Arguments arguments) const {
  return Invoke(IdentifierOf(name), kPropertyGet, arguments);
}

void ComObject::Put(const std::wstring& name, Variant value) const {
  Invoke(IdentifierOf(name), kPropertyPut, {std::move(value)});
}

Variant ComObject::Call(DISPID member, Arguments arguments) const {
  return Invoke(member, kMethod, arguments);
}

Variant ComObject::Get(DISPID member, Arguments arguments) const {
  return Invoke(member, kPropertyGet, arguments);
}

void ComObject::Put(DISPID member, Arguments arguments) const {
  Invoke(member, kPropertyPut, arguments);
}

DISPID ComObject::IdentifierOf(const std::wstring& name) const {
  const auto known = identifiers_.find(name);
  if (known != identifiers_.end()) return known->second;
  std::wstring changeable = name;
  wchar_t* names = changeable.data();
  DISPID identifier = DISPID_UNKNOWN;
  CheckResult(object_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &identifier));
  identifiers_.emplace(name, identifier);
  return identifier;
}

Variant ComObject::Invoke(DISPID member, WORD kind, Arguments arguments) const {
  std::vector<VARIANT> last_to_first;  // owned by `arguments`
  for (const Variant& argument : arguments)
    last_to_first.insert(last_to_first.begin(), argument.Get());
  DISPID put_value = DISPID_PROPERTYPUT;
  DISPPARAMS parameters{.rgvarg = last_to_first.data(),
                        .rgdispidNamedArgs = nullptr,
                        .cArgs = static_cast<UINT>(last_to_first.size()),
                        .cNamedArgs = 0};
  if (kind == kPropertyPut) {
    parameters.rgdispidNamedArgs = &put_value;
    parameters.cNamedArgs = 1;
  }
  Variant returned;
  EXCEPINFO details{};
  const HRESULT result =
      object_->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters,
                      kind == kPropertyPut ? nullptr : returned.Receive(), &details, nullptr);
  if (result == DISP_E_EXCEPTION) throw ComException(details);
  CheckResult(result);
  return returned;
}

}  // namespace pxscheduler
