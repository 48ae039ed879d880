#include "letters/html/embedded_pictures.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "letters/html/attribute_replacement.h"
#include "letters/html/named_file.h"
#include "platform/runtime_error.h"
#include "text/base64.h"
#include "text/bracket_token.h"
#include "text/hexadecimal.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kMostBytes = std::size_t{16} << 20;  // of one picture

bool HoldsToken(std::wstring_view text) {
  for (std::size_t at = text.find(L'['); at != std::wstring_view::npos;
       at = text.find(L'[', at + 1))
    if (BracketTokenLength(text.substr(at)) > 0) return true;
  return false;
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
  std::string digits = ToUtf8(address.substr(comma + 1));
  std::erase_if(digits, [](unsigned char digit) { return digit <= ' '; });
  return DecodeBase64(digits);
}

std::string Hash(std::string_view bytes) {  // FNV-1a, 64 bits
  std::uint64_t hash = 14695981039346656037U;
  for (const char byte : bytes)
    hash = (hash ^ static_cast<unsigned char>(byte)) * std::uint64_t{1099511628211};
  std::string digits;
  for (int shift = 60; shift >= 0; shift -= 4) digits += kSmallHexDigits[hash >> shift & 0xF];
  return digits;
}

class PictureEmbedder {
 public:
  PictureEmbedder(const std::wstring& path, System& system) : path_(path), system_(system) {
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
    if (StartsWithoutCase(address, L"data:"))
      bytes = DataBytes(address);
    else if (const auto file = FileOfAddress(address))
      bytes = FileBytes(*file, address);
    if (!bytes) return {};
    known->second = AddPart(std::move(*bytes));
    return known->second;
  }

  std::vector<LetterPicture> Parts() { return std::move(parts_); }

 private:
  void Warn(std::wstring_view address, const std::wstring& reason) {
    system_.Warn(system_.ShownPath(path_) + L": the picture " + std::wstring(address) +
                 L" is not embedded: " + reason);
  }

  // "" where the letter's folder cannot be examined.
  const std::wstring& RealFolder() {
    if (!real_folder_) {
      try {
        real_folder_ = system_.RealPath(folder_.empty() ? L"." : folder_);
        if (!real_folder_->ends_with(L'\\')) *real_folder_ += L'\\';
      } catch (const RuntimeError&) {
        real_folder_ = L"";
      }
    }
    return *real_folder_;
  }

  std::optional<std::string> FileBytes(const NamedFile& file, std::wstring_view address) {
    try {
      const std::optional<std::wstring> name = PathInFolder(file, folder_);
      const std::wstring real = name ? system_.RealPath(*name) : L"";
      if (RealFolder().empty() || !real.starts_with(RealFolder())) {
        Warn(address, L"it lies outside the folder of the letter");
        return std::nullopt;
      }
      std::string bytes = system_.ReadFile(real);
      if (bytes.size() <= kMostBytes && !MediaTypeOf(bytes).empty()) return bytes;
      Warn(address, bytes.size() > kMostBytes ? L"it is larger than 16 MB" : L"it is no picture");
    } catch (const RuntimeError& error) {
      Warn(address, error.description);
    }
    return std::nullopt;
  }

  std::wstring AddPart(std::string bytes) {
    LetterPicture part;
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
  std::wstring folder_;  // as `path` names it, with its separator
  std::optional<std::wstring> real_folder_;
  std::vector<LetterPicture> parts_;
  std::map<std::string, std::size_t> parts_by_hash_;
  std::map<std::wstring, std::wstring> replacements_;  // by address
};

}  // namespace

std::vector<LetterPicture> EmbedPictures(std::wstring& html, const std::wstring& path,
                                         System& system) {
  PictureEmbedder embedder(path, system);
  ReplaceAttributes(html,
                    [&](std::wstring_view tag, std::wstring_view attribute,
                        std::wstring_view value) -> std::wstring {
                      const bool picture =
                          (tag == L"img" && attribute == L"src") || attribute == L"background";
                      return picture ? embedder.Replacement(value) : std::wstring();
                    });
  return embedder.Parts();
}

}  // namespace pxscheduler
