#pragma once

#include <initializer_list>
#include <string_view>

#include "data/sqlite/sql_token.h"

namespace pxscheduler {

// Words are in upper case.
bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> words);
// Never a column, a table or a function, apart from LEFT and RIGHT before a parenthesis.
bool IsKeyword(std::string_view word);
// What may stand in WITH (...) behind a table.
bool IsTableHint(std::string_view word);
bool IsDateType(std::string_view word);
bool IsComparison(const SqlToken& token);

}  // namespace pxscheduler
