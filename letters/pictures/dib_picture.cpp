#include "letters/pictures/dib_picture.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace pxscheduler {
namespace {

// Windows, BITMAPCOREHEADER and BITMAPINFOHEADER with its later extensions.
constexpr std::size_t kCoreHeader = 12;
constexpr std::size_t kInfoHeader = 40;
constexpr std::size_t kLongestHeader = 124;
constexpr std::uint32_t kUncompressed = 0;
constexpr std::uint32_t kBitFields = 3;  // uncompressed too, with masks of its own

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

struct DibLayout {
  std::size_t header = 0;  // bytes
  std::size_t pixels = 0;  // where the rows begin
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  bool top_down = false;
  std::uint32_t bits = 0;  // of a pixel
  std::uint32_t compression = kUncompressed;
};

std::optional<DibLayout> ReadLayout(std::string_view dib) {
  if (dib.size() < kCoreHeader) return std::nullopt;
  DibLayout layout;
  layout.header = LittleEndian(dib, 0, 4);
  std::size_t palette = 0;
  if (layout.header == kCoreHeader) {
    layout.width = LittleEndian(dib, 4, 2);
    layout.height = LittleEndian(dib, 6, 2);
    layout.bits = LittleEndian(dib, 10, 2);
    palette = layout.bits <= 8 ? (std::size_t{1} << layout.bits) * 3 : 0;
  } else if (layout.header >= kInfoHeader && layout.header <= kLongestHeader &&
             dib.size() >= kInfoHeader) {
    layout.width = LittleEndian(dib, 4, 4);
    layout.height = LittleEndian(dib, 8, 4);
    layout.top_down = layout.height > INT32_MAX;
    if (layout.top_down) layout.height = 0 - layout.height;
    layout.bits = LittleEndian(dib, 14, 2);
    layout.compression = LittleEndian(dib, 16, 4);
    const std::uint32_t used = LittleEndian(dib, 32, 4);
    if (used > 256) return std::nullopt;
    palette = (used > 0 ? used : layout.bits <= 8 ? std::size_t{1} << layout.bits : 0) * 4;
    if (layout.header == kInfoHeader && layout.compression == kBitFields) palette += 12;
  } else {
    return std::nullopt;
  }
  layout.pixels = layout.header + palette;
  if (layout.pixels > dib.size()) return std::nullopt;
  return layout;
}

// Rows fill whole groups of four bytes.
std::size_t RowBytes(std::uint64_t width, std::uint32_t bits) {
  return static_cast<std::size_t>((width * bits + 31) / 32 * 4);
}

// `count` bits from the bit `begin` on, moved to the start of a row.
void AppendBits(std::string_view row, std::uint64_t begin, std::uint64_t count, std::string& out) {
  const auto at = [&](std::uint64_t byte) {
    return byte < row.size() ? static_cast<unsigned char>(row[static_cast<std::size_t>(byte)]) : 0U;
  };
  const auto shift = static_cast<unsigned>(begin % 8);
  for (std::uint64_t done = 0; done < count; done += 8) {
    const std::uint64_t byte = (begin + done) / 8;
    const auto unused = static_cast<unsigned>(count - done < 8 ? 8 - (count - done) : 0);
    const unsigned bits = at(byte) << shift | at(byte + 1) >> (8 - shift);
    out += static_cast<char>(bits & (0xFFU << unused) & 0xFFU);
  }
}

// The headers and the palette with another size.
std::string HeaderOfSize(std::string_view dib, const DibLayout& layout, std::uint32_t width,
                         std::uint32_t height) {
  std::string header(dib.substr(0, layout.pixels));
  if (layout.header == kCoreHeader) {
    header.replace(4, 2, LittleEndianBytes(width), 0, 2);
    header.replace(6, 2, LittleEndianBytes(height), 0, 2);
    return header;
  }
  header.replace(4, 4, LittleEndianBytes(width));
  header.replace(8, 4, LittleEndianBytes(layout.top_down ? 0 - height : height));
  header.replace(20, 4, LittleEndianBytes(0));  // the size of the rows: as their count says
  return header;
}

}  // namespace

std::string BmpOfDib(std::string_view dib) {
  constexpr std::size_t kFileHeader = 14;
  const std::optional<DibLayout> layout = ReadLayout(dib);
  if (!layout) return {};
  std::string file = "BM";
  file += LittleEndianBytes(static_cast<std::uint32_t>(kFileHeader + dib.size()));
  file += LittleEndianBytes(0);
  file += LittleEndianBytes(static_cast<std::uint32_t>(kFileHeader + layout->pixels));
  return file += dib;
}

std::string CropDib(std::string_view dib, const PictureCropping& cropping) {
  const std::optional<DibLayout> layout = ReadLayout(dib);
  if (!layout || layout->width == 0 || layout->width > INT32_MAX || layout->height == 0 ||
      layout->bits == 0 || layout->bits > 32 ||
      (layout->compression != kUncompressed && layout->compression != kBitFields))
    return {};
  const std::size_t row_bytes = RowBytes(layout->width, layout->bits);
  if ((dib.size() - layout->pixels) / row_bytes < layout->height) return {};
  const PixelRectangle part = PixelsLeft(cropping, layout->width, layout->height);
  std::string cropped = HeaderOfSize(dib, *layout, part.width, part.height);
  const std::size_t rows_begin = cropped.size();
  const std::size_t part_row_bytes = RowBytes(part.width, layout->bits);
  cropped.reserve(rows_begin + part_row_bytes * part.height);
  // The lowest row comes first unless the bitmap says otherwise.
  const std::uint32_t first_row =
      layout->top_down ? part.top : layout->height - part.top - part.height;
  for (std::uint32_t i = 0; i < part.height; ++i) {
    const std::string_view row =
        dib.substr(layout->pixels + (first_row + i) * row_bytes, row_bytes);
    AppendBits(row, std::uint64_t{part.left} * layout->bits,
               std::uint64_t{part.width} * layout->bits, cropped);
    cropped.resize(rows_begin + part_row_bytes * (i + 1));
  }
  return cropped;
}

}  // namespace pxscheduler
