#include "app/run_log.h"

namespace pxscheduler {
namespace {

constexpr wchar_t kSeparator[] = L"================================";

void WriteBlock(AppendFile& log, const System& system, const Regional& regional,
                std::wstring_view caption) {
  WriteLogLine(log, kSeparator);
  WriteLogLine(log, std::wstring{caption} + GeneralDate(regional, system.Now().local));
  WriteLogLine(log, kSeparator);
}

}  // namespace

std::unique_ptr<AppendFile> OpenRunLog(System& system, const std::wstring& data_folder) {
  return system.OpenForAppend(data_folder + L"PXScheduler.log");
}

void WriteLogLine(AppendFile& log, std::wstring_view text) {
  log.Append(std::wstring{text} + L"\r\n");
}

void WriteStartBlock(AppendFile& log, const System& system, const Regional& regional) {
  WriteBlock(log, system, regional, L"Query started: ");
}

void WriteEndBlock(AppendFile& log, const System& system, const Regional& regional) {
  WriteBlock(log, system, regional, L"Query finished: ");
}

}  // namespace pxscheduler
