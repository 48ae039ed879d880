#include "letters/rtf/picture_reader.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "letters/pictures/dib_picture.h"
#include "letters/pictures/picture_cropping.h"
#include "text/hexadecimal.h"

namespace pxscheduler {
namespace {

constexpr std::int32_t kTwipsPerPixel = 15;  // at 96 pixels an inch

// The length of a side of the whole picture before scaling, in twips; 0 where the document does not
// say.
std::int32_t WholeSide(std::int32_t goal, std::int32_t pixels) {
  if (goal > 0) return goal;
  return static_cast<std::int32_t>(
      std::clamp<std::int64_t>(std::int64_t{pixels} * kTwipsPerPixel, 0, INT32_MAX));
}

// The length of a side on paper.
std::int32_t ShownSide(std::int32_t whole, std::int32_t scale, std::int32_t cut_before,
                       std::int32_t cut_after) {
  constexpr std::int64_t kLongest = 31680;  // 22 inches, the largest page
  if (whole == 0) return 0;
  std::int64_t side = std::int64_t{whole} - cut_before - cut_after;
  side = side * (scale > 0 ? scale : 100) / 100;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(side, 1, kLongest));
}

// Space that is added around a picture is left out.
PictureCropping CroppingOf(const PictureInProgress& picture) {
  PictureCropping cropping;
  cropping.width = WholeSide(picture.width_goal, picture.width);
  cropping.height = WholeSide(picture.height_goal, picture.height);
  cropping.left = std::max(0, picture.crop_left);
  cropping.top = std::max(0, picture.crop_top);
  cropping.right = std::max(0, picture.crop_right);
  cropping.bottom = std::max(0, picture.crop_bottom);
  return cropping;
}

// What the bytes are counts, not what the control word says; "" where they are nothing known.
std::string MediaTypeOf(const PictureInProgress& picture) {
  if (picture.bytes.starts_with("\x89PNG\r\n\x1A\n")) return "image/png";
  if (picture.bytes.starts_with("\xFF\xD8\xFF")) return "image/jpeg";
  const bool dib =
      picture.kind == PictureInProgress::Kind::kDib && !BmpOfDib(picture.bytes).empty();
  return dib ? "image/bmp" : "";
}

// Cuts the bytes as the cropping says, or makes it cut nothing where that cannot be done.
bool CropBytes(std::string& bytes, bool is_dib, PictureCropping& cropping) {
  if (!cropping.CutsAnything()) return true;
  std::optional<std::string> cropped =
      is_dib ? CropDib(bytes, cropping) : CropPicture(bytes, cropping);
  const bool done = cropped && !cropped->empty();
  if (done)
    bytes = *std::move(cropped);
  else
    cropping.left = cropping.top = cropping.right = cropping.bottom = 0;
  return done;
}

}  // namespace

void PictureInProgress::AppendHex(std::string_view digits) {
  if (too_large) return;
  for (const char character : digits) {
    const int digit = HexDigitValue(character);
    if (digit < 0) continue;
    if (half_byte < 0) {
      half_byte = digit;
      continue;
    }
    const char byte = static_cast<char>(half_byte * 16 + digit);
    half_byte = -1;
    AppendBytes({&byte, 1});
    if (too_large) return;
  }
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

FinishedPicture FinishPicture(PictureInProgress picture) {
  if (picture.too_large) return {std::nullopt, PictureProblem::kTooLarge};
  if (picture.bytes.empty()) return {};
  Picture finished;
  finished.media_type = MediaTypeOf(picture);
  if (finished.media_type.empty())
    return {std::nullopt, picture.kind == PictureInProgress::Kind::kMetafile
                              ? PictureProblem::kMetafile
                              : PictureProblem::kUnreadable};
  const bool is_dib = finished.media_type == "image/bmp";
  PictureCropping cropping = CroppingOf(picture);
  const bool cropped = CropBytes(picture.bytes, is_dib, cropping);
  finished.width = ShownSide(cropping.width, picture.scale_x, cropping.left, cropping.right);
  finished.height = ShownSide(cropping.height, picture.scale_y, cropping.top, cropping.bottom);
  finished.description = std::move(picture.description);
  finished.bytes = is_dib ? BmpOfDib(picture.bytes) : std::move(picture.bytes);
  return {std::move(finished), cropped ? std::nullopt : std::optional(PictureProblem::kNotCropped)};
}

}  // namespace pxscheduler
