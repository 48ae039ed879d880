#pragma once

#include <string>

#include "platform/platform.h"

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
BodyTexts PrepareMessageBody(const System& system, const CodePage& ansi, Components& components,
                             MailComponent& mail, const std::wstring& body_file);

}  // namespace pxscheduler
