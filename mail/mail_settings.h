#pragma once

#include "data/connection.h"
#include "delivery/mail_component.h"
#include "platform/code_page.h"
#include "platform/passwords.h"
#include "platform/registry.h"
#include "platform/system.h"

namespace pxscheduler {

// Sets the server, sender, authentication, TLS and unsubscribe address of the mail component from
// the registry entries for the connection's current database. Raises TypeMismatch (13) for an
// "EmailAuthenticate" that is not a boolean, Overflow (6) for a port beyond 32 bits. System::Warn
// tells where a missing server was looked for.
void ApplyMailSettings(System& system, const Registry& registry, const CodePage& ansi,
                       const Passwords& passwords, Connection& connection, MailComponent& mail);

}  // namespace pxscheduler
