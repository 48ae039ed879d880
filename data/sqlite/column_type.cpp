#include "data/sqlite/column_type.h"

#include <array>
#include <string>
#include <utility>

#include "data/sqlite/sql_token.h"

namespace pxscheduler {

ColumnType ColumnTypeOf(std::string_view declared_type) {
  static constexpr std::array<std::pair<std::string_view, ColumnType>, 13> kBeginnings = {{
      {"DATE", ColumnType::kDateTime},
      {"SMALLDATETIME", ColumnType::kDateTime},
      {"TIMESTAMP", ColumnType::kDateTime},
      {"BIT", ColumnType::kBoolean},
      {"BOOL", ColumnType::kBoolean},
      {"DEC", ColumnType::kDecimal},
      {"NUMERIC", ColumnType::kDecimal},
      {"MONEY", ColumnType::kDecimal},
      {"SMALLMONEY", ColumnType::kDecimal},
      {"REAL", ColumnType::kFloating},
      {"FLOAT", ColumnType::kFloating},
      {"DOUBLE", ColumnType::kFloating},
      {"POINT", ColumnType::kText},  // not an integer, whatever it ends in
  }};
  const std::string type = UpperAscii(declared_type);
  for (const auto& [beginning, meaning] : kBeginnings)
    if (type.starts_with(beginning)) return meaning;
  return type.find("INT") != std::string::npos ? ColumnType::kInteger : ColumnType::kText;
}

}  // namespace pxscheduler
