#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/civil_time.h"

namespace pxscheduler {

// Keys that compare as their values do, byte by byte (unsigned, a prefix first): Null, then numbers
// by value, whatever their type, then dates, then text in lower case by code point. Each function
// appends one key to `out`.
void AppendNullKey(std::string& out);
// The number as std::to_chars writes it: a sign, digits, a point and an exponent, or "inf".
void AppendNumberKey(std::string_view number, std::string& out);
void AppendDateKey(const DateTime& value, std::string& out);
void AppendTextKey(std::string_view utf8, std::string& out);

}  // namespace pxscheduler
