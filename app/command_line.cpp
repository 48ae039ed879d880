#include "app/command_line.h"

#include "config/helper_library.h"
#include "platform/letter_case.h"
#include "text/text.h"

namespace pxscheduler {
namespace {

// The value behind a switch, up to the next " /" and without its outer blanks. `switch_text` is a
// blank, a slash and the capital letter; the switch is found in any case.
std::wstring GetSwitchValue(const CodePage& ansi, const std::wstring& command_text,
                            const std::wstring& switch_text) {
  const std::size_t position = UpperCase(command_text).find(switch_text);
  if (position == std::wstring::npos) return L"";
  const std::wstring rest = command_text.substr(position + switch_text.size());
  return std::wstring{TrimBlanks(Parse(ansi, rest, L" /"))};
}

}  // namespace

CommandLine ParseCommandLine(const CodePage& ansi, const std::wstring& command_line) {
  const std::wstring command_text = L" " + command_line;
  return {.query_name = GetSwitchValue(ansi, command_text, L" /Q"),
          .subject = GetSwitchValue(ansi, command_text, L" /S"),
          .body_file = GetSwitchValue(ansi, command_text, L" /F"),
          .user_login = GetSwitchValue(ansi, command_text, L" /U")};
}

bool IsLoggingOn(const std::wstring& command_line) {
  return UpperCase(command_line).find(L"/NOLOG") == std::wstring::npos;
}

}  // namespace pxscheduler
