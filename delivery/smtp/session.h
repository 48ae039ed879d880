#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include "delivery/smtp/reply_reader.h"
#include "delivery/smtp/sasl.h"
#include "delivery/smtp/send_outcome.h"
#include "delivery/smtp/server_extensions.h"
#include "delivery/smtp/server_settings.h"
#include "network/network.h"

namespace pxscheduler {

// What the logins of a run have shown.
struct LoginHistory {
  // The server refused the credentials by a challenge; since then the password itself is sent.
  bool challenges_are_refused = false;
  // A password went in the clear to an address of a private network.
  bool password_was_shown = false;
};

// A session with an SMTP server (RFC 5321): one connection, from the greeting to QUIT. Closed once,
// it stays closed.
class SmtpSession {
 public:
  // Connects, greets, starts TLS and authenticates, as the settings ask. Sets `session` where all
  // that succeeds. The network must outlive the session.
  // `history` is that of the logins with these settings, to which it adds.
  static Failure Open(Network& network, const ServerSettings& settings, LoginHistory& history,
                      std::unique_ptr<SmtpSession>& session);

  SmtpSession(const SmtpSession&) = delete;
  SmtpSession& operator=(const SmtpSession&) = delete;
  // Sends QUIT unless the session is closed, and does not wait for the reply.
  ~SmtpSession();

  const ServerExtensions& Extensions() const { return extensions_; }
  const Timeouts& StepTimeouts() const { return settings_.timeouts; }
  bool IsClosed() const { return state_ == State::kClosed; }

  // Each of these closes the session where it fails. `step` is what is sent or answered, in words
  // for an operator: "MAIL", "the message".
  Failure Send(std::string_view step, std::string_view bytes, std::chrono::milliseconds time);
  Failure ReadReply(std::string_view step, std::chrono::milliseconds time);
  // Sends a command, to which it adds the line break, and reads the reply.
  Failure Exchange(std::string_view step, std::string_view command);

  // The reply that was read last.
  const Reply& LastReply() const { return reply_; }
  // A fault that lies in that reply.
  Fault FaultOfReply(SendOutcome outcome, std::string_view step) const;

  // Closes the session and returns the reason.
  Failure Close(Fault reason);

 private:
  enum class State { kConnected, kIdentified, kClosed };

  SmtpSession(Network& network, ServerSettings settings, std::unique_ptr<Transport> transport);

  Failure Establish(LoginHistory& history);
  // The steps of Establish, in their order.
  Failure StartTls();
  Failure Greet();
  Failure Identify();
  Failure Secure();
  Failure Authenticate(LoginHistory& history);
  Failure Login(SaslExchange& exchange);
  bool MayShowPassword() const;

  std::string ClientName() const;

  Network& network_;
  const ServerSettings settings_;
  std::unique_ptr<Transport> transport_;
  ReplyReader reader_;
  Reply reply_;
  State state_ = State::kConnected;
  bool is_secure_ = false;
  ServerExtensions extensions_;
};

}  // namespace pxscheduler
