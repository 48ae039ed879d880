#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace pxscheduler {

// The encodings that ICU knows. What an encoding lacks becomes "?" without a search for something
// similar. An encoding serves one thread.
class IcuCodePages : public CodePages {
 public:
  // `ansi` is the Windows number of the ANSI code page ("1252"). Raises InvalidProcedureCall (5)
  // naming a code page that the machine does not know.
  explicit IcuCodePages(std::wstring_view ansi);

  const CodePage& Ansi() const override { return *ansi_; }
  std::unique_ptr<CodePage> Find(std::string_view name) const override;

 private:
  std::unique_ptr<CodePage> ansi_;
};

}  // namespace pxscheduler
