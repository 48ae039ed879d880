#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "delivery/smtp/reply_reader.h"
#include "delivery/smtp/result_code.h"
#include "delivery/smtp/sasl.h"
#include "delivery/smtp/server_extensions.h"
#include "delivery/smtp/timeouts.h"
#include "network/network.h"

namespace pxscheduler {

// How the connection to the server is protected.
enum class Security {
  kWhenOffered,  // the certificate is checked where a password will be sent
  kRequired,     // nothing is sent in the clear, the certificate is always checked
  kUnverified,   // as kWhenOffered, no certificate is checked
  kNone,
};

struct ServerSettings {
  std::string host;  // a name in its ASCII form, or a numeric address
  std::int32_t port = 0;
  Security security = Security::kWhenOffered;
  std::optional<Credentials> credentials;  // nothing: no authentication
  Timeouts timeouts;
};

struct Envelope {
  std::string_view sender;
  std::string_view recipient;
  bool sender_is_ascii = true;
  bool recipient_is_ascii = true;
  bool has_eight_bit_parts = false;  // which need a session that TakesEightBit
};

struct Submission {
  // Nothing where the whole message has left: what the server makes of it, AwaitAcceptance tells.
  std::optional<SendOutcome> failure;
  // The connection ended before the server accepted the sender, or the server no longer accepts the
  // sender that it did accept before (it may count the messages of a connection). The session is
  // closed, and on a new one the message may be tried again without any risk that it arrives twice.
  bool may_try_again = false;
};

// One connection to an SMTP server (RFC 5321), from its greeting to its end. Its states follow one
// another and never go back; a session that is closed stays closed.
class SmtpSession {
 public:
  enum class State { kConnected, kGreeted, kIdentified, kReady, kClosed };

  // Connects, greets, secures and authenticates. Sets `session` on kDelivered, which here means
  // that messages may follow.
  static SendOutcome Open(Network& network, const ServerSettings& settings,
                          std::unique_ptr<SmtpSession>& session);

  SmtpSession(const SmtpSession&) = delete;
  SmtpSession& operator=(const SmtpSession&) = delete;
  // Takes leave where the connection still stands, and does not wait for an answer.
  ~SmtpSession();

  // Hands over one message. `wire` is the message with its full stops doubled and the final one.
  // Once any of it may have left, the message must not be handed over again, whatever the outcome.
  Submission Submit(const Envelope& envelope, std::string_view wire);
  // Waits for the reply to a message that was submitted without a failure, before the next one.
  SendOutcome AwaitAcceptance();

  State CurrentState() const { return state_; }
  bool TakesEightBit() const { return extensions_.eight_bit; }

 private:
  enum class StepKind { kReset, kSender, kRecipient, kData };
  struct Step {
    StepKind kind;
    std::size_t end;  // of the command, in commands_
  };
  // How far one message came.
  struct Progress {
    std::optional<SendOutcome> failure;  // the first
    bool sender_accepted = false;
    bool recipient_accepted = false;
    bool wants_data = false;
  };
  using Failure = std::optional<SendOutcome>;

  SmtpSession(Network& network, ServerSettings settings, std::unique_ptr<Transport> transport);

  // The steps of opening, in their order. Each ends with the reason why it failed, if it did.
  Failure Establish();
  Failure StartTls();
  Failure Greet();
  Failure Hello();
  Failure Secure();
  Failure Authenticate();
  Failure Authenticate(SaslExchange& exchange, bool& is_unknown);

  void WriteCommands(const Envelope& envelope, std::size_t message_size);
  Progress SendCommands();
  void Judge(const Step& step, Progress& progress);
  Submission Fail(const Progress& progress);
  void RecoverFrom(const Progress& progress);
  Failure SendMessage(std::string_view wire);

  Failure Send(std::string_view bytes, std::chrono::milliseconds time);
  Failure ReadReply(std::chrono::milliseconds time);
  Failure Exchange(std::string_view command);
  Failure Close(SendOutcome outcome);
  std::string ClientName() const;

  Network& network_;
  const ServerSettings settings_;
  std::unique_ptr<Transport> transport_;
  ReplyReader reader_;
  Reply reply_;
  State state_ = State::kConnected;
  bool is_secure_ = false;
  bool needs_reset_ = false;
  bool has_accepted_sender_ = false;
  ServerExtensions extensions_;
  std::string commands_;
  std::vector<Step> steps_;
};

}  // namespace pxscheduler
