#include "delivery/smtp/mail_transactions.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace pxscheduler {

namespace {

constexpr int kStartMailInput = 354;
// For the reply of a server that breaks off in the middle of a message.
constexpr std::chrono::milliseconds kLastReplyTime{2000};
constexpr std::string_view kMessageStep = "the message";

}  // namespace

std::string_view MailTransactions::NameOf(StepKind step) {
  switch (step) {
    case StepKind::kReset:
      return "RSET";
    case StepKind::kSender:
      return "MAIL";
    case StepKind::kRecipient:
      return "RCPT";
    case StepKind::kData:
      break;
  }
  return "DATA";
}

MailTransactions::MailTransactions(std::unique_ptr<SmtpSession> session)
    : session_(std::move(session)) {}

Submission MailTransactions::Submit(const Envelope& envelope, std::string_view wire) {
  const ServerExtensions& extensions = session_->Extensions();
  if (!extensions.international || !extensions.eight_bit) {
    const char* const words = "the server takes no addresses beyond ASCII";
    if (!envelope.sender_is_ascii) return {.failure = Fault(SendOutcome::kSenderRefused, words)};
    if (!envelope.recipient_is_ascii)
      return {.failure = Fault(SendOutcome::kRecipientRefused, words)};
  }
  if (extensions.largest_message > 0 && wire.size() > extensions.largest_message)
    return {.failure = Fault(SendOutcome::kMessageRefused,
                             "the message has " + std::to_string(wire.size()) +
                                 " bytes, and the server takes " +
                                 std::to_string(extensions.largest_message) + " at most")};
  WriteCommands(envelope, wire.size());
  const Progress progress = SendCommands();
  if (!progress.failure) return {.failure = SendMessage(wire), .sender_accepted = true};
  return Fail(progress);
}

void MailTransactions::WriteCommands(const Envelope& envelope, std::size_t message_size) {
  commands_.clear();
  steps_.clear();
  const auto end_step = [this](StepKind kind) {
    commands_ += "\r\n";
    steps_.push_back({kind, commands_.size()});
  };
  if (needs_reset_) {
    commands_ += "RSET";
    end_step(StepKind::kReset);
  }
  commands_.append("MAIL FROM:<").append(envelope.sender).append(">");
  if (session_->Extensions().size) commands_.append(" SIZE=").append(std::to_string(message_size));
  const bool is_international = !envelope.sender_is_ascii || !envelope.recipient_is_ascii;
  if (is_international || envelope.has_eight_bit_parts) commands_ += " BODY=8BITMIME";
  if (is_international) commands_ += " SMTPUTF8";
  end_step(StepKind::kSender);
  commands_.append("RCPT TO:<").append(envelope.recipient).append(">");
  end_step(StepKind::kRecipient);
  commands_ += "DATA";
  end_step(StepKind::kData);
}

// With PIPELINING (RFC 2920) all the commands leave in one write, and every reply is read, whatever
// it says. Without it each command waits for the reply to the one before, and the first failure
// ends the transaction.
MailTransactions::Progress MailTransactions::SendCommands() {
  const bool pipelining = session_->Extensions().pipelining;
  const std::chrono::milliseconds time = session_->StepTimeouts().reply;
  Progress progress;
  std::size_t sent = 0;
  for (const Step& step : steps_) {
    Failure failure;
    if (sent < step.end) {
      const std::size_t end = pipelining ? commands_.size() : step.end;
      failure = session_->Send(NameOf(step.kind),
                               std::string_view(commands_).substr(sent, end - sent), time);
      sent = end;
    }
    if (!failure) failure = session_->ReadReply(NameOf(step.kind), time);
    if (!failure) {
      Judge(step.kind, progress);
    } else if (!progress.failure) {
      progress.connection_ended = failure == SendOutcome::kConnectionFailed;
      progress.failure = std::move(failure);
    }
    if (session_->IsClosed() || (progress.failure && !pipelining)) break;
  }
  return progress;
}

// Takes the reply to one step into account. A server that refuses the sender or the recipient also
// refuses what follows, so the first failure is the one that counts.
void MailTransactions::Judge(StepKind step, Progress& progress) {
  const Reply& reply = session_->LastReply();
  SendOutcome refusal{};
  bool accepted = reply.IsPositive();
  switch (step) {
    case StepKind::kReset:
      refusal = SendOutcome::kConnectionFailed;
      break;
    case StepKind::kSender:
      refusal = SendOutcome::kSenderRefused;
      progress.sender_accepted = accepted;
      has_accepted_sender_ = has_accepted_sender_ || accepted;
      break;
    case StepKind::kRecipient:
      refusal = SendOutcome::kRecipientRefused;
      progress.recipient_accepted = accepted;
      break;
    case StepKind::kData:
      refusal = SendOutcome::kMessageRefused;
      accepted = reply.code == kStartMailInput;
      progress.wants_data = accepted;
      break;
  }
  const bool out_of_step = !accepted && !reply.IsRefusal();
  if (!accepted && !progress.failure) {
    progress.failure =
        session_->FaultOfReply(out_of_step ? SendOutcome::kNotSmtp : refusal, NameOf(step));
    progress.connection_ended = reply.IsClosing() || step == StepKind::kReset;
  }
  // After a reply that does not fit its command no later one can be trusted to fit. A server that
  // closes the connection, or cannot even reset, takes no more messages.
  if (out_of_step || reply.IsClosing() || (!accepted && step == StepKind::kReset))
    (void)session_->Close(*progress.failure);
}

Submission MailTransactions::Fail(const Progress& progress) {
  RecoverFrom(progress);
  Submission submission{.failure = progress.failure, .sender_accepted = progress.sender_accepted};
  if (progress.connection_ended) {
    submission.may_try_again = true;
  } else if (progress.failure == SendOutcome::kSenderRefused && has_accepted_sender_) {
    (void)session_->Close(*progress.failure);
    submission.may_try_again = true;
  }
  return submission;
}

// Brings the dialogue back to where the next message may begin.
void MailTransactions::RecoverFrom(const Progress& progress) {
  if (session_->IsClosed()) return;
  needs_reset_ = true;
  if (!progress.wants_data) return;
  // The server waits for a message that it must not get. Without a recipient an empty message is
  // harmless and ends the waiting (RFC 2920 section 3.1); otherwise only closing does.
  if (progress.recipient_accepted || session_->Exchange("an empty message", ".") ||
      session_->LastReply().IsClosing())
    (void)session_->Close(*progress.failure);
}

Failure MailTransactions::SendMessage(std::string_view wire) {
  needs_reset_ = false;
  const Timeouts& timeouts = session_->StepTimeouts();
  Failure failure = session_->Send(kMessageStep, wire, timeouts.data);
  // A server may say why it breaks off.
  if (failure == SendOutcome::kConnectionFailed &&
      !session_->ReadReply(kMessageStep, std::min(kLastReplyTime, timeouts.reply)) &&
      session_->LastReply().IsRefusal())
    return session_->FaultOfReply(SendOutcome::kMessageRefused, kMessageStep);
  return failure;
}

Failure MailTransactions::AwaitAcceptance() {
  if (Failure failure = session_->ReadReply(kMessageStep, session_->StepTimeouts().acceptance))
    return failure;
  const Reply& reply = session_->LastReply();
  if (reply.IsPositive()) return std::nullopt;
  if (!reply.IsRefusal())
    return session_->Close(session_->FaultOfReply(SendOutcome::kNotSmtp, kMessageStep));
  needs_reset_ = true;
  Fault refusal = session_->FaultOfReply(SendOutcome::kMessageRefused, kMessageStep);
  return reply.IsClosing() ? session_->Close(std::move(refusal)) : Failure(std::move(refusal));
}

}  // namespace pxscheduler
