#pragma once

#include <memory>

#include "data/connection.h"
#include "data/recordset.h"
#include "delivery/mail_component.h"
#include "letters/text_control.h"
#include "platform/code_page.h"
#include "platform/passwords.h"
#include "platform/regional.h"
#include "platform/registry.h"
#include "platform/system.h"

namespace pxscheduler {

// Creates the components of a run when it needs them. Raises the platform's error where one cannot
// be created.
class Components {
 public:
  virtual ~Components() = default;

  virtual std::unique_ptr<Connection> NewConnection() = 0;
  virtual std::unique_ptr<Recordset> NewRecordset() = 0;
  virtual std::unique_ptr<MailComponent> NewMailComponent() = 0;
  virtual std::unique_ptr<TextControl> NewTextControl() = 0;
};

// Everything that the machine provides for one run. Its members must outlive the run.
struct Platform {
  System& system;
  const Registry& registry;
  const Regional& regional;
  const CodePage& ansi;
  const Passwords& passwords;
  Components& components;
};

}  // namespace pxscheduler
