#pragma once

#include <memory>

#include "app/platform.h"

namespace pxscheduler {

// The Linux machine that one process runs on. Everything is made when it is first asked for and
// lives as long as this object, so that a start costs nothing that the run does not need.
class LinuxMachine {
 public:
  // `argument_count` and `arguments` as main() gets them. Makes the process robust: standard input,
  // output and error are open, and writing to a connection or pipe that is gone is an error there
  // instead of the end of the process; so is writing beyond what a file may hold.
  LinuxMachine(int argument_count, const char* const* arguments);
  ~LinuxMachine();
  LinuxMachine(const LinuxMachine&) = delete;
  LinuxMachine& operator=(const LinuxMachine&) = delete;

  // Never raises.
  System& TheSystem();
  // The others raise what reading the registry raises, and what a setting in it raises.
  const Registry& TheRegistry();
  const CodePages& TheCodePages();
  const Regional& TheRegional();
  const Passwords& ThePasswords();

  // The machine for one run. This object and `components` must outlive it.
  Platform Join(Components& components);

 private:
  std::unique_ptr<System> system_;
  std::unique_ptr<Registry> registry_;
  std::unique_ptr<CodePages> code_pages_;
  std::unique_ptr<Regional> regional_;
  std::unique_ptr<Passwords> passwords_;
};

}  // namespace pxscheduler
