#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace pxscheduler {

// What a document cuts off the sides of a picture, in twips.
struct PictureCropping {
  std::int32_t width = 0;  // of the whole picture; 0 where each pixel is a 96th of an inch
  std::int32_t height = 0;
  std::int32_t left = 0;  // none of the four is negative
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;

  bool CutsAnything() const { return left > 0 || top > 0 || right > 0 || bottom > 0; }
};

struct PixelRectangle {
  std::uint32_t left = 0;
  std::uint32_t top = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;

  friend bool operator==(const PixelRectangle&, const PixelRectangle&) = default;
};

// A picture of more pixels is not decoded, so that a small file cannot use up the memory.
inline constexpr std::uint64_t kMostPixels = 50'000'000;

// The pixels of a picture of this size, neither side 0, that are left: at least one.
PixelRectangle PixelsLeft(const PictureCropping& cropping, std::uint32_t width,
                          std::uint32_t height);

// A PNG or JPEG picture cropped, in its own format. Nothing for anything else, for a damaged
// picture and for one of more than kMostPixels.
std::optional<std::string> CropPicture(std::string_view picture, const PictureCropping& cropping);

}  // namespace pxscheduler
