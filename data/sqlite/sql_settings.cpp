#include "data/sqlite/sql_settings.h"

#include <charconv>
#include <limits>
#include <string>
#include <system_error>

namespace pxscheduler {
namespace {

// -1, or a number of milliseconds that 31 bits hold.
std::int64_t TakeLockTimeout(SqlCursor& cursor) {
  const bool is_negative = cursor.TakeSymbol("-");
  const std::string& number = cursor.Peek().text;
  std::int64_t value = 0;
  const char* const end = number.data() + number.size();
  const auto result = std::from_chars(number.data(), end, value);
  if (cursor.Peek().kind != SqlTokenKind::kNumber || result.ec != std::errc{} ||
      result.ptr != end || (is_negative && value != 1) ||
      value > std::numeric_limits<std::int32_t>::max())
    cursor.RaiseSyntaxError();
  cursor.Advance();
  return is_negative ? -1 : value;
}

}  // namespace

std::optional<std::int64_t> TakeSettings(SqlCursor& cursor) {
  std::optional<std::int64_t> lock_timeout;
  while (true) {
    if (cursor.TakeSymbol(";")) continue;
    if (!cursor.TakeWord("SET")) return lock_timeout;
    if (cursor.TakeWord("LOCK_TIMEOUT")) {
      lock_timeout = TakeLockTimeout(cursor);
    } else if (cursor.TakeWord("TRANSACTION")) {
      cursor.RequireWord("ISOLATION");
      cursor.RequireWord("LEVEL");
      const bool is_one_word = cursor.TakeWord("SNAPSHOT") || cursor.TakeWord("SERIALIZABLE");
      if (!is_one_word) cursor.Advance(2);  // "READ COMMITTED"
    } else {
      // A row limit or another first day of the week would change what the query means.
      if (cursor.SeesWord("DATEFIRST") || cursor.SeesWord("ROWCOUNT") ||
          cursor.Peek().kind != SqlTokenKind::kName || cursor.Peek().text.starts_with('@'))
        cursor.RaiseSyntaxError();
      cursor.Advance();
      if (!cursor.TakeWord("ON") && !cursor.TakeWord("OFF")) cursor.RaiseSyntaxError();
    }
  }
}

}  // namespace pxscheduler
