#include "delivery/smtp/session.h"

#include <algorithm>
#include <utility>

#include "delivery/mime/ascii_domain.h"
#include "network/address_scope.h"
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
constexpr std::size_t kMostWords = 400;  // characters of a reply that are told

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

Fault ConnectFault(ConnectResult result, const std::string& problem) {
  switch (result) {
    case ConnectResult::kNameUnknown:
      return {SendOutcome::kNameUnknown, "the name of the server is not known: " + problem};
    case ConnectResult::kNameTimedOut:
      return {SendOutcome::kNameTimedOut, "looking up the name of the server took too long"};
    case ConnectResult::kTimedOut:
      return {SendOutcome::kConnectTimedOut, "connecting took too long (" + problem + ")"};
    case ConnectResult::kRefused:
    case ConnectResult::kConnected:
      break;
  }
  return {SendOutcome::kConnectionRefused, "no connection (" + problem + ")"};
}

// Whether the words hold the password, as it is or in base64, as a server may repeat it.
bool Reveals(std::string_view words, const Credentials& credentials) {
  const std::string plain = '\0' + credentials.user_name + '\0' + credentials.password;
  for (const std::string& secret :
       {credentials.password, EncodeBase64(credentials.password), EncodeBase64(plain)})
    if (!credentials.password.empty() && words.find(secret) != std::string_view::npos) return true;
  return false;
}

}  // namespace

Failure SmtpSession::Open(Network& network, const ServerSettings& settings, LoginHistory& history,
                          std::unique_ptr<SmtpSession>& session) {
  std::unique_ptr<Transport> transport;
  const Timeouts& timeouts = settings.timeouts;
  const ConnectTimeouts connect_timeouts{.resolve = timeouts.resolve,
                                         .connect = timeouts.connect,
                                         .shortest_step = std::min(timeouts.reply, timeouts.data)};
  std::string problem;
  const ConnectResult result =
      network.Connect(settings.host, settings.port, connect_timeouts, transport, problem);
  if (result != ConnectResult::kConnected) return ConnectFault(result, problem);
  std::unique_ptr<SmtpSession> opened(new SmtpSession(network, settings, std::move(transport)));
  if (Failure failure = opened->Establish(history)) return failure;
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

Failure SmtpSession::Establish(LoginHistory& history) {
  const bool is_secure_from_start =
      settings_.port == kImplicitTlsPort && settings_.security != Security::kNone;
  Failure failure = is_secure_from_start ? StartTls() : std::nullopt;
  if (!failure) failure = Greet();
  if (!failure) failure = Identify();
  if (!failure && !is_secure_) failure = Secure();
  if (!failure && settings_.credentials) failure = Authenticate(history);
  return failure;
}

Failure SmtpSession::StartTls() {
  const bool checks = settings_.security == Security::kRequired ||
                      (settings_.security == Security::kWhenOffered && settings_.credentials);
  std::string problem;
  const IoResult result =
      network_.StartTls(transport_, settings_.host,
                        checks ? CertificateCheck::kTrustAndHostName : CertificateCheck::kNone,
                        After(settings_.timeouts.handshake), problem);
  if (result != IoResult::kDone) {
    return Close({result == IoResult::kTimedOut ? SendOutcome::kReplyTimedOut
                                                : SendOutcome::kConnectionFailed,
                  "TLS could not be started: " + problem});
  }
  is_secure_ = true;
  return std::nullopt;
}

Failure SmtpSession::Greet() {
  constexpr std::string_view kStep = "the connection";
  if (Failure failure = ReadReply(kStep, settings_.timeouts.reply)) return failure;
  return reply_.code == kServiceReady ? Failure()
                                      : Close(FaultOfReply(SendOutcome::kNotSmtp, kStep));
}

Failure SmtpSession::Identify() {
  extensions_ = {};
  const std::string name = ClientName();
  if (Failure failure = Exchange("EHLO", "EHLO " + name)) return failure;
  if (reply_.IsPositive()) {
    extensions_ = ReadExtensions(reply_);
  } else if (reply_.IsRefusal() && !reply_.IsClosing()) {
    if (Failure failure = Exchange("HELO", "HELO " + name)) return failure;
  }
  if (!reply_.IsPositive()) return Close(FaultOfReply(SendOutcome::kHelloRefused, "EHLO"));
  state_ = State::kIdentified;
  return std::nullopt;
}

Failure SmtpSession::Secure() {
  if (settings_.security == Security::kNone) return std::nullopt;
  const bool may_stay_clear = settings_.security != Security::kRequired;
  if (!extensions_.start_tls) {
    return may_stay_clear ? Failure()
                          : Close({SendOutcome::kConnectionFailed,
                                   "the server offers no TLS, which \"EmailSecurity\" requires"});
  }
  if (Failure failure = Exchange("STARTTLS", "STARTTLS")) return failure;
  if (reply_.code != kServiceReady) {
    // A server that offers TLS and then refuses it gets no password.
    const bool goes_on =
        may_stay_clear && !settings_.credentials && reply_.IsRefusal() && !reply_.IsClosing();
    return goes_on ? Failure() : Close(FaultOfReply(SendOutcome::kConnectionFailed, "STARTTLS"));
  }
  reader_.Discard();  // what an attacker may have injected before the handshake
  if (Failure failure = StartTls()) return failure;
  return Identify();
}

// Where the server refuses a challenge login, which its own directory may be unable to check, it
// gets the password itself, once a run and in TLS alone; if it takes that, so does each later
// login.
Failure SmtpSession::Authenticate(LoginHistory& history) {
  bool was_withheld = false;
  Failure unknown;
  for (const SaslMechanism& mechanism : SaslMechanisms()) {
    if (!extensions_.Offers(mechanism.name)) continue;
    if (!mechanism.shows_password && history.challenges_are_refused && is_secure_) continue;
    if (mechanism.shows_password && !MayShowPassword()) {
      was_withheld = true;
      continue;
    }
    history.password_was_shown |= mechanism.shows_password && !is_secure_ &&
                                  settings_.security != Security::kNone &&
                                  ScopeOf(transport_->PeerAddress()) == AddressScope::kPrivate;
    const auto exchange = mechanism.make(*settings_.credentials);
    Failure failure = Login(*exchange);
    const bool is_refused = failure == SendOutcome::kCredentialsRefused;
    if (is_refused && is_secure_ && !mechanism.shows_password && !reply_.IsClosing() &&
        (extensions_.Offers("PLAIN") || extensions_.Offers("LOGIN"))) {
      history.challenges_are_refused = true;
      state_ = State::kIdentified;
      continue;
    }
    if (failure != SendOutcome::kNoMechanism) return failure;
    unknown = std::move(failure);
    state_ = State::kIdentified;
  }
  if (unknown) return Close(*std::move(unknown));
  return Close({SendOutcome::kNoMechanism,
                was_withheld ? "the server offers no TLS, and a password does not go in the clear "
                               "beyond the own network, unless \"EmailSecurity\" is \"none\""
                             : "the server offers no login that this program knows" +
                                   std::string(is_secure_ ? "" : " (without TLS)")});
}

// A connection without TLS may be one from which an attacker has taken the offer of TLS.
bool SmtpSession::MayShowPassword() const {
  return is_secure_ || settings_.security == Security::kNone ||
         ScopeOf(transport_->PeerAddress()) != AddressScope::kPublic;
}

// RFC 4954. kNoMechanism where the server does not know the mechanism after all.
Failure SmtpSession::Login(SaslExchange& exchange) {
  const std::string step = "AUTH " + std::string(exchange.Mechanism());
  std::string command = step;
  if (const std::optional<std::string> response = exchange.InitialResponse())
    command += response->empty() ? " =" : " " + EncodeBase64(*response);
  Failure failure = Exchange(step, command);
  while (!failure && reply_.code == kServerChallenge) {
    const std::optional<std::string> challenge = DecodeBase64(reply_.lines.front());
    const std::optional<std::string> response =
        challenge ? exchange.Respond(*challenge) : std::nullopt;
    if (!response) {
      (void)Exchange(step, "*");
      return Close({SendOutcome::kAuthenticationProtocol,
                    step + ": the server asks for what this login does not know"});
    }
    failure = Exchange(step, EncodeBase64(*response));
  }
  if (failure) return failure;
  if (reply_.code == kMechanismUnknown || reply_.code == kMechanismTooWeak)
    return Close(FaultOfReply(SendOutcome::kNoMechanism, step));
  if (reply_.IsRefusal()) return Close(FaultOfReply(SendOutcome::kCredentialsRefused, step));
  if (reply_.code != kAuthenticated || !exchange.IsComplete())
    return Close(FaultOfReply(SendOutcome::kAuthenticationProtocol, step));
  return std::nullopt;
}

Failure SmtpSession::Send(std::string_view step, std::string_view bytes,
                          std::chrono::milliseconds time) {
  switch (transport_->Send(bytes, After(time))) {
    case IoResult::kDone:
      return std::nullopt;
    case IoResult::kTimedOut:
      return Close({SendOutcome::kReplyTimedOut, std::string(step) + " could not be sent in time"});
    case IoResult::kBroken:
      break;
  }
  return Close({SendOutcome::kConnectionFailed, "the connection broke at " + std::string(step)});
}

Failure SmtpSession::ReadReply(std::string_view step, std::chrono::milliseconds time) {
  switch (reader_.Read(*transport_, After(time), reply_)) {
    case ReadResult::kReply:
      return std::nullopt;
    case ReadResult::kTimedOut:
      return Close({SendOutcome::kReplyTimedOut, std::string(step) + " was not answered in " +
                                                     std::to_string(time.count()) + " ms"});
    case ReadResult::kNotSmtp:
      return Close({SendOutcome::kNotSmtp, "the answer to " + std::string(step) + " is not SMTP"});
    case ReadResult::kBroken:
      break;
  }
  return Close({SendOutcome::kConnectionFailed, "the connection broke after " + std::string(step)});
}

Failure SmtpSession::Exchange(std::string_view step, std::string_view command) {
  Failure failure = Send(step, std::string(command) + "\r\n", settings_.timeouts.reply);
  return failure ? failure : ReadReply(step, settings_.timeouts.reply);
}

Fault SmtpSession::FaultOfReply(SendOutcome outcome, std::string_view step) const {
  std::string words = std::to_string(reply_.code);
  for (const std::string& line : reply_.lines) {
    if (words.size() + line.size() > kMostWords) break;
    words.append(line.empty() ? "" : " ").append(line);
  }
  if (settings_.credentials && Reveals(words, *settings_.credentials))
    words = std::to_string(reply_.code) + " (and words that repeat the password)";
  return {outcome, std::string(step) + " was answered \"" + words + "\""};
}

Failure SmtpSession::Close(Fault reason) {
  state_ = State::kClosed;
  return reason;
}

std::string SmtpSession::ClientName() const {
  const std::string name = network_.HostName();
  return IsFullDomain(name) ? name : AddressLiteral(transport_->LocalAddress());
}

}  // namespace pxscheduler
