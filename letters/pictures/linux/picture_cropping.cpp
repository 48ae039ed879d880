#include "letters/pictures/picture_cropping.h"

#include <png.h>
#include <turbojpeg.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

namespace pxscheduler {
namespace {

constexpr int kJpegQuality = 90;  // percent

bool IsDecodable(std::uint32_t width, std::uint32_t height) {
  return width > 0 && height > 0 && std::uint64_t{width} * height <= kMostPixels;
}

// Decoded pixels, without gaps between the rows.
struct Pixels {
  std::size_t row_bytes = 0;
  std::size_t pixel_bytes = 0;
  std::vector<unsigned char> bytes;

  const unsigned char* At(const PixelRectangle& part) const {
    return bytes.data() + part.top * row_bytes + part.left * pixel_bytes;
  }
};

std::optional<std::string> EncodePng(png_image image, const Pixels& pixels,
                                     const PixelRectangle& part) {
  image.width = part.width;
  image.height = part.height;
  const auto stride = static_cast<png_int_32>(pixels.row_bytes);
  png_alloc_size_t size = 0;
  std::string encoded(PNG_IMAGE_PNG_SIZE_MAX(image), '\0');
  size = encoded.size();
  if (png_image_write_to_memory(&image, encoded.data(), &size, 0, pixels.At(part), stride,
                                nullptr) == 0)
    return std::nullopt;
  encoded.resize(size);
  return encoded;
}

// Eight bits a channel, grey or colour, transparent or not, as the picture is.
std::optional<std::string> CropPng(std::string_view picture, const PictureCropping& cropping) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_memory(&image, picture.data(), picture.size()) == 0)
    return std::nullopt;
  const std::unique_ptr<png_image, void (*)(png_image*)> owner(&image, png_image_free);
  if (!IsDecodable(image.width, image.height)) return std::nullopt;
  image.format &= PNG_FORMAT_FLAG_COLOR | PNG_FORMAT_FLAG_ALPHA;
  Pixels pixels;
  pixels.row_bytes = PNG_IMAGE_ROW_STRIDE(image);
  pixels.pixel_bytes = PNG_IMAGE_PIXEL_SIZE(image.format);
  pixels.bytes.resize(PNG_IMAGE_SIZE(image));
  if (png_image_finish_read(&image, nullptr, pixels.bytes.data(), 0, nullptr) == 0)
    return std::nullopt;
  png_image part{};
  part.version = PNG_IMAGE_VERSION;
  part.format = image.format;
  return EncodePng(part, pixels, PixelsLeft(cropping, image.width, image.height));
}

using JpegHandle = std::unique_ptr<void, int (*)(tjhandle)>;

// Whether a call has done its work: the rest of a picture that is cut short is grey.
bool Succeeded(int result, const JpegHandle& handle) {
  return result == 0 || tjGetErrorCode(handle.get()) == TJERR_WARNING;
}

struct JpegKind {
  TJPF pixel_format = TJPF_RGB;
  int subsampling = TJSAMP_444;
};

std::optional<std::string> EncodeJpeg(const JpegKind& kind, const Pixels& pixels,
                                      const PixelRectangle& part) {
  const JpegHandle compressor(tjInitCompress(), tjDestroy);
  if (!compressor) return std::nullopt;
  unsigned char* allocated = nullptr;
  unsigned long size = 0;
  const int result =
      tjCompress2(compressor.get(), pixels.At(part), static_cast<int>(part.width),
                  static_cast<int>(pixels.row_bytes), static_cast<int>(part.height),
                  kind.pixel_format, &allocated, &size, kind.subsampling, kJpegQuality, 0);
  const std::unique_ptr<unsigned char, void (*)(unsigned char*)> encoded(allocated, tjFree);
  if (!Succeeded(result, compressor)) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(encoded.get()), size);
}

std::optional<std::string> CropJpeg(std::string_view picture, const PictureCropping& cropping) {
  const JpegHandle decompressor(tjInitDecompress(), tjDestroy);
  if (!decompressor) return std::nullopt;
  const auto* bytes = reinterpret_cast<const unsigned char*>(picture.data());
  int width = 0;
  int height = 0;
  int colours = 0;
  JpegKind kind;
  if (!Succeeded(tjDecompressHeader3(decompressor.get(), bytes, picture.size(), &width, &height,
                                     &kind.subsampling, &colours),
                 decompressor) ||
      width <= 0 || height <= 0 ||
      !IsDecodable(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)))
    return std::nullopt;
  if (colours == TJCS_GRAY) kind.pixel_format = TJPF_GRAY;
  if (colours == TJCS_CMYK || colours == TJCS_YCCK) kind.pixel_format = TJPF_CMYK;
  if (kind.subsampling < 0) kind.subsampling = TJSAMP_444;
  Pixels pixels;
  pixels.pixel_bytes = static_cast<std::size_t>(tjPixelSize[kind.pixel_format]);
  pixels.row_bytes = static_cast<std::size_t>(width) * pixels.pixel_bytes;
  pixels.bytes.resize(pixels.row_bytes * static_cast<std::size_t>(height));
  if (!Succeeded(tjDecompress2(decompressor.get(), bytes, picture.size(), pixels.bytes.data(),
                               width, 0, height, kind.pixel_format, TJFLAG_LIMITSCANS),
                 decompressor))
    return std::nullopt;
  return EncodeJpeg(
      kind, pixels,
      PixelsLeft(cropping, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)));
}

}  // namespace

std::optional<std::string> CropPicture(std::string_view picture, const PictureCropping& cropping) {
  if (picture.starts_with("\x89PNG\r\n\x1A\n")) return CropPng(picture, cropping);
  if (picture.starts_with("\xFF\xD8\xFF")) return CropJpeg(picture, cropping);
  return std::nullopt;
}

}  // namespace pxscheduler
