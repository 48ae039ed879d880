#pragma once

#include <string>
#include <vector>

#include "platform/system.h"
#include "text/letter.h"

namespace pxscheduler {

// Makes parts of a message of the pictures in an HTML document that was read from the file `path`:
// of "data:" addresses (RFC 2397), and of files that a relative path or a "file:" address names.
// The document refers to them by "cid:" (RFC 2392) afterwards, to a picture named twice by one
// part.
//
// Addresses of any other scheme stay as they are, and so do those that hold a bracketed token. A
// file that cannot be read, that is no picture or that lies outside the folder of `path`, also
// through a link, stays as it is too, and one line of System::Warn says so.
std::vector<LetterPicture> EmbedPictures(std::wstring& html, const std::wstring& path,
                                         System& system);

}  // namespace pxscheduler
