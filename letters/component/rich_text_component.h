#pragma once

#include <memory>

#include "letters/converted_files.h"
#include "letters/text_control.h"
#include "platform/code_page.h"
#include "platform/system.h"

namespace pxscheduler {

// The rich-text component of this machine, hosted on a hidden window; its errors are its own, with
// their number and text. Where the component is not installed, or its licence does not extend to
// this program (which is said on the system's warning line), our own text control stands in.
//
// All arguments must outlive the control; our own adds the files that it saves to `converted`, if
// that is given. Raises CannotCreateObject (429) for a component that is
// registered but cannot be loaded.
std::unique_ptr<TextControl> NewWindowsTextControl(System& system, const CodePages& code_pages,
                                                   ConvertedFiles* converted = nullptr);

}  // namespace pxscheduler
