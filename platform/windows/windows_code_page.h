#pragma once

#include <memory>
#include <string_view>

#include "platform/code_page.h"

namespace pxscheduler {

// The encodings that the system knows. What an encoding lacks becomes what the system's own
// conversion makes of it: a similar letter, else "?".
class WindowsCodePages : public CodePages {
 public:
  WindowsCodePages();

  const CodePage& Ansi() const override { return *ansi_; }
  std::unique_ptr<CodePage> Find(std::string_view name) const override;

 private:
  std::unique_ptr<CodePage> ansi_;
};

}  // namespace pxscheduler
