#include "letters/html/link_text.h"

#include <cstddef>

#include "text/ascii_case.h"

namespace pxscheduler {
namespace {

std::wstring_view Trimmed(std::wstring_view text) {
  const std::size_t first = text.find_first_not_of(L" \n");
  if (first == std::wstring_view::npos) return {};
  return text.substr(first, text.find_last_not_of(L" \n") - first + 1);
}

}  // namespace

std::wstring ReadableAddress(std::wstring_view address) {
  std::wstring readable(Trimmed(address));
  std::erase(readable, L'\n');
  const std::wstring lower = LowerAscii(readable);
  if (lower.starts_with(L"#") || lower.starts_with(L"javascript:")) return {};
  if (lower.starts_with(L"mailto:")) readable.erase(0, 7);
  return readable;
}

bool NamesAddress(std::wstring_view text, std::wstring_view address) {
  const auto bare = [](std::wstring_view whole) {
    std::wstring rest = LowerAscii(Trimmed(whole));
    for (const std::wstring_view scheme : {L"https://", L"http://", L"tel:"})
      if (rest.starts_with(scheme)) rest.erase(0, scheme.size());
    if (rest.ends_with(L'/')) rest.pop_back();
    return rest;
  };
  return bare(text) == bare(address);
}

}  // namespace pxscheduler
