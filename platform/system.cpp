#include "platform/system.h"

namespace pxscheduler {

std::wstring ProgressLine(const RunProgress& progress) {
  return L"\rSent " + std::to_wstring(progress.sent) + L", failed " +
         std::to_wstring(progress.failed) + L", " + std::to_wstring(progress.rows_done) + L" of " +
         std::to_wstring(progress.rows) + L" clients";
}

}  // namespace pxscheduler
