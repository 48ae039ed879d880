#pragma once

#include "app/linux/machine.h"
#include "app/platform.h"
#include "letters/converted_files.h"

namespace pxscheduler {

// The components that a run on Linux uses: the embedded engine and SQL Server as data access, mail
// over the machine's sockets, and our own text control. They must outlive what they make, and the
// machine must outlive them.
class LinuxComponents : public Components {
 public:
  explicit LinuxComponents(LinuxMachine& machine) : machine_(machine) {}

  std::unique_ptr<Connection> NewConnection() override;
  std::unique_ptr<Recordset> NewRecordset() override;
  std::unique_ptr<MailComponent> NewMailComponent() override;
  std::unique_ptr<TextControl> NewTextControl() override;

 private:
  LinuxMachine& machine_;
  ConvertedFiles converted_;
};

}  // namespace pxscheduler
