#pragma once

#include <cstdint>
#include <string>

#include "text/text_pieces.h"

namespace pxscheduler {

// Composes one message at a time and hands it to the configured SMTP server. Settings stay until
// they are set again; a send leaves everything in place.
class MailComponent {
 public:
  static constexpr std::int32_t kAuthenticateNone = 0;
  static constexpr std::int32_t kAuthenticateLogin = 1;
  static constexpr std::int32_t kAuthenticationOption = 256;  // goes with kAuthenticateLogin
  static constexpr std::int32_t kBodyAndAlternative = 6;      // option of LoadBodyFromFile
  static constexpr std::int32_t kAllRecipients = 1;           // argument of ResetRecipients
  static constexpr std::int32_t kRecipientTo = 1;             // kind of a recipient

  virtual ~MailComponent() = default;

  virtual void SetServerHost(const std::wstring& host) = 0;
  virtual void SetServerPort(std::int32_t port) = 0;
  virtual void SetSenderAddress(const std::wstring& address) = 0;
  virtual void SetAuthenticationMode(std::int32_t mode) = 0;
  virtual void SetAuthenticationOption(std::int32_t option) = 0;
  virtual void SetUserName(const std::wstring& user_name) = 0;
  virtual void SetPassword(const std::wstring& password) = 0;
  // How TLS is used, compared without case. "" (the default): whenever the server offers it, with
  // the certificate checked where a password will be sent; "required": nothing is sent in the clear
  // and the certificate is always checked; "unverified": as "", but no certificate is checked;
  // "none": never. Any other text counts as "required", so that a slip of the pen exposes nothing.
  virtual void SetSecurity(const std::wstring& security) = 0;
  // A mailto: or https: address that goes into each message for the recipient's mail program to
  // unsubscribe with. "" (the default), or anything else, leaves it out.
  virtual void SetUnsubscribe(const std::wstring& address) = 0;

  // Makes the file's content the body text and a second rendering of it the alternative body text
  // (plain text for an HTML document, the same text otherwise). Returns 0, or a non-zero status for
  // a file that cannot be read, with both texts left as they were.
  virtual std::int32_t LoadBodyFromFile(const std::wstring& path, std::int32_t option) = 0;
  // As they were loaded.
  virtual const std::wstring& BodyText() const = 0;
  virtual const std::wstring& AlternativeBodyText() const = 0;
  // What is composed instead. The pieces must stay until the last message with them is composed,
  // and constant ones as long as the component: it knows them by their place.
  virtual void SetBodyText(TextPieces text) = 0;
  virtual void SetAlternativeBodyText(TextPieces text) = 0;
  // 1: the body is an HTML document and goes out beside its alternative. 0, the default: the body
  // goes out alone as plain text.
  virtual void SetHtml(std::int32_t flag) = 0;

  virtual void SetSubject(std::wstring subject) = 0;
  virtual void ResetRecipients(std::int32_t which) = 0;
  virtual void AddRecipient(const std::wstring& display_name, const std::wstring& address,
                            std::int32_t kind) = 0;

  // Whether one more message can be composed before the next is sent: a few at once, as long as
  // they are small. Always where none waits.
  virtual bool CanComposeMore() const = 0;
  // Writes the message out as its texts and recipients are now, to be sent after those that wait.
  // Nothing is sent yet, so that messages can be composed while the server considers the one before
  // them. Only where CanComposeMore. Never raises.
  virtual void Compose() = 0;
  // Hands the message that has waited longest to the server; returns when all of it has left, or
  // before that where it has failed. The result of the message before must be known by then. Never
  // raises.
  virtual void Send() = 0;
  // Waits for what becomes of the message that was sent: 0 when the server took it, else a code
  // that SmtpErrorText knows. Never raises.
  virtual std::int32_t AwaitResult() = 0;
};

}  // namespace pxscheduler
