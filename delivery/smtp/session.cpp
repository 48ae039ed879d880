#include "delivery/smtp/session.h"

#include <algorithm>
#include <utility>

#include "delivery/mime/ascii_domain.h"
#include "text/base64.h"

namespace pxscheduler {

namespace {

constexpr std::int32_t kImplicitTlsPort = 465;  // RFC 8314
constexpr int kServiceReady = 220;
constexpr int kAuthenticated = 235;
constexpr int kServerChallenge = 334;
// After either of these another mechanism may do.
constexpr int kMechanismUnknown = 504;
constexpr int kMechanismTooWeak = 534;
constexpr std::chrono::milliseconds kQuitTime{1000};

Deadline After(std::chrono::milliseconds time) { return std::chrono::steady_clock::now() + time; }

// A name that a server can look up, unlike one of a single label or one that ends in a number.
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

Failure SmtpSession::Open(Network& network, const ServerSettings& settings,
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
  return std::nullopt;
}

SmtpSession::SmtpSession(Network& network, ServerSettings settings,
                         std::unique_ptr<Transport> transport)
    : network_(network), settings_(std::move(settings)), transport_(std::move(transport)) {}

SmtpSession::~SmtpSession() {
  if (state_ == State::kIdentified)
    transport_->Send("QUIT\r\n", After(std::min(kQuitTime, settings_.timeouts.reply)));
}

Failure SmtpSession::Establish() {
  const bool is_secure_from_start =
      settings_.port == kImplicitTlsPort && settings_.security != Security::kNone;
  Failure failure = is_secure_from_start ? StartTls() : std::nullopt;
  if (!failure) failure = Greet();
  if (!failure) failure = Identify();
  if (!failure && !is_secure_) failure = Secure();
  if (!failure && settings_.credentials) failure = Authenticate();
  return failure;
}

Failure SmtpSession::StartTls() {
  const bool checks = settings_.security == Security::kRequired ||
                      (settings_.security == Security::kWhenOffered && settings_.credentials);
  const IoResult result =
      network_.StartTls(transport_, settings_.host,
                        checks ? CertificateCheck::kTrustAndHostName : CertificateCheck::kNone,
                        After(settings_.timeouts.handshake));
  if (result != IoResult::kDone) {
    return Close(result == IoResult::kTimedOut ? SendOutcome::kReplyTimedOut
                                               : SendOutcome::kConnectionFailed);
  }
  is_secure_ = true;
  return std::nullopt;
}

Failure SmtpSession::Greet() {
  if (const Failure failure = ReadReply(settings_.timeouts.reply)) return failure;
  return reply_.code == kServiceReady ? Failure() : Close(SendOutcome::kNotSmtp);
}

Failure SmtpSession::Identify() {
  extensions_ = {};
  const std::string name = ClientName();
  if (const Failure failure = Exchange("EHLO " + name)) return failure;
  if (reply_.IsPositive()) {
    extensions_ = ReadExtensions(reply_);
  } else if (reply_.IsRefusal() && !reply_.IsClosing()) {
    if (const Failure failure = Exchange("HELO " + name)) return failure;
  }
  if (!reply_.IsPositive()) return Close(SendOutcome::kHelloRefused);
  state_ = State::kIdentified;
  return std::nullopt;
}

Failure SmtpSession::Secure() {
  if (settings_.security == Security::kNone) return std::nullopt;
  const bool may_stay_clear = settings_.security != Security::kRequired;
  if (!extensions_.start_tls)
    return may_stay_clear ? Failure() : Close(SendOutcome::kConnectionFailed);
  if (const Failure failure = Exchange("STARTTLS")) return failure;
  if (reply_.code != kServiceReady) {
    // A server that offers TLS and then refuses it gets no password.
    const bool goes_on =
        may_stay_clear && !settings_.credentials && reply_.IsRefusal() && !reply_.IsClosing();
    return goes_on ? Failure() : Close(SendOutcome::kConnectionFailed);
  }
  reader_.Discard();  // what an attacker may have injected before the handshake
  if (const Failure failure = StartTls()) return failure;
  return Identify();
}

Failure SmtpSession::Authenticate() {
  bool is_unknown = false;
  for (const std::string_view mechanism : SaslMechanisms()) {
    if (!extensions_.Offers(mechanism)) continue;
    const auto exchange = NewSaslExchange(mechanism, *settings_.credentials);
    const Failure failure = Authenticate(*exchange, is_unknown);
    if (!is_unknown) return failure;
  }
  return Close(SendOutcome::kNoMechanism);
}

// RFC 4954. Sets `is_unknown` where the server does not know the mechanism after all.
Failure SmtpSession::Authenticate(SaslExchange& exchange, bool& is_unknown) {
  std::string command = "AUTH " + std::string(exchange.Mechanism());
  if (const std::optional<std::string> response = exchange.InitialResponse())
    command += response->empty() ? " =" : " " + EncodeBase64(*response);
  Failure failure = Exchange(command);
  while (!failure && reply_.code == kServerChallenge) {
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
  if (reply_.code != kAuthenticated || !exchange.IsComplete())
    return Close(SendOutcome::kAuthenticationProtocol);
  return std::nullopt;
}

Failure SmtpSession::Send(std::string_view bytes, std::chrono::milliseconds time) {
  switch (transport_->Send(bytes, After(time))) {
    case IoResult::kDone:
      return std::nullopt;
    case IoResult::kTimedOut:
      return Close(SendOutcome::kReplyTimedOut);
    case IoResult::kBroken:
      break;
  }
  return Close(SendOutcome::kConnectionFailed);
}

Failure SmtpSession::ReadReply(std::chrono::milliseconds time) {
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
  return Close(SendOutcome::kConnectionFailed);
}

Failure SmtpSession::Exchange(std::string_view command) {
  const Failure failure = Send(std::string(command) + "\r\n", settings_.timeouts.reply);
  return failure ? failure : ReadReply(settings_.timeouts.reply);
}

Failure SmtpSession::Close(SendOutcome reason) {
  state_ = State::kClosed;
  return reason;
}

std::string SmtpSession::ClientName() const {
  const std::string name = network_.HostName();
  return IsFullDomain(name) ? name : AddressLiteral(transport_->LocalAddress());
}

}  // namespace pxscheduler
