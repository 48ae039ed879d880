#include "letters/rtf/shape.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <utility>

namespace pxscheduler {
namespace {

constexpr std::int64_t kWhole = 65536;

// One direction of a picture.
struct Extent {
  std::int32_t& goal;  // twips, of the whole picture
  std::int32_t& scale;
  std::int32_t& cut_before;  // twips
  std::int32_t& cut_after;
};

// `shown` is the length on paper, 0 where the shape does not say.
void Fit(Extent extent, std::int64_t shown, std::int64_t before, std::int64_t after) {
  constexpr std::int64_t kLongest = 31680 * kWhole;
  if (before + after >= kWhole) before = after = 0;
  if (shown > 0) {
    extent.goal = static_cast<std::int32_t>(
        std::clamp<std::int64_t>(shown * kWhole / (kWhole - before - after), 1, INT32_MAX));
    extent.scale = 100;
  } else if (before == 0 && after == 0) {
    return;
  }
  const auto cut = [&](std::int64_t part) {
    return static_cast<std::int32_t>(std::clamp(extent.goal * part, -kLongest, kLongest) / kWhole);
  };
  extent.cut_before = cut(before);
  extent.cut_after = cut(after);
}

}  // namespace

void Shape::SetProperty(std::wstring_view name, const std::wstring& value) {
  static constexpr std::array<std::pair<std::wstring_view, std::int32_t Shape::*>, 4> kCropping = {
      {{L"cropFromLeft", &Shape::crop_left},
       {L"cropFromTop", &Shape::crop_top},
       {L"cropFromRight", &Shape::crop_right},
       {L"cropFromBottom", &Shape::crop_bottom}}};
  if (name == L"wzDescription") description = value;
  for (const auto& [known, member] : kCropping)
    if (name == known)
      this->*member = static_cast<std::int32_t>(
          std::clamp<long>(std::wcstol(value.c_str(), nullptr, 10), -kWhole, kWhole));
}

PictureInProgress Shape::ShownPicture() && {
  Fit({picture.width_goal, picture.scale_x, picture.crop_left, picture.crop_right},
      std::int64_t{right} - left, crop_left, crop_right);
  Fit({picture.height_goal, picture.scale_y, picture.crop_top, picture.crop_bottom},
      std::int64_t{bottom} - top, crop_top, crop_bottom);
  if (!description.empty()) picture.description = std::move(description);
  return std::move(picture);
}

}  // namespace pxscheduler
