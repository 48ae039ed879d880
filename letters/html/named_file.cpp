#include "letters/html/named_file.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "text/ascii_case.h"
#include "text/hexadecimal.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

// Without percent-encoding and the entity of "&".
std::wstring Decoded(std::wstring_view address) {
  std::string bytes;
  while (!address.empty()) {
    std::size_t length = std::min(address.find_first_of(L"%&", 1), address.size());
    if (address.size() > 2 && address[0] == L'%' && HexDigitValue(address[1]) >= 0 &&
        HexDigitValue(address[2]) >= 0) {
      bytes += static_cast<char>(HexDigitValue(address[1]) * 16 + HexDigitValue(address[2]));
      length = 3;
    } else if (address.starts_with(L"&amp;")) {
      bytes += '&';
      length = 5;
    } else {
      AppendUtf8(address.substr(0, length), bytes);
    }
    address.remove_prefix(length);
  }
  return FromUtf8(bytes);
}

// "/" for every separator, "." and ".." resolved; nothing where ".." leads above the start.
std::optional<std::wstring> Resolved(std::wstring path) {
  std::ranges::replace(path, L'\\', L'/');
  std::vector<std::wstring_view> steps;
  const std::wstring_view whole = path;
  for (std::size_t begin = 0; begin <= whole.size();) {
    const std::size_t end = std::min(whole.find(L'/', begin), whole.size());
    const std::wstring_view step = whole.substr(begin, end - begin);
    begin = end + 1;
    if (step == L"..") {
      if (steps.empty()) return std::nullopt;
      steps.pop_back();
    } else if (!step.empty() && step != L".") {
      steps.push_back(step);
    }
  }
  std::wstring resolved = whole.starts_with(L'/') ? L"/" : L"";
  for (const std::wstring_view step : steps) {
    if (!resolved.empty() && resolved.back() != L'/') resolved += L'/';
    resolved += step;
  }
  return resolved;
}

}  // namespace

bool StartsWithoutCase(std::wstring_view text, std::wstring_view lower) {
  return LowerAscii(text.substr(0, lower.size())) == lower;
}

std::optional<NamedFile> FileOfAddress(std::wstring_view address) {
  const bool drive = address.size() > 1 && address[1] == L':';
  if (StartsWithoutCase(address, L"file:")) {
    address.remove_prefix(5);
    if (address.starts_with(L"//")) {
      address.remove_prefix(2);
      address.remove_prefix(std::min(address.find(L'/'), address.size()));  // the machine's name
    }
    if (address.size() > 2 && address[0] == L'/' && address[2] == L':') address.remove_prefix(1);
    return NamedFile{Decoded(address), true};
  }
  if (drive) return NamedFile{std::wstring(address), true};
  if (address.starts_with(L"//") || address.starts_with(L"\\\\")) return std::nullopt;
  const std::size_t first = address.find_first_of(L":/\\?#");
  if (address.empty() || (first != std::wstring_view::npos && address[first] == L':'))
    return std::nullopt;  // another scheme
  return NamedFile{Decoded(address.substr(0, address.find_first_of(L"?#"))),
                   address[0] == L'/' || address[0] == L'\\'};
}

std::optional<std::wstring> PathInFolder(const NamedFile& file, const std::wstring& folder) {
  const auto path = Resolved(file.path);
  if (!path) return std::nullopt;
  std::wstring whole = folder + *path;
  if (file.absolute) {
    const auto start = Resolved(folder);
    if (!start || start->empty()) return std::nullopt;
    if (!path->starts_with(start->back() == L'/' ? *start : *start + L'/')) return std::nullopt;
    whole = *path;
  }
  std::ranges::replace(whole, L'/', L'\\');
  return whole;
}

}  // namespace pxscheduler
