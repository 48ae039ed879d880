#pragma once

#include "data/connection.h"
#include "delivery/mail_component.h"
#include "platform/code_page.h"
#include "platform/passwords.h"
#include "platform/registry.h"

namespace pxscheduler {

// Gives the mail component the server, sender, authentication, TLS and unsubscribing registered for
// the connection's current database. Raises TypeMismatch (13) for an "EmailAuthenticate" that is no
// boolean, Overflow (6) for a port beyond 32 bits.
void ApplyMailSettings(const Registry& registry, const CodePage& ansi, const Passwords& passwords,
                       Connection& connection, MailComponent& mail);

}  // namespace pxscheduler
