#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "delivery/mail_component.h"
#include "delivery/mime/message_composer.h"
#include "delivery/smtp/fault_report.h"
#include "delivery/smtp/mail_transactions.h"
#include "delivery/smtp/message_queue.h"
#include "delivery/smtp/random_tokens.h"
#include "delivery/smtp/server_faults.h"
#include "delivery/smtp/server_settings.h"
#include "platform/system.h"
#include "text/letter.h"

namespace pxscheduler {

// Reads the letter in a file; nothing for a file that cannot be read.
using LetterReader = std::function<std::optional<Letter>(const std::wstring& path)>;

// The mail component over SMTP. All the messages that are sent with the same server settings share
// one connection, which is opened again where the server ended it between two messages.
class SmtpMailComponent : public MailComponent {
 public:
  // The references must outlive the component.
  SmtpMailComponent(System& system, LetterReader read_letter, std::unique_ptr<Network> network,
                    const Timeouts& timeouts);
  ~SmtpMailComponent() override;

  void SetServerHost(const std::wstring& host) override;
  void SetServerPort(std::int32_t port) override;
  void SetSenderAddress(const std::wstring& address) override;
  void SetAuthenticationMode(std::int32_t mode) override;
  void SetAuthenticationOption(std::int32_t option) override;
  void SetUserName(const std::wstring& user_name) override;
  void SetPassword(const std::wstring& password) override;
  void SetSecurity(const std::wstring& security) override;
  void SetUnsubscribe(const std::wstring& address) override;

  std::int32_t LoadBodyFromFile(const std::wstring& path, std::int32_t option) override;
  const std::wstring& BodyText() const override { return letter_.body; }
  const std::wstring& AlternativeBodyText() const override { return letter_.plain_text; }
  void SetHtml(std::int32_t flag) override;

  void SetMessageTemplate(MessageTemplate message) override;
  bool CanComposeMore() const override;
  void Compose(const std::wstring& display_name, const std::wstring& address,
               std::span<const std::wstring> values) override;
  void ComposeTexts(const std::wstring& display_name, const std::wstring& address,
                    const MessageTexts& texts) override;
  void Send() override;
  std::int32_t AwaitResult() override;

 private:
  void Compose(const std::wstring& display_name, const std::wstring& address,
               std::span<const std::wstring> values, const MessageTexts* texts);
  Failure Submit(ComposedMessage& message);
  Submission SubmitInSession(ComposedMessage& message);
  Failure OpenSession();
  void DropUnusableSession();
  void EndSession();

  Submission SubmitToServer(ComposedMessage& message);
  void TellOf(const Fault& fault);
  std::string ServerName() const;

  System& system_;
  LetterReader read_letter_;
  std::unique_ptr<Network> network_;

  std::wstring host_;
  bool authenticates_ = false;
  std::wstring user_name_;
  std::wstring password_;
  ServerSettings server_;
  std::optional<Address> sender_;
  Letter letter_;

  MessageComposer composer_;
  RandomTokens message_ids_;
  MessageQueue queue_;
  std::optional<MailTransactions> session_;
  LoginHistory login_history_;
  ServerFaults server_faults_;
  FaultReport report_;
  // Of the message that was sent last.
  std::string recipient_;  // in UTF-8, with "?" for control characters
  bool is_replied_to_ = true;
  Failure failure_ = SendOutcome::kOtherError;
};

// The component as a run uses it: over the machine's sockets, with the time-outs of the
// environment.
std::unique_ptr<MailComponent> NewSmtpMailComponent(System& system, LetterReader read_letter);

}  // namespace pxscheduler
