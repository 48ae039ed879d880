#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "letters/rtf/document.h"

namespace pxscheduler {

// A picture of an RTF document while its group is read.
struct PictureInProgress {
  static constexpr std::size_t kMostBytes = std::size_t{16} << 20;

  enum class Kind : std::uint8_t { kUnknown, kPng, kJpeg, kDib, kMetafile };

  Kind kind = Kind::kUnknown;
  std::int32_t width = 0;  // \picw: pixels, or hundredths of a millimetre of a metafile
  std::int32_t height = 0;
  std::int32_t width_goal = 0;  // twips, before scaling and cropping
  std::int32_t height_goal = 0;
  std::int32_t scale_x = 100;  // percent
  std::int32_t scale_y = 100;
  std::int32_t crop_left = 0;  // twips, negative where space is added
  std::int32_t crop_top = 0;
  std::int32_t crop_right = 0;
  std::int32_t crop_bottom = 0;
  std::wstring description;
  std::string bytes;
  int half_byte = -1;      // the first digit of a byte whose second is still to come
  bool too_large = false;  // more bytes than kMostBytes: none are kept

  void AppendHex(std::string_view digits);
  void AppendBytes(std::string_view more);
};

struct FinishedPicture {
  std::optional<Picture> picture;
  std::optional<PictureProblem> problem;  // neither where the document has no bytes for it
};

// The picture in a form that mail programs show, a DIB as a BMP file, cropped as the document says.
FinishedPicture FinishPicture(PictureInProgress picture);

}  // namespace pxscheduler
