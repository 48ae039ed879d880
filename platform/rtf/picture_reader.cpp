#include "platform/rtf/picture_reader.h"

#include <algorithm>
#include <utility>

namespace pxscheduler {
namespace {

constexpr std::int32_t kTwipsPerPixel = 15;  // at 96 pixels an inch

int HexDigit(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  const char lowered = static_cast<char>(character | 0x20);
  return lowered >= 'a' && lowered <= 'f' ? lowered - 'a' + 10 : -1;
}

std::uint32_t LittleEndian(std::string_view bytes, std::size_t at, std::size_t length) {
  std::uint32_t number = 0;
  for (std::size_t i = length; i > 0; --i)
    number = number << 8 | static_cast<unsigned char>(bytes[at + i - 1]);
  return number;
}

std::string LittleEndianBytes(std::uint32_t number) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(number >> shift & 0xFF);
  return bytes;
}

// A BMP file of a device-independent bitmap: the file header, which says where the pixels begin,
// and the bitmap as it is (Windows, BITMAPFILEHEADER and BITMAPINFOHEADER). "" for anything else.
std::string BmpOfDib(const std::string& dib) {
  constexpr std::size_t kCoreHeader = 12;
  constexpr std::size_t kInfoHeader = 40;
  constexpr std::uint32_t kBitFields = 3;
  if (dib.size() < kCoreHeader) return {};
  const std::uint32_t header = LittleEndian(dib, 0, 4);
  std::size_t palette = 0;
  if (header == kCoreHeader) {
    const std::uint32_t depth = LittleEndian(dib, 10, 2);
    palette = depth <= 8 ? (std::size_t{1} << depth) * 3 : 0;
  } else if (header >= kInfoHeader && header <= 124 && dib.size() >= kInfoHeader) {
    const std::uint32_t depth = LittleEndian(dib, 14, 2);
    const std::uint32_t used = LittleEndian(dib, 32, 4);
    if (used > 256) return {};
    palette = (used > 0 ? used : depth <= 8 ? std::size_t{1} << depth : 0) * 4;
    if (header == kInfoHeader && LittleEndian(dib, 16, 4) == kBitFields) palette += 12;
  } else {
    return {};
  }
  const std::size_t pixels = 14 + header + palette;
  if (pixels > dib.size() + 14) return {};
  return "BM" + LittleEndianBytes(static_cast<std::uint32_t>(dib.size() + 14)) +
         LittleEndianBytes(0) + LittleEndianBytes(static_cast<std::uint32_t>(pixels)) + dib;
}

// The size on paper of one dimension, in twips; 0 where the document does not say.
std::int32_t ShownSize(std::int32_t goal, std::int32_t pixels, std::int32_t scale,
                       std::int32_t crop_before, std::int32_t crop_after) {
  constexpr std::int64_t kLongest = 31680;  // 22 inches, the largest page
  std::int64_t size = goal > 0 ? goal : std::int64_t{std::max(0, pixels)} * kTwipsPerPixel;
  if (size == 0) return 0;
  size -= std::int64_t{crop_before} + crop_after;
  size = size * (scale > 0 ? scale : 100) / 100;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(size, 1, kLongest));
}

}  // namespace

void PictureInProgress::AppendHex(std::string_view digits) {
  if (too_large) return;
  for (const char character : digits) {
    const int digit = HexDigit(character);
    if (digit < 0) continue;
    if (half_byte < 0) {
      half_byte = digit;
      continue;
    }
    bytes += static_cast<char>(half_byte * 16 + digit);
    half_byte = -1;
  }
  AppendBytes({});
}

void PictureInProgress::AppendBytes(std::string_view more) {
  if (too_large) return;
  if (bytes.size() + more.size() > kMostBytes) {
    too_large = true;
    bytes = {};
    return;
  }
  bytes += more;
}

std::optional<Picture> FinishPicture(PictureInProgress picture) {
  Picture finished;
  finished.width = ShownSize(picture.width_goal, picture.width, picture.scale_x, picture.crop_left,
                             picture.crop_right);
  finished.height = ShownSize(picture.height_goal, picture.height, picture.scale_y,
                              picture.crop_top, picture.crop_bottom);
  finished.description = std::move(picture.description);
  // What the bytes are counts, not what the control word says.
  if (picture.bytes.starts_with("\x89PNG\r\n\x1A\n")) {
    finished.media_type = "image/png";
    finished.bytes = std::move(picture.bytes);
  } else if (picture.bytes.starts_with("\xFF\xD8\xFF")) {
    finished.media_type = "image/jpeg";
    finished.bytes = std::move(picture.bytes);
  } else if (picture.kind == PictureInProgress::Kind::kDib) {
    finished.media_type = "image/bmp";
    finished.bytes = BmpOfDib(picture.bytes);
  }
  if (finished.bytes.empty()) return std::nullopt;
  return finished;
}

}  // namespace pxscheduler
