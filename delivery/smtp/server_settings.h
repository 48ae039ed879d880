#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "delivery/smtp/sasl.h"
#include "platform/system.h"

namespace pxscheduler {

// How TLS protects the connection to the server.
enum class Security {
  kWhenOffered,  // the certificate is checked where a password will be sent
  kRequired,     // nothing is sent in the clear, the certificate is always checked
  kUnverified,   // as kWhenOffered, but no certificate is checked
  kNone,
};

// Reads MailComponent::SetSecurity's text.
Security ReadSecurity(std::wstring_view text);

// How long each step of a delivery may take. Shorter than RFC 5321 section 4.5.3.2 asks of a relay
// that can wait, and long enough for a server that delays strangers on purpose. `acceptance` is the
// longest: a message that the server accepts after this client gave up counts as failed.
struct Timeouts {
  std::chrono::milliseconds resolve{20'000};
  std::chrono::milliseconds connect{30'000};  // all addresses of a name together
  std::chrono::milliseconds handshake{30'000};
  std::chrono::milliseconds reply{60'000};
  std::chrono::milliseconds data{120'000};        // to transfer one message
  std::chrono::milliseconds acceptance{300'000};  // the reply after the message

  // The same, with no step longer than `longest`.
  Timeouts AtMost(std::chrono::milliseconds longest) const;
};

// The times above, each at most the milliseconds in the environment variable
// PXSCHEDULER_SMTP_TIMEOUT_MS where that holds a number.
Timeouts ReadTimeouts(const System& system);

struct ServerSettings {
  std::string host;  // as ResolvableHost returns it
  std::int32_t port = 0;
  Security security = Security::kWhenOffered;
  std::optional<Credentials> credentials;  // nothing: no authentication
  Timeouts timeouts;
};

// The form of a host that a resolver takes: a name in ASCII (IDNA) or a numeric address. "" for a
// text that is neither.
std::string ResolvableHost(std::wstring_view host);

}  // namespace pxscheduler
