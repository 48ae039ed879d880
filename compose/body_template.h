#pragma once

#include <functional>
#include <memory>
#include <string>

#include "delivery/mail_component.h"
#include "letters/text_control.h"
#include "platform/code_page.h"
#include "platform/system.h"

namespace pxscheduler {

// The two body texts of every message, with their merge tokens.
struct BodyTexts {
  std::wstring body;
  std::wstring alternative;
};

// Loads the message body file into the mail component and declares an HTML document as one.
// Converts a ".qzw" template to an HTML file in the temporary folder first, which it locks until
// the file is loaded, since all runs give it one name. A body file that cannot be read leaves the
// component's texts as they were. Raises the text control's error for a template that cannot be
// converted, and the errors of TemporaryFolder and LockFolder.
BodyTexts PrepareMessageBody(System& system, const CodePage& ansi,
                             const std::function<std::unique_ptr<TextControl>()>& new_text_control,
                             MailComponent& mail, const std::wstring& body_file);

}  // namespace pxscheduler
