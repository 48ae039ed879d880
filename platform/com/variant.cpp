#include "platform/com/variant.h"

#include <limits>

#include "platform/com/com_error.h"
#include "platform/runtime_error.h"

namespace pxscheduler {

Variant::Variant(const std::wstring& text) : Variant() {
  if (text.size() > std::numeric_limits<UINT>::max() / sizeof(wchar_t)) throw OutOfMemory();
  V_BSTR(&value_) = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  if (V_BSTR(&value_) == nullptr) throw OutOfMemory();
  V_VT(&value_) = VT_BSTR;
}

Variant::Variant(std::int16_t number) : Variant() {
  V_VT(&value_) = VT_I2;
  V_I2(&value_) = number;
}

Variant::Variant(std::int32_t number) : Variant() {
  V_VT(&value_) = VT_I4;
  V_I4(&value_) = number;
}

Variant::Variant(IDispatch& object) : Variant() {
  object.AddRef();
  V_VT(&value_) = VT_DISPATCH;
  V_DISPATCH(&value_) = &object;
}

Variant Variant::Omitted() {
  Variant omitted;
  V_VT(&omitted.value_) = VT_ERROR;
  V_ERROR(&omitted.value_) = DISP_E_PARAMNOTFOUND;
  return omitted;
}

Variant Variant::ReferenceToText(Variant& text) {
  Variant reference;
  V_VT(&reference.value_) = VT_BSTR | VT_BYREF;
  V_BSTRREF(&reference.value_) = &V_BSTR(&text.value_);
  return reference;
}

std::int32_t Variant::ToInteger() const {
  const Variant number = ConvertTo(VT_I4);
  return V_I4(&number.value_);
}

bool Variant::ToBoolean() const {
  const Variant truth = ConvertTo(VT_BOOL);
  return V_BOOL(&truth.value_) != VARIANT_FALSE;
}

std::wstring Variant::ToText() const {
  const Variant text = ConvertTo(VT_BSTR);
  const BSTR characters = V_BSTR(&text.value_);
  return {characters, characters + ::SysStringLen(characters)};
}

Variant Variant::ConvertTo(VARTYPE type) const {
  VARIANT source = value_;  // still owned here; the system's function reads it alone
  Variant converted;
  CheckResult(::VariantChangeType(&converted.value_, &source, 0, type));
  return converted;
}

}  // namespace pxscheduler
