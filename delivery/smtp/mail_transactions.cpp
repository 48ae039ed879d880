#include "delivery/smtp/mail_transactions.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace pxscheduler {

namespace {

constexpr int kStartMailInput = 354;
// For the reply of a server that breaks off in the middle of a message.
constexpr std::chrono::milliseconds kLastReplyTime{2000};

}  // namespace

MailTransactions::MailTransactions(std::unique_ptr<SmtpSession> session)
    : session_(std::move(session)) {}

Submission MailTransactions::Submit(const Envelope& envelope, std::string_view wire) {
  const ServerExtensions& extensions = session_->Extensions();
  if (!extensions.international || !extensions.eight_bit) {
    if (!envelope.sender_is_ascii) return {.failure = SendOutcome::kSenderRefused};
    if (!envelope.recipient_is_ascii) return {.failure = SendOutcome::kRecipientRefused};
  }
  if (extensions.largest_message > 0 && wire.size() > extensions.largest_message)
    return {.failure = SendOutcome::kMessageRefused};
  WriteCommands(envelope, wire.size());
  const Progress progress = SendCommands();
  if (!progress.failure) return {.failure = SendMessage(wire)};
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
      failure = session_->Send(std::string_view(commands_).substr(sent, end - sent), time);
      sent = end;
    }
    if (!failure) failure = session_->ReadReply(time);
    if (!failure)
      Judge(step.kind, progress);
    else if (!progress.failure)
      progress.failure = failure;
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
  if (!accepted && !progress.failure)
    progress.failure = out_of_step ? SendOutcome::kNotSmtp : refusal;
  // After a reply that does not fit its command no later one can be trusted to fit. A server that
  // closes the connection, or cannot even reset, takes no more messages.
  if (out_of_step || reply.IsClosing() || (!accepted && step == StepKind::kReset))
    (void)session_->Close(*progress.failure);
}

Submission MailTransactions::Fail(const Progress& progress) {
  RecoverFrom(progress);
  const SendOutcome outcome = *progress.failure;
  if (progress.sender_accepted ||
      (outcome != SendOutcome::kConnectionFailed && outcome != SendOutcome::kSenderRefused))
    return {.failure = outcome};
  if (has_accepted_sender_) (void)session_->Close(outcome);
  return {.failure = outcome, .may_try_again = session_->IsClosed()};
}

// Brings the dialogue back to where the next message may begin.
void MailTransactions::RecoverFrom(const Progress& progress) {
  if (session_->IsClosed()) return;
  needs_reset_ = true;
  if (!progress.wants_data) return;
  // The server waits for a message that it must not get. Without a recipient an empty message is
  // harmless and ends the waiting (RFC 2920 section 3.1); otherwise only closing does.
  if (progress.recipient_accepted || session_->Exchange(".") || session_->LastReply().IsClosing())
    (void)session_->Close(*progress.failure);
}

Failure MailTransactions::SendMessage(std::string_view wire) {
  needs_reset_ = false;
  const Timeouts& timeouts = session_->StepTimeouts();
  const Failure failure = session_->Send(wire, timeouts.data);
  // A server may say why it breaks off.
  if (failure == SendOutcome::kConnectionFailed &&
      !session_->ReadReply(std::min(kLastReplyTime, timeouts.reply)) &&
      session_->LastReply().IsRefusal())
    return SendOutcome::kMessageRefused;
  return failure;
}

SendOutcome MailTransactions::AwaitAcceptance() {
  if (const Failure failure = session_->ReadReply(session_->StepTimeouts().acceptance))
    return *failure;
  const Reply& reply = session_->LastReply();
  if (reply.IsPositive()) return SendOutcome::kDelivered;
  if (!reply.IsRefusal()) return *session_->Close(SendOutcome::kNotSmtp);
  needs_reset_ = true;
  if (reply.IsClosing()) (void)session_->Close(SendOutcome::kMessageRefused);
  return SendOutcome::kMessageRefused;
}

}  // namespace pxscheduler
