#pragma once

#include "app/platform.h"
#include "app/windows/machine.h"
#include "letters/converted_files.h"

namespace pxscheduler {

// The components that a run on Windows uses: ADO, the system's ODBC or the embedded engine as data
// access, mail over Winsock, and the rich-text component where it is registered. The machine must
// outlive them, and they what they make.
class WindowsComponents : public Components {
 public:
  explicit WindowsComponents(WindowsMachine& machine) : machine_(machine) {}

  std::unique_ptr<Connection> NewConnection() override;
  std::unique_ptr<Recordset> NewRecordset() override;
  std::unique_ptr<MailComponent> NewMailComponent() override;
  std::unique_ptr<TextControl> NewTextControl() override;

 private:
  WindowsMachine& machine_;
  ConvertedFiles converted_;
};

}  // namespace pxscheduler
