#include "delivery/smtp/session.h"

#include <algorithm>
#include <utility>

#include "delivery/mime/ascii_domain.h"
#include "text/base64.h"

namespace pxscheduler {

namespace {

constexpr std::int32_t kImplicitTlsPort = 465;  // RFC 8314
constexpr int kServiceClosing = 421;
constexpr int kStartMailInput = 354;
// "Unrecognized mechanism" and "mechanism is too weak": another one may do.
constexpr int kMechanismUnknown = 504;
constexpr int kMechanismTooWeak = 534;
// What a server that broke off in the middle of a message may still have to say.
constexpr std::chrono::milliseconds kLastWords{2000};
constexpr std::chrono::milliseconds kFarewell{1000};

Deadline After(std::chrono::milliseconds time) { return std::chrono::steady_clock::now() + time; }

// A name that a server can look up. A name of one label, or of digits alone, tells it nothing.
bool IsFullDomain(const std::string& name) {
  const std::size_t dot = name.rfind('.');
  return dot != std::string::npos &&
         name.find_first_not_of("0123456789", dot + 1) != std::string::npos &&
         AsciiDomain(std::wstring(name.begin(), name.end())).has_value();
}

std::string AddressLiteral(const std::string& address) {
  return (address.find(':') == std::string::npos ? "[" : "[IPv6:") + address + "]";
}

}  // namespace

SendOutcome SmtpSession::Open(Network& network, const ServerSettings& settings,
                              std::unique_ptr<SmtpSession>& session) {
  std::unique_ptr<Transport> transport;
  const Timeouts& timeouts = settings.timeouts;
  const ConnectTimeouts connect_timeouts{.resolve = timeouts.resolve,
                                         .connect = timeouts.connect,
                                         .shortest_step = std::min(timeouts.reply, timeouts.data)};
  switch (network.Connect(settings.host, settings.port, connect_timeouts, transport)) {
    case ConnectResult::kNameUnknown:
      return SendOutcome::kNameUnknown;
    case ConnectResult::kNameTimedOut:
      return SendOutcome::kNameTimedOut;
    case ConnectResult::kRefused:
      return SendOutcome::kConnectionRefused;
    case ConnectResult::kTimedOut:
      return SendOutcome::kConnectTimedOut;
    case ConnectResult::kConnected:
      break;
  }
  std::unique_ptr<SmtpSession> opened(new SmtpSession(network, settings, std::move(transport)));
  if (const Failure failure = opened->Establish()) return *failure;
  session = std::move(opened);
  return SendOutcome::kDelivered;
}

SmtpSession::SmtpSession(Network& network, ServerSettings settings,
                         std::unique_ptr<Transport> transport)
    : network_(network), settings_(std::move(settings)), transport_(std::move(transport)) {}

SmtpSession::~SmtpSession() {
  if (state_ == State::kIdentified || state_ == State::kReady)
    transport_->Send("QUIT\r\n", After(std::min(kFarewell, settings_.timeouts.reply)));
}

SmtpSession::Failure SmtpSession::Establish() {
  const bool is_secure_from_start =
      settings_.port == kImplicitTlsPort && settings_.security != Security::kNone;
  Failure failure = is_secure_from_start ? StartTls() : std::nullopt;
  if (!failure) failure = Greet();
  if (!failure) failure = Hello();
  if (!failure && !is_secure_) failure = Secure();
  if (!failure && settings_.credentials) failure = Authenticate();
  if (!failure) state_ = State::kReady;
  return failure;
}

SmtpSession::Failure SmtpSession::StartTls() {
  const bool checks = settings_.security == Security::kRequired ||
                      (settings_.security == Security::kWhenOffered && settings_.credentials);
  const IoResult result =
      network_.StartTls(transport_, settings_.host,
                        checks ? CertificateCheck::kTrustAndHostName : CertificateCheck::kNone,
                        After(settings_.timeouts.handshake));
  if (result != IoResult::kDone) {
    return Close(result == IoResult::kTimedOut ? SendOutcome::kReplyTimedOut
                                               : SendOutcome::kTlsFailed);
  }
  is_secure_ = true;
  return std::nullopt;
}

SmtpSession::Failure SmtpSession::Greet() {
  if (const Failure failure = ReadReply(settings_.timeouts.reply)) return failure;
  if (reply_.code != 220) return Close(SendOutcome::kNotSmtp);
  state_ = State::kGreeted;
  return std::nullopt;
}

SmtpSession::Failure SmtpSession::Hello() {
  extensions_ = {};
  const std::string name = ClientName();
  if (const Failure failure = Exchange("EHLO " + name)) return failure;
  if (reply_.IsPositive()) {
    extensions_ = ReadExtensions(reply_);
  } else if (reply_.IsRefusal() && reply_.code != kServiceClosing) {
    if (const Failure failure = Exchange("HELO " + name)) return failure;
  }
  if (!reply_.IsPositive()) return Close(SendOutcome::kHelloRefused);
  state_ = State::kIdentified;
  return std::nullopt;
}

SmtpSession::Failure SmtpSession::Secure() {
  if (settings_.security == Security::kNone) return std::nullopt;
  const bool may_stay_clear = settings_.security != Security::kRequired;
  if (!extensions_.start_tls) return may_stay_clear ? Failure() : Close(SendOutcome::kTlsFailed);
  if (const Failure failure = Exchange("STARTTLS")) return failure;
  if (reply_.code != 220) {
    // A server that offers TLS and then refuses it gets no password.
    const bool goes_on = may_stay_clear && !settings_.credentials && reply_.IsRefusal() &&
                         reply_.code != kServiceClosing;
    return goes_on ? Failure() : Close(SendOutcome::kTlsFailed);
  }
  reader_.Discard();  // what somebody else may have slipped in before the handshake
  if (const Failure failure = StartTls()) return failure;
  return Hello();
}

SmtpSession::Failure SmtpSession::Authenticate() {
  bool is_unknown = false;
  for (const std::string_view mechanism : SaslMechanisms()) {
    if (!extensions_.Offers(mechanism)) continue;
    const auto exchange = NewSaslExchange(mechanism, *settings_.credentials);
    const Failure failure = Authenticate(*exchange, is_unknown);
    if (!is_unknown) return failure;
  }
  return Close(SendOutcome::kNoMechanism);
}

// RFC 4954. `is_unknown` says that the server does not know the mechanism after all.
SmtpSession::Failure SmtpSession::Authenticate(SaslExchange& exchange, bool& is_unknown) {
  std::string command = "AUTH " + std::string(exchange.Mechanism());
  if (const std::optional<std::string> response = exchange.InitialResponse())
    command += response->empty() ? " =" : " " + EncodeBase64(*response);
  Failure failure = Exchange(command);
  while (!failure && reply_.code == 334) {
    const std::optional<std::string> challenge = DecodeBase64(reply_.lines.front());
    const std::optional<std::string> response =
        challenge ? exchange.Respond(*challenge) : std::nullopt;
    if (!response) {
      (void)Exchange("*");
      return Close(SendOutcome::kAuthenticationProtocol);
    }
    failure = Exchange(EncodeBase64(*response));
  }
  if (failure) return failure;
  is_unknown = reply_.code == kMechanismUnknown || reply_.code == kMechanismTooWeak;
  if (is_unknown) return std::nullopt;
  if (reply_.IsRefusal()) return Close(SendOutcome::kCredentialsRefused);
  if (reply_.code != 235 || !exchange.IsComplete())
    return Close(SendOutcome::kAuthenticationProtocol);
  return std::nullopt;
}

Submission SmtpSession::Submit(const Envelope& envelope, std::string_view wire) {
  if (!extensions_.international || !extensions_.eight_bit) {
    if (!envelope.sender_is_ascii) return {.failure = SendOutcome::kSenderRefused};
    if (!envelope.recipient_is_ascii) return {.failure = SendOutcome::kRecipientRefused};
  }
  if (extensions_.largest_message > 0 && wire.size() > extensions_.largest_message)
    return {.failure = SendOutcome::kMessageRefused};
  WriteCommands(envelope, wire.size());
  const Progress progress = SendCommands();
  if (!progress.failure) return {.failure = SendMessage(wire)};
  return Fail(progress);
}

Submission SmtpSession::Fail(const Progress& progress) {
  RecoverFrom(progress);
  const SendOutcome outcome = *progress.failure;
  if (progress.sender_accepted ||
      (outcome != SendOutcome::kConnectionBroken && outcome != SendOutcome::kSenderRefused))
    return {.failure = outcome};
  if (has_accepted_sender_) (void)Close(outcome);
  return {.failure = outcome, .may_try_again = state_ == State::kClosed};
}

void SmtpSession::WriteCommands(const Envelope& envelope, std::size_t message_size) {
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
  if (extensions_.size) commands_.append(" SIZE=").append(std::to_string(message_size));
  const bool is_international = !envelope.sender_is_ascii || !envelope.recipient_is_ascii;
  if (is_international || envelope.has_eight_bit_parts) commands_ += " BODY=8BITMIME";
  if (is_international) commands_ += " SMTPUTF8";
  end_step(StepKind::kSender);
  commands_.append("RCPT TO:<").append(envelope.recipient).append(">");
  end_step(StepKind::kRecipient);
  commands_ += "DATA";
  end_step(StepKind::kData);
}

// With PIPELINING (RFC 2920) all the commands leave in one write and every reply is read, whatever
// it says. Without it each command waits for the reply to the one before, and the first failure is
// the last command.
SmtpSession::Progress SmtpSession::SendCommands() {
  Progress progress;
  std::size_t sent = 0;
  for (const Step& step : steps_) {
    if (sent < step.end) {
      const std::size_t end = extensions_.pipelining ? commands_.size() : step.end;
      progress.failure =
          Send(std::string_view(commands_).substr(sent, end - sent), settings_.timeouts.reply);
      sent = end;
    }
    if (state_ != State::kClosed) {
      const Failure failure = ReadReply(settings_.timeouts.reply);
      if (failure && !progress.failure) progress.failure = failure;
    }
    if (state_ == State::kClosed) return progress;
    Judge(step, progress);
    if (state_ == State::kClosed || (progress.failure && !extensions_.pipelining)) return progress;
  }
  needs_reset_ = false;
  return progress;
}

// Takes the reply to one step into account. A refused sender or recipient makes the server refuse
// what follows, so the first failure is the one that counts.
void SmtpSession::Judge(const Step& step, Progress& progress) {
  SendOutcome refusal = SendOutcome::kNotSmtp;
  bool accepted = reply_.IsPositive();
  switch (step.kind) {
    case StepKind::kReset:
      refusal = SendOutcome::kConnectionBroken;
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
      accepted = reply_.code == kStartMailInput;
      progress.wants_data = accepted;
      break;
  }
  const bool out_of_step = !accepted && !reply_.IsRefusal();
  if (!accepted && !progress.failure)
    progress.failure = out_of_step ? SendOutcome::kNotSmtp : refusal;
  // After a reply that does not fit its command no later one can be trusted to fit; a server that
  // cannot even start afresh, or says that it closes, is done.
  if (out_of_step || reply_.code == kServiceClosing || (!accepted && step.kind == StepKind::kReset))
    (void)Close(*progress.failure);
}

// Brings the dialogue back to where the next message may begin.
void SmtpSession::RecoverFrom(const Progress& progress) {
  if (state_ == State::kClosed) return;
  needs_reset_ = true;
  if (!progress.wants_data) return;
  // The server waits for a message that it must not get. With no recipient an empty one is harmless
  // and ends the waiting (RFC 2920 section 3.1); else only the end of the connection does.
  if (progress.recipient_accepted || Exchange(".") || reply_.code == kServiceClosing)
    (void)Close(*progress.failure);
}

SmtpSession::Failure SmtpSession::SendMessage(std::string_view wire) {
  needs_reset_ = false;
  const IoResult sent = transport_->Send(wire, After(settings_.timeouts.data));
  if (sent != IoResult::kDone) {
    const bool refused =
        sent == IoResult::kBroken &&
        reader_.Read(*transport_, After(std::min(kLastWords, settings_.timeouts.reply)), reply_) ==
            ReadResult::kReply &&
        reply_.IsRefusal();
    return Close(refused                       ? SendOutcome::kMessageRefused
                 : sent == IoResult::kTimedOut ? SendOutcome::kReplyTimedOut
                                               : SendOutcome::kConnectionBroken);
  }
  return std::nullopt;
}

SendOutcome SmtpSession::AwaitAcceptance() {
  if (const Failure failure = ReadReply(settings_.timeouts.acceptance)) return *failure;
  if (reply_.IsPositive()) return SendOutcome::kDelivered;
  if (!reply_.IsRefusal()) return *Close(SendOutcome::kNotSmtp);
  needs_reset_ = true;
  if (reply_.code == kServiceClosing) (void)Close(SendOutcome::kMessageRefused);
  return SendOutcome::kMessageRefused;
}

SmtpSession::Failure SmtpSession::Send(std::string_view bytes, std::chrono::milliseconds time) {
  switch (transport_->Send(bytes, After(time))) {
    case IoResult::kDone:
      return std::nullopt;
    case IoResult::kTimedOut:
      return Close(SendOutcome::kReplyTimedOut);
    case IoResult::kBroken:
      break;
  }
  return Close(SendOutcome::kConnectionBroken);
}

SmtpSession::Failure SmtpSession::ReadReply(std::chrono::milliseconds time) {
  switch (reader_.Read(*transport_, After(time), reply_)) {
    case ReadResult::kReply:
      return std::nullopt;
    case ReadResult::kTimedOut:
      return Close(SendOutcome::kReplyTimedOut);
    case ReadResult::kNotSmtp:
      return Close(SendOutcome::kNotSmtp);
    case ReadResult::kBroken:
      break;
  }
  return Close(SendOutcome::kConnectionBroken);
}

// Sends one command and reads the reply to it.
SmtpSession::Failure SmtpSession::Exchange(std::string_view command) {
  const Failure failure = Send(std::string(command) + "\r\n", settings_.timeouts.reply);
  return failure ? failure : ReadReply(settings_.timeouts.reply);
}

// Ends the session for the given reason, which it returns.
SmtpSession::Failure SmtpSession::Close(SendOutcome outcome) {
  state_ = State::kClosed;
  return outcome;
}

std::string SmtpSession::ClientName() const {
  const std::string name = network_.HostName();
  return IsFullDomain(name) ? name : AddressLiteral(transport_->LocalAddress());
}

}  // namespace pxscheduler
