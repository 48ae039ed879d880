#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "letters/rtf/picture_reader.h"

namespace pxscheduler {

// A drawing of an RTF document while its group is read. What it shows is its picture ("pib"); those
// of its fill and its lines are left out.
struct Shape {
  std::int32_t left = 0;  // twips, from wherever the shape is placed
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;
  std::int32_t crop_left = 0;  // 65536ths of the picture, negative where space is added
  std::int32_t crop_top = 0;
  std::int32_t crop_right = 0;
  std::int32_t crop_bottom = 0;
  std::wstring description;
  PictureInProgress picture;

  void SetProperty(std::wstring_view name, const std::wstring& value);
  // Its picture, in the size of the shape and cropped as it says.
  PictureInProgress ShownPicture() &&;
};

}  // namespace pxscheduler
