#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/code_page.h"
#include "platform/mail_component.h"
#include "platform/mime/inline_part.h"
#include "platform/mime/message_composer.h"
#include "platform/mime/wire_message.h"
#include "platform/smtp/message_identifiers.h"
#include "platform/smtp/session.h"
#include "platform/system.h"

namespace pxscheduler {

// What the component needs to know about HTML. Either may be empty.
struct HtmlRenderings {
  // The plain rendering of an HTML document.
  std::function<std::wstring(std::wstring_view html)> plain_text;
  // Takes the pictures out of the HTML document that was read from `path`: they become parts of
  // every message, and the document refers to them by "cid:".
  std::function<std::vector<InlinePart>(std::wstring& html, const std::wstring& path)>
      take_inline_parts;
};

// The mail component over SMTP. One connection serves all the messages that are sent with the same
// server settings; it is opened again where the server ended it between two messages.
class SmtpMailComponent : public MailComponent {
 public:
  // The references must outlive the component.
  SmtpMailComponent(const System& system, const CodePages& code_pages, HtmlRenderings renderings,
                    std::unique_ptr<Network> network, const Timeouts& timeouts);
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
  const std::wstring& BodyText() const override { return loaded_body_; }
  const std::wstring& AlternativeBodyText() const override { return loaded_alternative_; }
  void SetBodyText(TextPieces text) override;
  void SetAlternativeBodyText(TextPieces text) override;
  void SetHtml(std::int32_t flag) override;

  void SetSubject(std::wstring subject) override;
  void ResetRecipients(std::int32_t which) override;
  void AddRecipient(const std::wstring& display_name, const std::wstring& address,
                    std::int32_t kind) override;
  bool CanComposeMore() const override;
  void Compose() override;
  void Send() override;
  std::int32_t AwaitResult() override;

 private:
  // A message that waits to be sent, or room for one.
  struct ComposedMessage {
    std::vector<Address> recipients;
    WireMessage wire;
    SendOutcome outcome = SendOutcome::kOtherError;  // kDelivered: it can be sent
  };

  SendOutcome WriteMessage(ComposedMessage& message);
  std::optional<SendOutcome> HandOver(ComposedMessage& message);
  Submission Submit(ComposedMessage& message);
  SendOutcome OpenSession();
  Envelope MakeEnvelope(const ComposedMessage& message) const;
  void DropClosedSession();
  void EndSession();

  const System& system_;
  const CodePages& code_pages_;
  HtmlRenderings renderings_;
  std::unique_ptr<Network> network_;

  std::wstring host_;
  bool authenticates_ = false;
  std::wstring user_name_;
  std::wstring password_;
  ServerSettings server_;
  std::optional<Address> sender_;
  std::vector<Recipient> recipients_;
  bool has_malformed_recipient_ = false;
  std::wstring subject_;
  std::wstring loaded_body_;
  std::wstring loaded_alternative_;
  TextPieces body_;
  TextPieces alternative_;

  MessageComposer composer_;
  MessageIdentifiers identifiers_;
  // Used in turn, so that their memory is used again.
  std::array<ComposedMessage, 8> composed_;
  std::size_t first_waiting_ = 0;  // in composed_
  std::size_t waiting_ = 0;
  std::size_t waiting_bytes_ = 0;
  std::unique_ptr<SmtpSession> session_;
  // Of the message that was sent last; nothing while the server considers it.
  std::optional<SendOutcome> send_outcome_ = SendOutcome::kOtherError;
};

// The component as a run uses it: over the machine's sockets, with the usual time-outs.
std::unique_ptr<MailComponent> NewSmtpMailComponent(const System& system,
                                                    const CodePages& code_pages,
                                                    HtmlRenderings renderings);

}  // namespace pxscheduler
