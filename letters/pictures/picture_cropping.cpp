#include "letters/pictures/picture_cropping.h"

#include <algorithm>

namespace pxscheduler {
namespace {

constexpr std::int64_t kTwipsPerPixel = 15;  // at 96 pixels an inch

struct Span {
  std::uint32_t begin = 0;
  std::uint32_t length = 0;
};

Span PixelsLeft(std::int64_t size, std::int64_t cut_before, std::int64_t cut_after,
                std::uint32_t pixels) {
  if (size <= 0) size = pixels * kTwipsPerPixel;
  const auto nearest = [&](std::int64_t twips) { return (twips * pixels + size / 2) / size; };
  const std::int64_t begin = std::min<std::int64_t>(nearest(cut_before), pixels - 1);
  const std::int64_t end = std::clamp<std::int64_t>(nearest(size - cut_after), begin + 1, pixels);
  return {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end - begin)};
}

}  // namespace

PixelRectangle PixelsLeft(const PictureCropping& cropping, std::uint32_t width,
                          std::uint32_t height) {
  const Span across = PixelsLeft(cropping.width, cropping.left, cropping.right, width);
  const Span down = PixelsLeft(cropping.height, cropping.top, cropping.bottom, height);
  return {across.begin, down.begin, across.length, down.length};
}

}  // namespace pxscheduler
