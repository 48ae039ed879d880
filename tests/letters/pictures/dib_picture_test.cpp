#include "letters/pictures/dib_picture.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

namespace pxscheduler {
namespace {

struct Form {
  std::uint32_t header = 40;
  std::uint32_t bits = 24;
  bool top_down = false;
  std::uint32_t compression = 0;
};

std::string Number(std::uint32_t number, int length) {
  std::string bytes;
  for (int i = 0; i < length; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
  return bytes;
}

// Counted from the highest bit of the first byte.
void SetBit(std::string& bytes, std::size_t index) {
  const auto byte = static_cast<unsigned char>(bytes[index / 8]);
  bytes[index / 8] = static_cast<char>(byte | (0x80U >> (index % 8)));
}

// Part of a picture of 9 by 5 pixels, each of which is different from its neighbours.
std::string Dib(const Form& form, const PixelRectangle& part) {
  std::string dib = Number(form.header, 4);
  const std::size_t palette = form.bits <= 8 ? std::size_t{1} << form.bits : 0;
  if (form.header == 12) {
    dib += Number(part.width, 2) + Number(part.height, 2) + Number(1, 2) + Number(form.bits, 2) +
           std::string(palette * 3, 'p');
  } else {
    dib += Number(part.width, 4) + Number(form.top_down ? 0 - part.height : part.height, 4) +
           Number(1, 2) + Number(form.bits, 2) + Number(form.compression, 4) +
           std::string(20, '\0') + std::string(form.header - 40, 'h') +
           std::string(palette * 4, 'p') +
           std::string(form.compression == 3 && form.header == 40 ? 12 : 0, 'm');
  }
  for (std::uint32_t i = 0; i < part.height; ++i) {
    const std::uint32_t y = part.top + (form.top_down ? i : part.height - 1 - i);
    const std::size_t row_bytes = std::size_t{(part.width * form.bits + 31) / 32} * 4;
    std::string row(row_bytes, '\0');
    for (std::uint32_t x = 0; x < part.width; ++x) {
      const std::uint32_t pixel = 0xA5C3 * (x + part.left + 1) + 0x3B7 * y;
      for (std::uint32_t bit = 0; bit < form.bits; ++bit)
        if ((pixel >> bit & 1) != 0) SetBit(row, x * form.bits + bit);
    }
    dib += row;
  }
  return dib;
}

TEST(CropDib, LeavesTheRowsAndPixelsInside) {
  const Form forms[] = {{40, 1, false, 0},  {40, 4, true, 0},  {40, 8, false, 0},
                        {40, 16, false, 3}, {40, 24, true, 0}, {40, 32, false, 0},
                        {12, 24, false, 0}, {12, 4, false, 0}, {108, 32, true, 3}};
  const PixelRectangle parts[] = {{0, 0, 9, 5}, {1, 0, 8, 5}, {3, 1, 5, 3}, {8, 4, 1, 1}};
  const auto twips = [](std::uint32_t pixels) { return static_cast<std::int32_t>(pixels * 15); };
  for (const Form& form : forms) {
    for (const PixelRectangle& part : parts) {
      const std::int32_t right = twips(9 - part.left - part.width);
      const std::int32_t bottom = twips(5 - part.top - part.height);
      const PictureCropping cropping{0, 0, twips(part.left), twips(part.top), right, bottom};
      EXPECT_EQ(CropDib(Dib(form, {0, 0, 9, 5}), cropping), Dib(form, part))
          << form.bits << " bits, " << part.left;
    }
  }
}

TEST(CropDib, RefusesWhatItDoesNotUnderstand) {
  const std::string whole = Dib({}, {0, 0, 9, 5});
  const PictureCropping cropping{0, 0, 15, 0, 0, 0};
  EXPECT_NE(CropDib(whole, cropping), "");
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_EQ(CropDib(whole.substr(0, length), cropping), "") << length;
  EXPECT_EQ(CropDib(Dib({40, 8, false, 1}, {0, 0, 9, 5}), cropping), "");  // run lengths
  for (const std::size_t field : {4U, 8U, 14U}) {
    std::string wrong = whole;
    wrong.replace(field, 2, "\xFF\xFF");
    EXPECT_EQ(CropDib(wrong, cropping), "") << field;
    wrong.replace(field, 2, std::string(2, '\0'));
    EXPECT_EQ(CropDib(wrong, cropping), "") << field;
  }
}

}  // namespace
}  // namespace pxscheduler
