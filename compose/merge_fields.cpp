#include "compose/merge_fields.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "config/helper_library.h"
#include "platform/text.h"
#include "platform/value.h"

namespace pxscheduler {
namespace {

constexpr std::array<std::wstring_view, kMergeTokenCount> kTokens = {
    L"[Number]",      L"[Prefix]",       L"[First Name]",  L"[Last Name]",     L"[Full Name]",
    L"[Salutation]",  L"[Phone Number]", L"[Fax Number]",  L"[Email Address]", L"[Birthday]",
    L"[Anniversary]", L"[Travel Date]",  L"[Return Date]", L"[Start Date]",    L"[Last Date]",
};
constexpr std::size_t kFullName = 4;

// The token that begins at `position`, or kMergeTokenCount.
std::size_t TokenAt(std::wstring_view text, std::size_t position) {
  const std::wstring_view rest = text.substr(position);
  const auto* token =
      std::find_if(kTokens.begin(), kTokens.end(),
                   [&](std::wstring_view candidate) { return rest.starts_with(candidate); });
  return static_cast<std::size_t>(token - kTokens.begin());
}

bool HoldsOpeningBracket(const std::wstring& value) {
  return value.find(L'[') != std::wstring::npos;
}

TextPieces MergeInOnePass(const MergeTemplate& merge_template, const MergeValues& values) {
  const std::wstring_view text = merge_template.text;
  TextPieces pieces;
  pieces.reserve(2 * merge_template.tokens.size() + 1);
  std::size_t copied = 0;
  for (const MergeToken& token : merge_template.tokens) {
    pieces.push_back({text.substr(copied, token.position - copied), true});
    pieces.push_back({values[token.token], false});
    copied = token.position + kTokens[token.token].size();
  }
  pieces.push_back({text.substr(copied), true});
  return pieces;
}

}  // namespace

MergeTemplate PrepareMergeTemplate(const CodePage& ansi, const std::wstring& text) {
  MergeTemplate prepared{ansi.RoundTrip(text), {}, false};
  bool bracket_is_open = false;
  for (std::size_t position = 0; position < prepared.text.size(); ++position) {
    if (prepared.text[position] == L']') bracket_is_open = false;
    if (prepared.text[position] != L'[') continue;
    const std::size_t token = TokenAt(prepared.text, position);
    if (token == kMergeTokenCount) {
      bracket_is_open = true;
      continue;
    }
    prepared.tokens.push_back({position, token});
    prepared.values_may_complete_a_token |= bracket_is_open;
    position += kTokens[token].size() - 1;
  }
  return prepared;
}

MergeValues ReadMergeValues(const Regional& regional, const Recordset& result_set,
                            const std::wstring& email) {
  const auto read = [&](std::wstring_view column) {
    return TextOf(regional, result_set.Fields(column));
  };
  std::wstring number = read(L"ProfileNumber");
  std::wstring prefix = read(L"Prefix");
  std::wstring first_name = read(L"FirstName");
  std::wstring last_name = read(L"LastName");
  std::wstring full_name = read(L"FullName");
  std::wstring salutation = read(L"Attention");
  std::wstring phone = read(L"Phone");
  std::wstring fax = read(L"Fax");
  std::wstring birthday = FormatMonthDay(regional, read(L"BirthDate"));
  std::wstring anniversary = FormatMonthDay(regional, read(L"AnniversaryDate"));
  std::wstring travel_date = FormatShortDate(regional, read(L"TravelDate"));
  std::wstring return_date = FormatShortDate(regional, read(L"ReturnDate"));
  std::wstring start_date = FormatShortDate(regional, read(L"FirstDate"));
  std::wstring last_date = FormatShortDate(regional, read(L"LastDate"));
  if (IsBlank(salutation)) salutation = full_name;
  return {std::move(number),      std::move(prefix),      std::move(first_name),
          std::move(last_name),   std::move(full_name),   std::move(salutation),
          std::move(phone),       std::move(fax),         email,
          std::move(birthday),    std::move(anniversary), std::move(travel_date),
          std::move(return_date), std::move(start_date),  std::move(last_date)};
}

const std::wstring& FullNameOf(const MergeValues& values) { return values[kFullName]; }

MergeValues InCodePage(const CodePage& ansi, MergeValues values) {
  for (std::wstring& value : values) value = ansi.RoundTrip(std::move(value));
  return values;
}

MergedText Merge(const MergeTemplate& merge_template, const MergeValues& values) {
  const bool one_pass_suffices = !merge_template.values_may_complete_a_token &&
                                 std::none_of(values.begin(), values.end(), HoldsOpeningBracket);
  if (one_pass_suffices) return {MergeInOnePass(merge_template, values), nullptr};
  auto rewritten =
      std::make_unique<const std::wstring>(MergeInSequence(merge_template.text, values));
  return {{{.text = *rewritten}}, std::move(rewritten)};
}

std::wstring MergeInSequence(std::wstring text, const MergeValues& values) {
  for (std::size_t token = 0; token < kMergeTokenCount; ++token) {
    text = ReplaceAll(text, kTokens[token], values[token]);
  }
  return text;
}

}  // namespace pxscheduler
