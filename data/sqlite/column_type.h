#pragma once

#include <string_view>

namespace pxscheduler {

// What a column's declared type says about its values.
enum class ColumnType { kText, kInteger, kBoolean, kDecimal, kFloating, kDateTime };

// Of the type as the schema declares it ("DECIMAL(10,2)"), compared without case. A column without
// a type, or of any other one, holds text or whatever the engine stores in it.
ColumnType ColumnTypeOf(std::string_view declared_type);

}  // namespace pxscheduler
