#pragma once

#include "platform/html/converted_files.h"
#include "platform/smtp/smtp_mail_component.h"
#include "platform/system.h"

namespace pxscheduler {

// What the mail component makes of HTML: plain text, and pictures as parts of the message. What a
// converted file names is looked for beside its document. Both arguments must outlive the result.
HtmlRenderings MessageRenderings(System& system, const ConvertedFiles& converted);

}  // namespace pxscheduler
