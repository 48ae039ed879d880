#pragma once

#include <string>
#include <string_view>

#include "letters/pictures/picture_cropping.h"

namespace pxscheduler {

// A device-independent bitmap as RTF holds it ("\dibitmap"): headers, palette and rows, without the
// header of a file.

// The same as a BMP file; "" for anything else.
std::string BmpOfDib(std::string_view dib);

// The bitmap cropped; "" for a compressed one and for anything else.
std::string CropDib(std::string_view dib, const PictureCropping& cropping);

}  // namespace pxscheduler
