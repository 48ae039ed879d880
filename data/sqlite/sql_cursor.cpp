#include "data/sqlite/sql_cursor.h"

#include <algorithm>

#include "text/utf8.h"

namespace pxscheduler {

SqlCursor::SqlCursor(std::string_view sql) : sql_(sql) {
  std::string unclosed;
  tokens_ = ReadSqlTokens(sql, unclosed);
  if (!unclosed.empty())
    throw SqlSyntaxError{"Unclosed quotation mark after the character string '" +
                         tokens_[tokens_.size() - 2].text + "'."};
}

const SqlToken& SqlCursor::Peek(std::size_t ahead) const {
  return tokens_[std::min(at_ + ahead, tokens_.size() - 1)];
}

bool SqlCursor::SeesSymbol(std::string_view symbol, std::size_t ahead) const {
  return Peek(ahead).kind == SqlTokenKind::kSymbol && Peek(ahead).text == symbol;
}

bool SqlCursor::SeesWord(std::string_view word, std::size_t ahead) const {
  return Peek(ahead).kind == SqlTokenKind::kName && UpperAscii(Peek(ahead).text) == word;
}

void SqlCursor::Advance(std::size_t count) { at_ = std::min(at_ + count, tokens_.size() - 1); }

SqlToken SqlCursor::Take() {
  SqlToken token = Peek();
  Advance();
  return token;
}

bool SqlCursor::TakeSymbol(std::string_view symbol) {
  const bool sees = SeesSymbol(symbol);
  if (sees) Advance();
  return sees;
}

bool SqlCursor::TakeWord(std::string_view word) {
  const bool sees = SeesWord(word);
  if (sees) Advance();
  return sees;
}

void SqlCursor::RequireSymbol(std::string_view symbol) {
  if (!TakeSymbol(symbol)) RaiseSyntaxError();
}

void SqlCursor::RequireWord(std::string_view word) {
  if (!TakeWord(word)) RaiseSyntaxError();
}

void SqlCursor::SkipParentheses() {
  int depth = 0;
  do {
    if (SeesSymbol("(")) ++depth;
    if (SeesSymbol(")")) --depth;
    Advance();
  } while (depth > 0 && !IsAtEnd());
}

void SqlCursor::RaiseSyntaxError() const {
  const SqlToken& near = IsAtEnd() && at_ > 0 ? tokens_[at_ - 1] : Peek();
  throw SqlSyntaxError{"Incorrect syntax near '" + near.text + "'" + PlaceOf(near.place) + "."};
}

std::string SqlCursor::PlaceOf(std::size_t place) const {
  const std::string_view before = std::string_view(sql_).substr(0, place);
  const std::size_t line_start = before.rfind('\n') + 1;  // 0 on the first line
  return " (line " + std::to_string(std::ranges::count(before, '\n') + 1) + ", character " +
         std::to_string(FromUtf8(before.substr(line_start)).size() + 1) + ")";
}

}  // namespace pxscheduler
