#include <new>
#include <string>

#include "app/run_driver.h"
#ifdef _WIN32
#include "app/windows/components.h"
#include "app/windows/machine.h"
#else
#include "app/linux/components.h"
#include "app/linux/machine.h"
#endif
#include "platform/runtime_error.h"

namespace pxscheduler {
namespace {

constexpr int kEndedByError = 1;

// Shows an error that ended the run and returns the exit status.
int Report(System& system, const RuntimeError& error) {
  if (!error.details.empty()) system.Warn(error.details);
  system.ShowMessageBox(kApplicationTitle, L"Run-time error '" + std::to_wstring(error.number) +
                                               L"':\n\n" + error.description);
  return kEndedByError;
}

#ifdef _WIN32
using Machine = WindowsMachine;
using MachineComponents = WindowsComponents;
#else
using Machine = LinuxMachine;
using MachineComponents = LinuxComponents;
#endif

int Run(Machine& machine) {
  MachineComponents components(machine);
  try {
    return Main(machine.Join(components));
  } catch (const RuntimeError& error) {
    return Report(machine.TheSystem(), error);
  } catch (const std::bad_alloc&) {
    return Report(machine.TheSystem(), OutOfMemory());
  }
}

}  // namespace
}  // namespace pxscheduler

#ifdef _WIN32
int main() {
  pxscheduler::WindowsMachine machine;
  return pxscheduler::Run(machine);
}
#else
int main(int argument_count, char** arguments) {
  pxscheduler::LinuxMachine machine(argument_count, arguments);
  return pxscheduler::Run(machine);
}
#endif
