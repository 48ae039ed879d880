#include "compose/merge_fields.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "config/helper_library.h"
#include "data/value.h"
#include "text/text.h"

namespace pxscheduler {
namespace {

constexpr std::array<std::wstring_view, kMergeTokenCount> kTokens = {
    L"[Number]",      L"[Prefix]",       L"[First Name]",  L"[Last Name]",     L"[Full Name]",
    L"[Salutation]",  L"[Phone Number]", L"[Fax Number]",  L"[Email Address]", L"[Birthday]",
    L"[Anniversary]", L"[Travel Date]",  L"[Return Date]", L"[Start Date]",    L"[Last Date]",
};
constexpr std::size_t kFullName = 4;
constexpr std::size_t kSalutation = 5;

// The token that begins at `position`, or kMergeTokenCount.
std::size_t TokenAt(std::wstring_view text, std::size_t position) {
  if (text[position] != L'[') return kMergeTokenCount;
  const std::wstring_view rest = text.substr(position);
  const auto* token =
      std::find_if(kTokens.begin(), kTokens.end(),
                   [&](std::wstring_view candidate) { return rest.starts_with(candidate); });
  return static_cast<std::size_t>(token - kTokens.begin());
}

}  // namespace

MergeTemplate PrepareMergeTemplate(const CodePage& ansi, const std::wstring& text) {
  MergeTemplate prepared{.text = ansi.RoundTrip(text), .parsed = {}};
  std::vector<std::wstring>& constants = prepared.parsed.constants;
  bool bracket_is_open = false;
  for (std::size_t position = 0; position < prepared.text.size();) {
    const wchar_t character = prepared.text[position];
    const std::size_t token = TokenAt(prepared.text, position);
    if (token < kMergeTokenCount) {
      prepared.parsed.places.push_back(token);
      constants.emplace_back();
      prepared.values_may_complete_a_token |= bracket_is_open;
      position += kTokens[token].size();
      continue;
    }
    if (character == L'[' || character == L']') bracket_is_open = character == L'[';
    constants.back() += character;
    ++position;
  }
  return prepared;
}

MergeValues ReadMergeValues(const Regional& regional, const Recordset& result_set,
                            const std::wstring& email) {
  using namespace std::string_view_literals;
  const auto read = [&](std::wstring_view column) {
    return TextOf(regional, result_set.Fields(column));
  };
  MergeValues values = {read(L"ProfileNumber"sv),
                        read(L"Prefix"sv),
                        read(L"FirstName"sv),
                        read(L"LastName"sv),
                        read(L"FullName"sv),
                        read(L"Attention"sv),
                        read(L"Phone"sv),
                        read(L"Fax"sv),
                        email,
                        MonthDayOf(regional, result_set.Fields(L"BirthDate"sv)),
                        MonthDayOf(regional, result_set.Fields(L"AnniversaryDate"sv)),
                        ShortDateOf(regional, result_set.Fields(L"TravelDate"sv)),
                        ShortDateOf(regional, result_set.Fields(L"ReturnDate"sv)),
                        ShortDateOf(regional, result_set.Fields(L"FirstDate"sv)),
                        ShortDateOf(regional, result_set.Fields(L"LastDate"sv))};
  if (IsBlank(values[kSalutation])) values[kSalutation] = values[kFullName];
  return values;
}

const std::wstring& FullNameOf(const MergeValues& values) { return values[kFullName]; }

ValuesInCodePage InCodePage(const CodePage& ansi, MergeValues values) {
  ValuesInCodePage result{std::move(values), false};
  for (std::wstring& text : result.texts) {
    text = ansi.RoundTrip(std::move(text));
    result.may_hold_tokens |= text.find(L'[') != std::wstring::npos;
  }
  return result;
}

bool CanFillPlaces(const MergeTemplate& merge_template, const ValuesInCodePage& values) {
  return !merge_template.values_may_complete_a_token && !values.may_hold_tokens;
}

std::wstring MergeInSequence(std::wstring text, const MergeValues& values) {
  for (std::size_t token = 0; token < kMergeTokenCount; ++token)
    text = ReplaceAll(text, kTokens[token], values[token]);
  return text;
}

}  // namespace pxscheduler
