#include "data/sqlite/sql_words.h"

#include <algorithm>
#include <array>

namespace pxscheduler {

bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool IsKeyword(std::string_view word) {
  static constexpr auto kKeywords = std::to_array<std::string_view>(
      {"ALL",       "AND",    "AS",     "ASC",      "BETWEEN", "BY",    "CASE",   "COLLATE",
       "CROSS",     "DELETE", "DESC",   "DISTINCT", "ELSE",    "END",   "ESCAPE", "EXCEPT",
       "EXISTS",    "FROM",   "FULL",   "GROUP",    "HAVING",  "IN",    "INNER",  "INSERT",
       "INTERSECT", "INTO",   "IS",     "JOIN",     "LEFT",    "LIKE",  "NOT",    "NULL",
       "ON",        "OR",     "ORDER",  "OUTER",    "OVER",    "RIGHT", "SELECT", "SET",
       "THEN",      "UNION",  "UPDATE", "USING",    "VALUES",  "WHEN",  "WHERE",  "WITH"});
  return std::find(kKeywords.begin(), kKeywords.end(), word) != kKeywords.end();
}

bool IsTableHint(std::string_view word) {
  return IsOneOf(word, {"NOLOCK", "READUNCOMMITTED", "READCOMMITTED", "READPAST", "HOLDLOCK",
                        "NOWAIT", "ROWLOCK", "PAGLOCK", "TABLOCK", "UPDLOCK", "SERIALIZABLE",
                        "REPEATABLEREAD", "READCOMMITTEDLOCK"});
}

bool IsComparison(const SqlToken& token) {
  return token.kind == SqlTokenKind::kSymbol &&
         IsOneOf(token.text, {"=", "<", ">", "<=", ">=", "<>", "!="});
}

bool IsDateType(std::string_view word) {
  return IsOneOf(word, {"DATE", "DATETIME", "DATETIME2", "SMALLDATETIME"});
}

}  // namespace pxscheduler
