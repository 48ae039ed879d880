#include "data/sqlite/sql_token.h"

#include <algorithm>
#include <array>

namespace pxscheduler {
namespace {

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

// Every byte of a character outside ASCII may stand in a name.
bool IsNameCharacter(char character) {
  return IsDigit(character) || (character >= 'A' && character <= 'Z') ||
         (character >= 'a' && character <= 'z') || character == '_' || character == '@' ||
         character == '#' || character == '$' || static_cast<unsigned char>(character) >= 0x80;
}

class SqlReader {
 public:
  explicit SqlReader(std::string_view sql) : sql_{sql} {}

  std::vector<SqlToken> Read() {
    for (SkipBlanks(); at_ < sql_.size(); SkipBlanks()) {
      const std::size_t place = at_;
      tokens_.push_back(Next());
      tokens_.back().place = place;
    }
    tokens_.emplace_back().place = sql_.size();
    return std::move(tokens_);
  }

  const std::string& Unclosed() const { return unclosed_; }

 private:
  bool Sees(std::string_view text) const { return sql_.substr(at_).starts_with(text); }

  void SkipBlanks() {
    while (at_ < sql_.size())
      if (static_cast<unsigned char>(sql_[at_]) <= ' ')
        ++at_;
      else if (Sees("\xC2\xA0"))  // a no-break space, which word processors leave behind
        at_ += 2;
      else if (Sees("--"))
        at_ = std::min(sql_.find('\n', at_), sql_.size());
      else if (Sees("/*"))
        SkipComment();
      else
        return;
  }

  void SkipComment() {
    int depth = 0;
    do {
      if (Sees("/*")) {
        ++depth;
        at_ += 2;
      } else if (Sees("*/")) {
        --depth;
        at_ += 2;
      } else {
        ++at_;
      }
    } while (depth > 0 && at_ < sql_.size());
    at_ = std::min(at_, sql_.size());
  }

  SqlToken Next() {
    const char first = sql_[at_];
    if ((first == 'N' || first == 'n') && at_ + 1 < sql_.size() && sql_[at_ + 1] == '\'') {
      ++at_;
      return Quoted(SqlTokenKind::kString, '\'', '\'');
    }
    if (first == '\'') return Quoted(SqlTokenKind::kString, '\'', '\'');
    if (first == '"') return Quoted(SqlTokenKind::kQuotedName, '"', '"');
    if (first == '[') return Quoted(SqlTokenKind::kQuotedName, '[', ']');
    if (IsDigit(first) || (first == '.' && at_ + 1 < sql_.size() && IsDigit(sql_[at_ + 1])))
      return Number();
    if (IsNameCharacter(first)) return Name();
    return Symbol();
  }

  // The closing mark written twice stands for itself.
  SqlToken Quoted(SqlTokenKind kind, char opening, char closing) {
    SqlToken token{kind, {}, 0};
    for (++at_; at_ < sql_.size(); ++at_) {
      if (sql_[at_] == closing) {
        ++at_;
        if (at_ >= sql_.size() || sql_[at_] != closing) return token;
      }
      token.text += sql_[at_];
    }
    unclosed_ = opening;
    return token;
  }

  SqlToken Name() {
    const std::size_t first = at_;
    while (at_ < sql_.size() && IsNameCharacter(sql_[at_]) && !Sees("\xC2\xA0")) ++at_;
    return {SqlTokenKind::kName, std::string{sql_.substr(first, at_ - first)}, 0};
  }

  SqlToken Number() {
    const std::size_t first = at_;
    const auto skip_digits = [this] {
      while (at_ < sql_.size() && IsDigit(sql_[at_])) ++at_;
    };
    if (Sees("0x") || Sees("0X")) {
      at_ += 2;
      while (at_ < sql_.size() && IsNameCharacter(sql_[at_])) ++at_;
      return {SqlTokenKind::kNumber, std::string{sql_.substr(first, at_ - first)}, 0};
    }
    skip_digits();
    if (Sees(".")) {
      ++at_;
      skip_digits();
    }
    if (Sees("e") || Sees("E")) {
      const std::size_t mark = at_++;
      if (Sees("+") || Sees("-")) ++at_;
      const std::size_t digits = at_;
      skip_digits();
      if (at_ == digits) at_ = mark;
    }
    return {SqlTokenKind::kNumber, std::string{sql_.substr(first, at_ - first)}, 0};
  }

  SqlToken Symbol() {
    static constexpr std::array<std::string_view, 5> kPairs = {"<=", ">=", "<>", "!=", "||"};
    for (const std::string_view pair : kPairs) {
      if (!Sees(pair)) continue;
      at_ += pair.size();
      return {SqlTokenKind::kSymbol, std::string{pair}, 0};
    }
    if (Sees("!<") || Sees("!>")) {
      at_ += 2;
      return {SqlTokenKind::kSymbol, sql_[at_ - 1] == '<' ? ">=" : "<=", 0};
    }
    return {SqlTokenKind::kSymbol, std::string{sql_[at_++]}, 0};
  }

  std::string_view sql_;
  std::size_t at_ = 0;
  std::vector<SqlToken> tokens_;
  std::string unclosed_;
};

std::string Enclose(std::string_view text, char quote) {
  std::string result{quote};
  for (const char character : text) {
    if (character == quote) result += quote;
    result += character;
  }
  return result += quote;
}

}  // namespace

std::vector<SqlToken> ReadSqlTokens(std::string_view sql, std::string& unclosed) {
  SqlReader reader{sql};
  std::vector<SqlToken> tokens = reader.Read();
  unclosed = reader.Unclosed();
  return tokens;
}

std::string SqlStringLiteral(std::string_view text) { return Enclose(text, '\''); }

std::string SqlQuotedName(std::string_view name) { return Enclose(name, '"'); }

std::string UpperAscii(std::string_view text) {
  std::string upper{text};
  for (char& character : upper)
    if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
  return upper;
}

}  // namespace pxscheduler
