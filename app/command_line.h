#pragma once

#include <string>

#include "platform/code_page.h"

namespace pxscheduler {

// The switches of the command line, "" where one is missing.
struct CommandLine {
  std::wstring query_name;
  std::wstring subject;
  std::wstring body_file;
  std::wstring user_login;
};

CommandLine ParseCommandLine(const CodePage& ansi, const std::wstring& command_line);

// Whether the run is logged: "/NOLOG" anywhere, in any case, turns the log off.
bool IsLoggingOn(const std::wstring& command_line);

}  // namespace pxscheduler
