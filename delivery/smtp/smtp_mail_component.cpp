#include "delivery/smtp/smtp_mail_component.h"

#include <algorithm>
#include <new>
#include <utility>

#include "network/socket_network.h"
#include "text/text.h"
#include "text/utf8.h"

namespace pxscheduler {

namespace {

constexpr std::int32_t kCannotOpenFile = 10;
constexpr std::size_t kBoundaryDigits = 16;  // 64 random bits

// Takes a step of the component, which lets no exception out.
template <typename Step>
Failure FailureOf(const Step& step) {
  try {
    return step();
  } catch (const std::bad_alloc&) {
    return SendOutcome::kOutOfMemory;
  } catch (...) {
    return SendOutcome::kOtherError;
  }
}

// An address that may be no address, for an operator.
std::string WithoutControls(std::wstring address) {
  std::replace_if(
      address.begin(), address.end(), [](wchar_t c) { return c < L' ' || c == 0x7F; }, L'?');
  return ToUtf8(address);
}

}  // namespace

SmtpMailComponent::SmtpMailComponent(System& system, LetterReader read_letter,
                                     std::unique_ptr<Network> network, const Timeouts& timeouts)
    : system_(system),
      read_letter_(std::move(read_letter)),
      network_(std::move(network)),
      composer_(RandomToken().substr(0, kBoundaryDigits)),
      report_(system) {
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

// The option makes no difference: the strongest mechanism that the server offers is always used.
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
  server_.security = ReadSecurity(security);
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

bool SmtpMailComponent::CanComposeMore() const { return queue_.HasRoom(); }

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
  ComposedMessage& message = queue_.Next();
  message.wire.Clear();
  message.failure = FailureOf([&]() -> Failure {
    std::optional<Address> recipient = ParseAddress(address);
    if (!recipient) {
      message.recipient.text = WithoutControls(address);
      return Fault(SendOutcome::kRecipientRefused, "the address is malformed");
    }
    message.recipient = *std::move(recipient);
    composer_.Compose({.recipient = {display_name, message.recipient},
                       .date = system_.Now(),
                       .message_id = message_ids_.Next(),
                       .values = values,
                       .texts = texts},
                      message.wire);
    return std::nullopt;
  });
  queue_.Push();
}

void SmtpMailComponent::Send() {
  is_replied_to_ = true;
  if (queue_.IsEmpty()) {
    failure_ = SendOutcome::kOtherError;  // no message is sent twice
    return;
  }
  ComposedMessage& message = queue_.Pop();
  recipient_ = message.recipient.text;
  failure_ = FailureOf([&] { return Submit(message); });
  is_replied_to_ = failure_.has_value();
  DropUnusableSession();
}

std::int32_t SmtpMailComponent::AwaitResult() {
  if (!is_replied_to_) {
    failure_ = FailureOf([this] { return session_->AwaitAcceptance(); });
    is_replied_to_ = true;
    DropUnusableSession();
  }
  if (!failure_) return static_cast<std::int32_t>(SendOutcome::kDelivered);
  TellOf(*failure_);
  return static_cast<std::int32_t>(failure_->outcome);
}

Failure SmtpMailComponent::Submit(ComposedMessage& message) {
  if (host_.empty()) return SendOutcome::kNoServer;
  if (!sender_) return Fault(SendOutcome::kSenderRefused, "\"EmailFrom\" is no address");
  if (message.failure) return message.failure;
  if (Failure standing = server_faults_.Standing()) {
    report_.TellOfStandingFault(*standing, recipient_);
    return Fault(standing->outcome);
  }
  Submission submission = SubmitToServer(message);
  if (submission.sender_accepted)
    server_faults_.Forget();
  else if (submission.failure)
    server_faults_.Count(*submission.failure);
  return std::move(submission.failure);
}

Submission SmtpMailComponent::SubmitToServer(ComposedMessage& message) {
  const bool was_open = session_.has_value();
  if (!was_open) {
    if (Failure failure = OpenSession()) return {.failure = std::move(failure)};
  }
  Submission submission = SubmitInSession(message);
  if (!submission.may_try_again || !was_open) return submission;
  if (Failure failure = OpenSession()) return {.failure = std::move(failure)};
  return SubmitInSession(message);
}

// The message may have been composed before it was known what the server offers.
Submission SmtpMailComponent::SubmitInSession(ComposedMessage& message) {
  if (!session_->Session().Extensions().eight_bit) MakeSevenBit(message.wire);
  return session_->Submit({.sender = sender_->text,
                           .recipient = message.recipient.text,
                           .sender_is_ascii = sender_->is_ascii,
                           .recipient_is_ascii = message.recipient.is_ascii,
                           .has_eight_bit_parts = !message.wire.eight_bit_parts.empty()},
                          message.wire.bytes.View());
}

Failure SmtpMailComponent::OpenSession() {
  session_.reset();
  server_.host = ResolvableHost(host_);
  if (server_.host.empty())
    return Fault(SendOutcome::kNameUnknown, "the name of the server is no host name");
  server_.credentials.reset();
  if (authenticates_) {
    if ((user_name_ + password_).find(L'\0') != std::wstring::npos)
      return Fault(SendOutcome::kCredentialsRefused,
                   "no login can carry the NUL in the user name or password");
    server_.credentials = {ToUtf8(user_name_), ToUtf8(password_)};
  }
  std::unique_ptr<SmtpSession> opened;
  Failure failure = SmtpSession::Open(*network_, server_, login_history_, opened);
  if (login_history_.password_was_shown) report_.TellOfShownPassword(ServerName());
  if (failure) return failure;
  composer_.SetEightBit(opened->Extensions().eight_bit);
  session_.emplace(std::move(opened));
  return std::nullopt;
}

// A session is unusable once it is closed, and where an exception left it in the middle of a step.
void SmtpMailComponent::DropUnusableSession() {
  const bool was_thrown =
      failure_ == SendOutcome::kOutOfMemory || failure_ == SendOutcome::kOtherError;
  if (session_ && (was_thrown || session_->Session().IsClosed())) session_.reset();
}

void SmtpMailComponent::EndSession() {
  if (!is_replied_to_) failure_ = SendOutcome::kConnectionFailed;
  is_replied_to_ = true;
  session_.reset();
  server_faults_.Forget();
}

void SmtpMailComponent::TellOf(const Fault& fault) {
  report_.Tell(fault, recipient_, ServerName());
}

std::string SmtpMailComponent::ServerName() const {
  return ToUtf8(host_) + " port " + std::to_string(server_.port);
}

std::unique_ptr<MailComponent> NewSmtpMailComponent(System& system, LetterReader read_letter) {
  return std::make_unique<SmtpMailComponent>(system, std::move(read_letter), NewSocketNetwork(),
                                             ReadTimeouts(system));
}

}  // namespace pxscheduler
