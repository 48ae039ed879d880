#include <new>
#include <string>

#include "app/run_driver.h"
#include "platform/linux/components.h"
#include "platform/linux/machine.h"
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

constexpr int kEndedByError = 1;

// The runtime's report of an error that nothing caught.
int Report(System& system, const RuntimeError& error) {
  system.ShowMessageBox(kApplicationTitle, L"Run-time error '" + std::to_wstring(error.number) +
                                               L"':\n\n" + error.description);
  return kEndedByError;
}

int Run(int argument_count, const char* const* arguments) {
  LinuxMachine machine(argument_count, arguments);
  LinuxComponents components(machine);
  try {
    Main(machine.Join(components));
    return 0;
  } catch (const RuntimeError& error) {
    return Report(machine.TheSystem(), error);
  } catch (const std::bad_alloc&) {
    return Report(machine.TheSystem(), OutOfMemory());
  }
}

}  // namespace
}  // namespace pxscheduler

int main(int argument_count, char** arguments) {
  return pxscheduler::Run(argument_count, arguments);
}
