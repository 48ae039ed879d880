#pragma once

#include <optional>
#include <string>

#include "letters/converted_files.h"
#include "platform/code_page.h"
#include "platform/system.h"
#include "text/letter.h"

namespace pxscheduler {

// Reads the letter in the file: an HTML document with the pictures that it names, which are looked
// for beside the document that the file was converted from, or plain text. Nothing where the file
// cannot be read. A picture that cannot be read stays an address, and System::Warn says why.
std::optional<Letter> ReadLetter(System& system, const CodePages& code_pages,
                                 const ConvertedFiles& converted, const std::wstring& path);

}  // namespace pxscheduler
