#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace pxscheduler {

enum class SqlTokenKind {
  kName,        // a word that nothing quotes: a keyword, a table, a function, @variable
  kQuotedName,  // [name] or "name"
  kString,      // 'text' or N'text'
  kNumber,
  kSymbol,  // an operator or a punctuation mark, ">=" and its kind as one
  kEnd
};

// A piece of a statement. A quoted name or a string is held without its quotes, `text` of a symbol
// as it is written in SQLite ("!<" is ">=").
struct SqlToken {
  SqlTokenKind kind = SqlTokenKind::kEnd;
  std::string text;
  std::size_t place = 0;  // of its first byte in the text, 0-based
};

// Takes Transact-SQL apart; the last token is kEnd. Blanks and comments (which nest) are dropped. A
// string or a quoted name that is never closed ends with the text; then `unclosed` is its opening
// mark, and empty otherwise.
std::vector<SqlToken> ReadSqlTokens(std::string_view sql, std::string& unclosed);

// Text as a string literal, and a name as a quoted name.
std::string SqlStringLiteral(std::string_view text);
std::string SqlQuotedName(std::string_view name);

// ASCII alone, which is what keywords and functions are written in.
std::string UpperAscii(std::string_view text);

}  // namespace pxscheduler
