#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/regional.h"
#include "platform/system.h"

namespace pxscheduler {

// Opens PXScheduler.log in the data folder, which ends in "\", for appending. Raises the errors of
// System::OpenForAppend.
std::unique_ptr<AppendFile> OpenRunLog(System& system, const std::wstring& data_folder);

// Writes the text and a line break.
void WriteLogLine(AppendFile& log, std::wstring_view text);

// Each writes the current date and time between two separator lines.
void WriteStartBlock(AppendFile& log, const System& system, const Regional& regional);
void WriteEndBlock(AppendFile& log, const System& system, const Regional& regional);

}  // namespace pxscheduler
