#include "data/ado/variant_value.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

#include "platform/civil_time.h"
#include "platform/com/com_error.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

DateTime DateTimeOf(DATE date) {
  SYSTEMTIME parts;
  if (::VariantTimeToSystemTime(date, &parts) == FALSE) throw InvalidProcedureCall();
  const std::chrono::year_month_day day{std::chrono::year{parts.wYear},
                                        std::chrono::month{parts.wMonth},
                                        std::chrono::day{parts.wDay}};
  return {std::chrono::sys_days{day}, std::chrono::hours{parts.wHour} +
                                          std::chrono::minutes{parts.wMinute} +
                                          std::chrono::seconds{parts.wSecond}};
}

// A whole number of 96 bits divided by a power of ten.
Decimal DecimalOf(const DECIMAL& decimal) {
  std::array<std::uint32_t, 3> most_significant_first{decimal.Hi32, decimal.Mid32, decimal.Lo32};
  std::string reversed;
  bool is_zero = false;
  while (!is_zero || reversed.size() <= decimal.scale) {
    std::uint64_t remainder = 0;
    is_zero = true;
    for (std::uint32_t& part : most_significant_first) {
      const std::uint64_t dividend = remainder << 32 | part;
      part = static_cast<std::uint32_t>(dividend / 10);
      remainder = dividend % 10;
      is_zero = is_zero && part == 0;
    }
    if (decimal.scale != 0 && reversed.size() == decimal.scale) reversed += '.';
    reversed += static_cast<char>('0' + remainder);
  }
  if (decimal.sign == DECIMAL_NEG) reversed += '-';
  return {{reversed.rbegin(), reversed.rend()}};
}

// Currency is a whole number of ten-thousandths.
Decimal DecimalOf(const CY& currency) {
  DECIMAL decimal;
  CheckResult(::VarDecFromCy(currency, &decimal));
  return DecimalOf(decimal);
}

Value WholeNumberOf(std::uint64_t number) {
  if (number <= INT64_MAX) return static_cast<std::int64_t>(number);
  return Decimal{std::to_string(number)};
}

// Lets the bytes of an array be read until the end of the scope.
class ArrayAccess {
 public:
  explicit ArrayAccess(SAFEARRAY& array) : array_(array) {
    void* data = nullptr;
    CheckResult(::SafeArrayAccessData(&array_, &data));
    bytes_ = static_cast<const unsigned char*>(data);
  }
  ArrayAccess(const ArrayAccess&) = delete;
  ArrayAccess& operator=(const ArrayAccess&) = delete;
  ~ArrayAccess() { ::SafeArrayUnaccessData(&array_); }

  const unsigned char* Bytes() const { return bytes_; }

 private:
  SAFEARRAY& array_;
  const unsigned char* bytes_ = nullptr;
};

std::wstring HexadecimalOf(SAFEARRAY& array) {
  constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  if (::SafeArrayGetDim(&array) != 1) throw TypeMismatch();
  const ArrayAccess access(array);
  std::wstring text;
  for (ULONG i = 0; i < array.rgsabound[0].cElements; ++i) {
    text += kDigits[access.Bytes()[i] >> 4];
    text += kDigits[access.Bytes()[i] & 0xF];
  }
  return text;
}

}  // namespace

Value ValueOf(const Variant& variant) {
  const VARIANT& held = variant.Get();
  switch (V_VT(&held)) {
    case VT_EMPTY:
    case VT_NULL:
      return std::monostate{};
    case VT_BOOL:
      return V_BOOL(&held) != VARIANT_FALSE;
    case VT_I1:
      return std::int64_t{static_cast<signed char>(V_I1(&held))};
    case VT_I2:
      return std::int64_t{V_I2(&held)};
    case VT_I4:
      return std::int64_t{V_I4(&held)};
    case VT_INT:
      return std::int64_t{V_INT(&held)};
    case VT_I8:
      return std::int64_t{V_I8(&held)};
    case VT_UI1:
      return std::int64_t{V_UI1(&held)};
    case VT_UI2:
      return std::int64_t{V_UI2(&held)};
    case VT_UI4:
      return std::int64_t{V_UI4(&held)};
    case VT_UINT:
      return std::int64_t{V_UINT(&held)};
    case VT_UI8:
      return WholeNumberOf(V_UI8(&held));
    case VT_R4:
      return V_R4(&held);
    case VT_R8:
      return V_R8(&held);
    case VT_CY:
      return DecimalOf(V_CY(&held));
    case VT_DECIMAL:
      return DecimalOf(V_DECIMAL(&held));
    case VT_DATE:
      return DateTimeOf(V_DATE(&held));
    case VT_BSTR:
      return variant.ToText();
    case VT_ARRAY | VT_UI1:
      return HexadecimalOf(*V_ARRAY(&held));
    default:
      throw TypeMismatch();
  }
}

}  // namespace pxscheduler
