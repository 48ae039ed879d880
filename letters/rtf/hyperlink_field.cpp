#include "letters/rtf/hyperlink_field.h"

#include <cstddef>
#include <utility>
#include <vector>

#include "text/bracket_token.h"

namespace pxscheduler {
namespace {

// The words of a field instruction; quotation marks hold one together, and in them "\" makes the
// next character plain.
std::vector<std::wstring> Arguments(std::wstring_view instruction) {
  std::vector<std::wstring> arguments;
  std::wstring word;
  bool quoted = false;
  bool any = false;
  for (std::size_t i = 0; i < instruction.size(); ++i) {
    const wchar_t character = instruction[i];
    if (character == L'"' || character == L'\u201C' || character == L'\u201D') {
      quoted = !quoted;
      any = true;
    } else if (quoted && character == L'\\' && i + 1 < instruction.size()) {
      word += instruction[++i];
    } else if (!quoted && (character == L' ' || character == L'\t' || character == L'\n')) {
      if (any) arguments.push_back(std::exchange(word, {}));
      any = false;
    } else {
      word += character;
      any = true;
    }
  }
  if (any) arguments.push_back(word);
  return arguments;
}

std::wstring WithTokens(std::wstring_view address) {
  constexpr std::size_t kLongest = 80;
  std::wstring result;
  while (!address.empty()) {
    if (address.starts_with(L"%5B") || address.starts_with(L"%5b")) {
      std::wstring token = L"[";
      std::size_t at = 3;
      for (; at < address.size() && at < kLongest && !token.ends_with(L']'); ++at) {
        const std::wstring_view rest = address.substr(at);
        const bool blank = rest.starts_with(L"%20");
        const bool end = rest.starts_with(L"%5D") || rest.starts_with(L"%5d");
        token += blank ? L' ' : end ? L']' : rest.front();
        if (blank || end) at += 2;
      }
      if (BracketTokenLength(token) == token.size()) {
        result += token;
        address.remove_prefix(at);
        continue;
      }
    }
    result += address.front();
    address.remove_prefix(1);
  }
  return result;
}

}  // namespace

std::wstring HyperlinkAddress(std::wstring_view instruction) {
  const std::vector<std::wstring> arguments = Arguments(instruction);
  if (arguments.empty() || arguments.front() != L"HYPERLINK") return {};
  std::wstring address;
  std::wstring place;
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const std::wstring& argument = arguments[i];
    const bool takes_argument = argument == L"\\l" || argument == L"\\o" || argument == L"\\t";
    if (argument == L"\\l" && i + 1 < arguments.size()) place = L"#" + arguments[i + 1];
    if (takes_argument)
      ++i;
    else if (!argument.starts_with(L'\\') && address.empty())
      address = argument;
  }
  return WithTokens(address + place);
}

}  // namespace pxscheduler
