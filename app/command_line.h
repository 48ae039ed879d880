#pragma once

#include <string>

#include "platform/code_page.h"

namespace pxscheduler {

// What the command line says. A switch that is not given is "".
struct CommandLine {
  std::wstring query_name;
  std::wstring subject;
  std::wstring body_file;
  std::wstring user_login;
};

CommandLine ParseCommandLine(const CodePage& ansi, const std::wstring& command_line);

// Whether the run is logged: "/NOLOG" in any case, anywhere, turns the log off.
bool IsLoggingOn(const std::wstring& command_line);

// The value that follows a switch, up to the next " /" and without its outer blanks. `switch_text`
// is a blank, a slash and the letter in upper case; the switch is found in any case.
std::wstring GetSwitchValue(const CodePage& ansi, const std::wstring& command_text,
                            const std::wstring& switch_text);

}  // namespace pxscheduler
