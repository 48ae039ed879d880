#pragma once

#include <oaidl.h>
#include <oleauto.h>
#include <windows.h>

#include <cstdint>
#include <string>
#include <utility>

namespace pxscheduler {

// Owns one automation value.
class Variant {
 public:
  Variant() { ::VariantInit(&value_); }
  // Raises OutOfMemory.
  explicit Variant(const std::wstring& text);
  explicit Variant(std::int16_t number);
  explicit Variant(std::int32_t number);
  // Takes a reference of its own to the object.
  explicit Variant(IDispatch& object);
  // Stands for an optional argument that is left out.
  static Variant Omitted();
  // Hands a text over in such a way that the callee may replace it; `text` must hold one and
  // outlive the result.
  static Variant ReferenceToText(Variant& text);

  Variant(Variant&& other) noexcept : value_(std::exchange(other.value_, Empty())) {}
  Variant& operator=(Variant&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  ~Variant() { ::VariantClear(&value_); }

  // For the system's functions. What Get gives must not be freed.
  const VARIANT& Get() const { return value_; }
  VARIANT* Receive() {
    ::VariantClear(&value_);
    return &value_;
  }

  // The value converted as the system does. Raise TypeMismatch (13) or Overflow (6) where it cannot
  // be.
  std::int32_t ToInteger() const;
  bool ToBoolean() const;
  std::wstring ToText() const;

 private:
  static VARIANT Empty() {
    VARIANT empty;
    ::VariantInit(&empty);
    return empty;
  }
  Variant ConvertTo(VARTYPE type) const;

  VARIANT value_;
};

}  // namespace pxscheduler
