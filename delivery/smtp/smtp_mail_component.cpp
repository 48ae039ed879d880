#include "delivery/smtp/smtp_mail_component.h"

#include <new>
#include <utility>

#include "delivery/mime/ascii_domain.h"
#include "network/socket_network.h"
#include "platform/digests.h"
#include "text/ascii_case.h"
#include "text/text.h"
#include "text/utf8.h"

namespace pxscheduler {

namespace {

constexpr std::int32_t kCannotOpenFile = 10;
// What may wait to be sent before another message is composed.
constexpr std::size_t kMostBytesAhead = 65536;
constexpr std::size_t kBoundaryDigits = 16;  // 64 random bits

Security SecurityOf(std::wstring_view text) {
  const std::string name = LowerAscii(ToUtf8(TrimBlanks(text)));
  if (name.empty()) return Security::kWhenOffered;
  if (name == "unverified") return Security::kUnverified;
  return name == "none" ? Security::kNone : Security::kRequired;
}

// A host as the resolver takes it: a name in its ASCII form or a numeric address, "" for neither.
std::string ResolvableHost(std::wstring_view host) {
  const bool is_numeric =
      host.find_first_not_of(L"0123456789abcdefABCDEF.:%") == std::wstring_view::npos;
  if (is_numeric) return {host.begin(), host.end()};
  return AsciiDomain(host).value_or("");
}

// Nothing that is thrown leaves the component.
template <typename Step>
std::optional<SendOutcome> OutcomeOf(const Step& step) {
  try {
    return step();
  } catch (const std::bad_alloc&) {
    return SendOutcome::kOutOfMemory;
  } catch (...) {
    return SendOutcome::kOtherError;
  }
}

}  // namespace

SmtpMailComponent::SmtpMailComponent(const System& system, LetterReader read_letter,
                                     std::unique_ptr<Network> network, const Timeouts& timeouts)
    : system_(system),
      read_letter_(std::move(read_letter)),
      network_(std::move(network)),
      composer_(RandomToken().substr(0, kBoundaryDigits)) {
  server_.timeouts = timeouts;
}

SmtpMailComponent::~SmtpMailComponent() = default;

void SmtpMailComponent::SetServerHost(const std::wstring& host) {
  EndSession();
  host_ = TrimBlanks(host);
}

void SmtpMailComponent::SetServerPort(std::int32_t port) {
  EndSession();
  server_.port = port;
}

void SmtpMailComponent::SetSenderAddress(const std::wstring& address) {
  sender_ = ParseAddress(address);
  if (sender_) composer_.SetSender(*sender_);
}

void SmtpMailComponent::SetAuthenticationMode(std::int32_t mode) {
  EndSession();
  authenticates_ = mode != kAuthenticateNone;
}

// The option adds nothing: the strongest mechanism that the server offers is taken in any case.
void SmtpMailComponent::SetAuthenticationOption(std::int32_t /*option*/) {}

void SmtpMailComponent::SetUserName(const std::wstring& user_name) {
  EndSession();
  user_name_ = user_name;
}

void SmtpMailComponent::SetPassword(const std::wstring& password) {
  EndSession();
  password_ = password;
}

void SmtpMailComponent::SetSecurity(const std::wstring& security) {
  EndSession();
  server_.security = SecurityOf(security);
}

void SmtpMailComponent::SetUnsubscribe(const std::wstring& address) {
  composer_.SetUnsubscribe(UnsubscribeAddress(address));
}

std::int32_t SmtpMailComponent::LoadBodyFromFile(const std::wstring& path,
                                                 std::int32_t /*option*/) {
  std::optional<Letter> letter = read_letter_(path);
  if (!letter) return kCannotOpenFile;
  composer_.SetPictures(letter->pictures);
  letter_ = *std::move(letter);
  return 0;
}

void SmtpMailComponent::SetHtml(std::int32_t flag) { composer_.SetHtml(flag != 0); }

void SmtpMailComponent::SetMessageTemplate(MessageTemplate message) {
  composer_.SetTemplate(std::move(message));
}

bool SmtpMailComponent::CanComposeMore() const {
  return waiting_ == 0 || (waiting_ < composed_.size() && waiting_bytes_ < kMostBytesAhead);
}

void SmtpMailComponent::Compose(const std::wstring& display_name, const std::wstring& address,
                                std::span<const std::wstring> values) {
  Compose(display_name, address, values, nullptr);
}

void SmtpMailComponent::ComposeTexts(const std::wstring& display_name, const std::wstring& address,
                                     const MessageTexts& texts) {
  Compose(display_name, address, {}, &texts);
}

void SmtpMailComponent::Compose(const std::wstring& display_name, const std::wstring& address,
                                std::span<const std::wstring> values, const MessageTexts* texts) {
  ComposedMessage& message = composed_[(first_waiting_ + waiting_) % composed_.size()];
  message.wire.Clear();
  message.outcome = *OutcomeOf([&] {
    std::optional<Address> recipient = ParseAddress(address);
    if (!recipient) return SendOutcome::kRecipientRefused;
    message.recipient = *std::move(recipient);
    composer_.Compose({.recipient = {display_name, message.recipient},
                       .date = system_.Now(),
                       .message_id = identifiers_.Next(),
                       .values = values,
                       .texts = texts},
                      message.wire);
    return SendOutcome::kDelivered;
  });
  ++waiting_;
  waiting_bytes_ += message.wire.bytes.View().size();
}

void SmtpMailComponent::Send() {
  if (waiting_ == 0) {
    send_outcome_ = SendOutcome::kOtherError;  // no message is handed over twice
    return;
  }
  ComposedMessage& message = composed_[first_waiting_];
  --waiting_;
  waiting_bytes_ -= message.wire.bytes.View().size();
  send_outcome_ = OutcomeOf([&] { return HandOver(message); });
  // Where messages are too large to wait for one another, the same memory serves them all.
  first_waiting_ = waiting_ == 0 ? 0 : (first_waiting_ + 1) % composed_.size();
  DropClosedSession();
}

std::int32_t SmtpMailComponent::AwaitResult() {
  if (!send_outcome_) {
    send_outcome_ = OutcomeOf([this] { return session_->AwaitAcceptance(); });
    DropClosedSession();
  }
  return ResultCode(*send_outcome_);
}

// Nothing where the server has the whole message and considers it.
std::optional<SendOutcome> SmtpMailComponent::HandOver(ComposedMessage& message) {
  if (host_.empty()) return SendOutcome::kNoServer;
  if (!sender_) return SendOutcome::kSenderRefused;
  if (message.outcome != SendOutcome::kDelivered) return message.outcome;
  const bool is_kept = session_ != nullptr;
  if (!is_kept) {
    const SendOutcome opened = OpenSession();
    if (opened != SendOutcome::kDelivered) return opened;
  }
  Submission submission = Submit(message);
  if (submission.may_try_again && is_kept) {
    const SendOutcome opened = OpenSession();
    if (opened != SendOutcome::kDelivered) return opened;
    submission = Submit(message);
  }
  return submission.failure;
}

// The message may have been composed before it was known what the server offers.
Submission SmtpMailComponent::Submit(ComposedMessage& message) {
  if (!session_->TakesEightBit()) MakeSevenBit(message.wire);
  return session_->Submit(MakeEnvelope(message), message.wire.bytes.View());
}

// A session is of no more use once it is closed, or where what was thrown left it in mid-dialogue.
void SmtpMailComponent::DropClosedSession() {
  const bool was_thrown =
      send_outcome_ == SendOutcome::kOutOfMemory || send_outcome_ == SendOutcome::kOtherError;
  if (session_ && (was_thrown || session_->CurrentState() == SmtpSession::State::kClosed))
    session_.reset();
}

SendOutcome SmtpMailComponent::OpenSession() {
  session_.reset();
  server_.host = ResolvableHost(host_);
  if (server_.host.empty()) return SendOutcome::kNameUnknown;
  server_.credentials.reset();
  if (authenticates_) {
    if ((user_name_ + password_).find(L'\0') != std::wstring::npos)
      return SendOutcome::kCredentialsRefused;  // no mechanism can carry it
    server_.credentials = {ToUtf8(user_name_), ToUtf8(password_)};
  }
  const SendOutcome opened = SmtpSession::Open(*network_, server_, session_);
  if (session_) composer_.SetEightBit(session_->TakesEightBit());
  return opened;
}

Envelope SmtpMailComponent::MakeEnvelope(const ComposedMessage& message) const {
  Envelope envelope;
  envelope.sender = sender_->text;
  envelope.sender_is_ascii = sender_->is_ascii;
  envelope.has_eight_bit_parts = !message.wire.eight_bit_parts.empty();
  envelope.recipient = message.recipient.text;
  envelope.recipient_is_ascii = message.recipient.is_ascii;
  return envelope;
}

void SmtpMailComponent::EndSession() {
  if (!send_outcome_) send_outcome_ = SendOutcome::kConnectionBroken;
  session_.reset();
}

std::unique_ptr<MailComponent> NewSmtpMailComponent(const System& system,
                                                    LetterReader read_letter) {
  return std::make_unique<SmtpMailComponent>(system, std::move(read_letter), NewSocketNetwork(),
                                             TimeoutsOf(system));
}

}  // namespace pxscheduler
