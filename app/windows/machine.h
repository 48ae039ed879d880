#pragma once

#include <memory>

#include "app/platform.h"

namespace pxscheduler {

// The Windows machine that one process runs on. Everything is made when it is first asked for and
// lives as long as this object.
class WindowsMachine {
 public:
  WindowsMachine();
  ~WindowsMachine();
  WindowsMachine(const WindowsMachine&) = delete;
  WindowsMachine& operator=(const WindowsMachine&) = delete;

  // None of these raises.
  System& TheSystem();
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
