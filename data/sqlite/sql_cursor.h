#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "data/sqlite/sql_token.h"

namespace pxscheduler {

// A statement that cannot be translated, with SQL Server's text.
struct SqlSyntaxError {
  std::string description;
};

// A place in a statement's tokens, which never goes past the last one, kEnd. Words are given in
// upper case and are found in any case, but not in quotes.
class SqlCursor {
 public:
  // Raises SqlSyntaxError for a string or a quoted name that is never closed.
  explicit SqlCursor(std::string_view sql);

  const SqlToken& Peek(std::size_t ahead = 0) const;
  bool IsAtEnd() const { return Peek().kind == SqlTokenKind::kEnd; }
  bool SeesSymbol(std::string_view symbol, std::size_t ahead = 0) const;
  bool SeesWord(std::string_view word, std::size_t ahead = 0) const;

  void Advance(std::size_t count = 1);
  // The token, behind which the cursor then stands.
  SqlToken Take();
  // Go on only where they see what they are after.
  bool TakeSymbol(std::string_view symbol);
  bool TakeWord(std::string_view word);
  // Raise SqlSyntaxError where it is not there.
  void RequireSymbol(std::string_view symbol);
  void RequireWord(std::string_view word);
  // From the "(" that is seen behind the ")" that closes it.
  void SkipParentheses();

  // Of the token that is seen: " (line 2, character 7)", both counted from 1.
  std::string Place() const { return PlaceOf(Peek().place); }
  std::string PlaceOf(std::size_t place) const;
  [[noreturn]] void RaiseSyntaxError() const;

 private:
  std::string sql_;
  std::vector<SqlToken> tokens_;
  std::size_t at_ = 0;
};

}  // namespace pxscheduler
