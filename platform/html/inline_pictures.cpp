#include "platform/html/inline_pictures.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/base64.h"
#include "platform/code_page.h"
#include "platform/html/bracket_token.h"
#include "platform/html/html_attributes.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kMostBytes = std::size_t{16} << 20;  // of one picture

bool HoldsToken(std::wstring_view text) {
  for (std::size_t at = text.find(L'['); at != std::wstring_view::npos;
       at = text.find(L'[', at + 1))
    if (BracketTokenLength(text.substr(at)) > 0) return true;
  return false;
}

bool StartsWithoutCase(std::wstring_view text, std::wstring_view lower) {
  return text.size() >= lower.size() &&
         std::equal(lower.begin(), lower.end(), text.begin(), [](wchar_t a, wchar_t b) {
           return a == (b >= L'A' && b <= L'Z' ? static_cast<wchar_t>(b | 0x20) : b);
         });
}

// The media type that the bytes themselves show; "" for anything but a picture.
std::string MediaTypeOf(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return "image/png";
  if (bytes.starts_with("\xFF\xD8\xFF")) return "image/jpeg";
  if (bytes.starts_with("GIF87a") || bytes.starts_with("GIF89a")) return "image/gif";
  if (bytes.starts_with("BM")) return "image/bmp";
  if (bytes.starts_with("RIFF") && bytes.substr(0, 12).ends_with("WEBP")) return "image/webp";
  return {};
}

// The bytes of a "data:" address in base64; nothing for another one.
std::optional<std::string> DataBytes(std::wstring_view address) {
  const std::size_t comma = address.find(L',');
  if (comma == std::wstring_view::npos || !address.substr(0, comma).ends_with(L";base64"))
    return std::nullopt;
  std::string digits;
  for (const wchar_t digit : address.substr(comma + 1))
    if (digit > L' ') digits += digit < 0x80 ? static_cast<char>(digit) : '?';
  return DecodeBase64(digits);
}

int HexDigit(wchar_t digit) {
  if (digit >= L'0' && digit <= L'9') return digit - L'0';
  if (digit >= L'a' && digit <= L'f') return digit - L'a' + 10;
  return digit >= L'A' && digit <= L'F' ? digit - L'A' + 10 : -1;
}

// Without percent-encoding (RFC 3986, UTF-8) and the entity of "&".
std::wstring Decoded(std::wstring_view address) {
  std::string bytes;
  for (std::size_t i = 0; i < address.size(); ++i) {
    const bool escape = address[i] == L'%' && i + 2 < address.size() &&
                        HexDigit(address[i + 1]) >= 0 && HexDigit(address[i + 2]) >= 0;
    if (escape) {
      bytes += static_cast<char>(HexDigit(address[i + 1]) * 16 + HexDigit(address[i + 2]));
      i += 2;
    } else {
      AppendUtf8(address.substr(i, 1), bytes);
      if (address.substr(i).starts_with(L"&amp;")) i += 4;
    }
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

// What a picture's address names, if it names a file.
struct NamedFile {
  std::wstring path;  // in the document's folder, "/" between its steps
  bool absolute;
};

std::optional<NamedFile> FileOf(std::wstring_view address) {
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

std::string Hash(std::string_view bytes) {  // FNV-1a, 64 bits
  std::uint64_t hash = 14695981039346656037U;
  for (const char byte : bytes)
    hash = (hash ^ static_cast<unsigned char>(byte)) * std::uint64_t{1099511628211};
  std::string digits;
  for (int shift = 60; shift >= 0; shift -= 4) digits += "0123456789abcdef"[hash >> shift & 0xF];
  return digits;
}

class Taking {
 public:
  Taking(const std::wstring& path, System& system) : path_(path), system_(system) {
    const std::size_t end = path.find_last_of(L"\\/");
    folder_ = end == std::wstring::npos ? L"" : path.substr(0, end + 1);
  }

  // The address to put in place of this one; "" leaves it.
  std::wstring Replacement(std::wstring_view address) {
    while (address.starts_with(L' ')) address.remove_prefix(1);
    while (address.ends_with(L' ')) address.remove_suffix(1);
    if (address.empty() || HoldsToken(address)) return {};
    const auto [known, added] = replacements_.try_emplace(std::wstring(address));
    if (!added) return known->second;
    std::optional<std::string> bytes;
    if (StartsWithoutCase(address, L"data:")) {
      bytes = DataBytes(address);
    } else if (const auto file = FileOf(address)) {
      bytes = FileBytes(*file, address);
    }
    if (!bytes) return {};
    known->second = AddPart(std::move(*bytes));
    return known->second;
  }

  std::vector<InlinePart> Parts() { return std::move(parts_); }

 private:
  void Warn(std::wstring_view address, const std::wstring& reason) {
    system_.Warn(path_ + L": the picture " + std::wstring(address) + L" is not embedded: " +
                 reason);
  }

  std::optional<std::string> FileBytes(const NamedFile& file, std::wstring_view address) {
    const auto folder = Resolved(folder_);
    const auto path = Resolved(file.path);
    // What is named from the root has to begin with the folder.
    const bool inside =
        path && (!file.absolute ||
                 (folder && !folder->empty() &&
                  (*path).starts_with(folder->back() == L'/' ? *folder : *folder + L'/')));
    if (!inside) {
      Warn(address, L"it lies outside the folder of the letter");
      return std::nullopt;
    }
    std::wstring name = file.absolute ? *path : folder_ + *path;
    std::ranges::replace(name, L'/', L'\\');
    try {
      std::string bytes = system_.ReadFile(name);
      if (bytes.size() <= kMostBytes && !MediaTypeOf(bytes).empty()) return bytes;
      Warn(address, bytes.size() > kMostBytes ? L"it is larger than 16 MB" : L"it is no picture");
    } catch (const RuntimeError& error) {
      Warn(address, error.description);
    }
    return std::nullopt;
  }

  std::wstring AddPart(std::string bytes) {
    InlinePart part;
    part.media_type = MediaTypeOf(bytes);
    if (part.media_type.empty()) return {};
    const std::string hash = Hash(bytes);
    const auto [same, added] = parts_by_hash_.try_emplace(hash, parts_.size());
    if (!added && parts_[same->second].bytes == bytes)
      return L"cid:" + FromUtf8(parts_[same->second].content_id);
    part.content_id = "picture" + std::to_string(parts_.size() + 1) + "." + hash + "@pxscheduler";
    part.bytes = std::move(bytes);
    parts_.push_back(std::move(part));
    return L"cid:" + FromUtf8(parts_.back().content_id);
  }

  const std::wstring& path_;
  System& system_;
  std::wstring folder_;
  std::vector<InlinePart> parts_;
  std::map<std::string, std::size_t> parts_by_hash_;
  std::map<std::wstring, std::wstring> replacements_;  // by address
};

}  // namespace

std::vector<InlinePart> TakePictures(std::wstring& html, const std::wstring& path, System& system) {
  Taking taking(path, system);
  ReplaceAttributes(html,
                    [&](std::wstring_view tag, std::wstring_view attribute,
                        std::wstring_view value) -> std::wstring {
                      const bool picture =
                          (tag == L"img" && attribute == L"src") || attribute == L"background";
                      return picture ? taking.Replacement(value) : std::wstring();
                    });
  return taking.Parts();
}

}  // namespace pxscheduler
