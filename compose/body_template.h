#pragma once

#include <functional>
#include <memory>
#include <string>

#include "delivery/mail_component.h"
#include "letters/text_control.h"
#include "platform/code_page.h"
#include "platform/system.h"

namespace pxscheduler {

// The two body texts that every message starts from.
struct BodyTexts {
  std::wstring body;
  std::wstring alternative;
};

// Loads the message body file into the mail component, a ".qzw" template by way of an HTML file in
// the temporary folder, and marks the message as HTML where the file is an HTML document. A body
// file that cannot be read leaves the component's texts as they were; a template that cannot be
// converted raises what the text control raises.
BodyTexts PrepareMessageBody(const System& system, const CodePage& ansi,
                             const std::function<std::unique_ptr<TextControl>()>& new_text_control,
                             MailComponent& mail, const std::wstring& body_file);

}  // namespace pxscheduler
