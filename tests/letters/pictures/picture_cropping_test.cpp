#include "letters/pictures/picture_cropping.h"

#include <gtest/gtest.h>

#include <cstddef>

#include "tests/support/scratch_folder.h"

namespace pxscheduler {
namespace {

TEST(PixelsLeft, FollowTheSizeOfThePicture) {
  const struct {
    PictureCropping cropping;
    std::uint32_t width;
    std::uint32_t height;
    PixelRectangle left;
  } cases[] = {
      {{}, 10, 5, {0, 0, 10, 5}},
      {{1000, 500, 100, 100, 200, 0}, 10, 5, {1, 1, 7, 4}},
      {{0, 0, 30, 0, 15, 45}, 10, 5, {2, 0, 7, 2}},  // 15 twips a pixel
      {{1000, 0, 149, 0, 151, 0}, 10, 1, {1, 0, 7, 1}},
      // Where nothing would be left, a pixel is.
      {{1000, 1000, 1000, 700, 0, 700}, 10, 10, {9, 7, 1, 1}},
      {{1, 1, INT32_MAX, 0, INT32_MAX, INT32_MAX}, 4, 4, {3, 0, 1, 1}},
  };
  for (const auto& c : cases)
    EXPECT_EQ(PixelsLeft(c.cropping, c.width, c.height), c.left) << c.cropping.left;
}

std::string Picture(const std::string& name) {
  return ReadWholeFile(TESTS_FOLDER "/letters/pictures/samples/" + name);
}

std::uint32_t BigEndian(const std::string& bytes, std::size_t at, std::size_t length) {
  std::uint32_t number = 0;
  for (std::size_t i = at; i < at + length; ++i)
    number = number << 8 | static_cast<unsigned char>(bytes.at(i));
  return number;
}

// What is left where as many pixels are cut off each side.
std::string Cut(const std::string& picture, std::int32_t left, std::int32_t top, std::int32_t right,
                std::int32_t bottom) {
  return CropPicture(picture, {0, 0, left * 15, top * 15, right * 15, bottom * 15}).value_or("");
}

TEST(CropPicture, LeavesThePartOfAPng) {
  const std::string png = Picture("twelve_colours.png");  // four by three pixels
  const std::string part = Cut(png, 1, 1, 0, 1);
  ASSERT_TRUE(part.starts_with("\x89PNG"));
  EXPECT_EQ(BigEndian(part, 16, 4), 3U);
  EXPECT_EQ(BigEndian(part, 20, 4), 1U);
  // Each pixel stays what it was, wherever it comes to stand.
  EXPECT_EQ(Cut(part, 1, 0, 1, 0), Cut(png, 2, 1, 1, 1));
  EXPECT_NE(Cut(part, 1, 0, 1, 0), Cut(png, 1, 1, 2, 1));
  EXPECT_NE(Cut(part, 1, 0, 1, 0), Cut(png, 2, 2, 1, 0));
}

TEST(CropPicture, LeavesThePartOfAJpeg) {
  const std::string blue = Picture("red_blue.jpg");
  const std::string green = Picture("red_green.jpg");
  const std::string red_part = Cut(blue, 0, 4, 16, 0);
  ASSERT_TRUE(red_part.starts_with("\xFF\xD8\xFF"));
  const std::size_t frame = red_part.find("\xFF\xC0");
  EXPECT_EQ(BigEndian(red_part, frame + 5, 2), 12U);
  EXPECT_EQ(BigEndian(red_part, frame + 7, 2), 16U);
  EXPECT_EQ(red_part, Cut(green, 0, 4, 16, 0));
  EXPECT_NE(Cut(blue, 16, 0, 0, 0), Cut(green, 16, 0, 0, 0));
}

TEST(CropPicture, RefusesWhatItCannotDecode) {
  const std::string png = Picture("twelve_colours.png");
  std::string huge = png;
  huge.replace(16, 8, std::string("\0\0\x7F\xFF\0\0\x7F\xFF", 8));
  for (const std::string& bytes :
       {std::string(), std::string("GIF89a"), png.substr(0, 60), huge, std::string("\xFF\xD8\xFF"),
        Picture("red_blue.jpg").substr(0, 100)})
    EXPECT_EQ(Cut(bytes, 1, 0, 0, 0), "") << bytes.size();
}

}  // namespace
}  // namespace pxscheduler
