#pragma once

#include <string>
#include <string_view>

namespace pxscheduler {

// Text of the operating system is UTF-8 by convention, but any bytes by right. A byte that is not
// part of UTF-8 becomes U+DC80 to U+DCFF (0xDC00 and the byte) and becomes that byte again, so that
// every file name survives.
std::wstring FromNative(std::string_view bytes);
std::string ToNative(std::wstring_view text);

// The same for paths: "\" in the program's texts, "/" at the operating system.
std::wstring FromNativePath(std::string_view path);
std::string ToNativePath(std::wstring_view path);

// False, with nothing in `text`, for an odd number of bytes or a surrogate without its other half.
bool FromUtf16LittleEndian(std::string_view bytes, std::wstring& text);

}  // namespace pxscheduler
