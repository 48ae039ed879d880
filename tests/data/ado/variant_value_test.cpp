#include "data/ado/variant_value.h"

#include <gtest/gtest.h>

#include "platform/runtime_error.h"
#include "tests/support/raised_by.h"

namespace pxscheduler {
namespace {

using std::chrono::hours;
using std::chrono::seconds;
using std::chrono::year;

// A value of the type that the system makes of a text.
Variant Converted(VARTYPE type, const std::wstring& text) {
  const Variant source(text);
  Variant converted;
  EXPECT_EQ(::VariantChangeTypeEx(converted.Receive(), const_cast<VARIANT*>(&source.Get()),
                                  LOCALE_INVARIANT, 0, type),
            S_OK);
  return converted;
}

TEST(VariantValueTest, ReadsEveryTypeOfAField) {
  const struct {
    VARTYPE type;
    std::wstring text;
    Value value;
  } cases[] = {
      {VT_EMPTY, L"", {}},
      {VT_NULL, L"", {}},
      {VT_BOOL, L"True", true},
      {VT_BOOL, L"False", false},
      {VT_I1, L"-128", std::int64_t{-128}},
      {VT_I2, L"-32768", std::int64_t{-32768}},
      {VT_I4, L"-2147483648", std::int64_t{INT32_MIN}},
      {VT_INT, L"-1", std::int64_t{-1}},
      {VT_I8, L"-9223372036854775808", INT64_MIN},
      {VT_UI1, L"255", std::int64_t{255}},
      {VT_UI2, L"65535", std::int64_t{65535}},
      {VT_UI4, L"4294967295", std::int64_t{UINT32_MAX}},
      {VT_UINT, L"4294967295", std::int64_t{UINT32_MAX}},
      {VT_UI8, L"9223372036854775807", INT64_MAX},
      {VT_UI8, L"18446744073709551615", Decimal{"18446744073709551615"}},
      {VT_R4, L"0.1", 0.1F},
      {VT_R8, L"0.1", 0.1},
      {VT_CY, L"-12.5", Decimal{"-12.5000"}},
      {VT_DECIMAL, L"0", Decimal{"0"}},
      {VT_DECIMAL, L"-0.05", Decimal{"-0.05"}},
      {VT_DECIMAL, L"79228162514264337593543950335", Decimal{"79228162514264337593543950335"}},
      {VT_BSTR, L"Zo\u00EB", L"Zo\u00EB"},
  };
  for (const auto& [type, text, value] : cases) {
    Variant field;
    if (type <= VT_NULL)
      V_VT(field.Receive()) = type;
    else
      field = Converted(type, text);
    EXPECT_EQ(ValueOf(field), value) << type << ' ' << testing::PrintToString(text);
  }
}

TEST(VariantValueTest, ReadsDatesToTheSecond) {
  const struct {
    double serial;
    DateTime moment;
  } cases[] = {
      {46342.75, {year{2026} / 11 / 16, hours{18}}},
      {46342 + 41.6 / 86400, {year{2026} / 11 / 16, seconds{42}}},
      {-1.25, {year{1899} / 12 / 29, hours{6}}},
  };
  Variant field;
  VARIANT* held = field.Receive();
  V_VT(held) = VT_DATE;
  for (const auto& [serial, moment] : cases) {
    V_DATE(held) = serial;
    EXPECT_EQ(ValueOf(field), Value(moment)) << serial;
  }
  V_DATE(held) = 1e9;
  EXPECT_EQ(RaisedBy([&] { ValueOf(field); }).number, 5);
}

TEST(VariantValueTest, WritesBytesInHexadecimal) {
  Variant field;
  VARIANT* held = field.Receive();
  V_VT(held) = VT_ARRAY | VT_UI1;
  V_ARRAY(held) = ::SafeArrayCreateVector(VT_UI1, 0, 2);
  const unsigned char bytes[] = {0x00, 0x5F};
  for (LONG at = 0; at < 2; ++at)
    ::SafeArrayPutElement(V_ARRAY(held), &at, const_cast<unsigned char*>(&bytes[at]));
  EXPECT_EQ(ValueOf(field), Value(L"005F"));
  V_VT(field.Receive()) = VT_ERROR;
  EXPECT_EQ(RaisedBy([&] { ValueOf(field); }).number, 13);
}

}  // namespace
}  // namespace pxscheduler
