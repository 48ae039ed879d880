#pragma once

#include <string>
#include <vector>

#include "platform/system.h"
#include "text/letter.h"

namespace pxscheduler {

// Takes the pictures out of an HTML document that was read from the file `path`, so that they can
// travel with each message: "data:" addresses (RFC 2397), and files that it names by a relative
// path or a "file:" address. The document refers to them by "cid:" (RFC 2392) afterwards. A picture
// that is named twice is one part.
//
// Addresses of any other scheme stay as they are, and so do those that hold a bracketed token. A
// file that cannot be read, that is no picture or that lies outside the folder of `path`, be it by
// way of a link, stays as it is too, and one line of System::Warn says so.
std::vector<LetterPicture> EmbedPictures(std::wstring& html, const std::wstring& path,
                                         System& system);

}  // namespace pxscheduler
