#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "data/sqlite/sql_type.h"

namespace pxscheduler {

// An expression in SQLite's SQL.
struct WrittenExpression {
  std::string sql;
  SqlKind kind = SqlKind::kUnknown;
  bool is_condition = false;
  bool is_stored = false;      // a date as a column holds it, not in milliseconds
  bool is_searchable = false;  // SqlColumn::is_searchable
  bool is_constant = true;     // no column and no sub-query in it
  bool is_aggregate = false;   // an aggregate in it
  std::string loose_column;    // one in it that is neither aggregated nor grouped by; "" for none
  std::string collation;       // that it names; "" for none
  std::optional<std::string> literal;  // the text that it is
};

// The kind as the number that functions take.
std::string NumberOf(SqlKind kind);

// function(arguments), made of these parts.
std::string WrittenCall(std::string_view function, std::initializer_list<std::string> arguments);

// Adds what a part of an expression brings along but its SQL: columns, aggregates, a collation.
void TakePart(WrittenExpression& whole, const WrittenExpression& part);

// An expression of the kind, made of these parts.
WrittenExpression MadeOf(std::string sql, SqlKind kind,
                         std::initializer_list<const WrittenExpression*> parts);

// The value converted to the kind, dates in milliseconds; to kUnknown, a date as a text that sorts.
// Raises SqlSyntaxError for kinds that never meet, and SqlFunctionError for a literal that cannot
// be converted.
WrittenExpression ConvertedTo(const WrittenExpression& value, SqlKind kind);

// As a result or a sub-query's column holds it: dates as text.
std::string AsColumn(const WrittenExpression& value);
// What equal values share: for GROUP BY, DISTINCT and ORDER BY.
std::string AsKey(const WrittenExpression& value);

// `comparison` is "=" or another of SQLite's operators. The first operand may be looked up in an
// index.
WrittenExpression Compared(std::string_view comparison, const WrittenExpression& left,
                           const WrittenExpression& right);

}  // namespace pxscheduler
