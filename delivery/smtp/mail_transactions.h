#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "delivery/smtp/send_outcome.h"
#include "delivery/smtp/session.h"

namespace pxscheduler {

// Who a message is from and to, and what it asks of the server.
struct Envelope {
  std::string_view sender;
  std::string_view recipient;
  bool sender_is_ascii = true;
  bool recipient_is_ascii = true;
  bool has_eight_bit_parts = false;  // only for a server with 8BITMIME
};

struct Submission {
  // Nothing where the whole message was sent: AwaitAcceptance then tells what the server makes of
  // it.
  Failure failure;
  bool sender_accepted = false;
  // The connection ended before any of the message was sent, or the server now refuses a sender
  // that it accepted before (it may limit the messages of a connection). The session is closed; in
  // a new one the message may be sent again without any risk that it arrives twice.
  bool may_try_again = false;
};

// Hands over one message after another in a session, each in a mail transaction (RFC 5321 section
// 3.3).
class MailTransactions {
 public:
  explicit MailTransactions(std::unique_ptr<SmtpSession> session);

  const SmtpSession& Session() const { return *session_; }

  // Sends one message. `wire` is the message with its full stops doubled and the final one. Once
  // any of it may have left, it must not be submitted again, whatever the outcome.
  Submission Submit(const Envelope& envelope, std::string_view wire);
  // Waits for the reply to a message that Submit sent; due before the next one is submitted.
  // Nothing where the server has accepted it.
  Failure AwaitAcceptance();

 private:
  enum class StepKind { kReset, kSender, kRecipient, kData };
  struct Step {
    StepKind kind;
    std::size_t end;  // of the command, in commands_
  };
  // How far the server accepted a message.
  struct Progress {
    Failure failure;                // the first
    bool connection_ended = false;  // which was that failure
    bool sender_accepted = false;
    bool recipient_accepted = false;
    bool wants_data = false;
  };

  static std::string_view NameOf(StepKind step);
  void WriteCommands(const Envelope& envelope, std::size_t message_size);
  Progress SendCommands();
  void Judge(StepKind step, Progress& progress);
  Submission Fail(const Progress& progress);
  void RecoverFrom(const Progress& progress);
  Failure SendMessage(std::string_view wire);

  std::unique_ptr<SmtpSession> session_;
  bool needs_reset_ = false;
  bool has_accepted_sender_ = false;
  std::string commands_;
  std::vector<Step> steps_;
};

}  // namespace pxscheduler
