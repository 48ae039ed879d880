#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "text/text_template.h"

namespace pxscheduler {

// What the messages of a run have in common: three texts with places for a client's values.
struct MessageTemplate {
  TextTemplate subject;
  TextTemplate body;
  TextTemplate alternative_body;
};

// The texts of a single message.
struct MessageTexts {
  std::wstring subject;
  std::wstring body;
  std::wstring alternative_body;
};

// Composes messages and hands them to an SMTP server, in this order:
//   1. the settings, which stay until they are set again;
//   2. LoadBodyFromFile, and SetHtml where the body is an HTML document;
//   3. SetMessageTemplate, usually made of the texts that were loaded;
//   4. for each client Compose, Send and AwaitResult. Messages may be composed ahead while
//      CanComposeMore; they are sent in the order in which they were composed, each after the
//      result of the one before is known.
class MailComponent {
 public:
  static constexpr std::int32_t kAuthenticateNone = 0;
  static constexpr std::int32_t kAuthenticateLogin = 1;
  static constexpr std::int32_t kAuthenticationOption = 256;  // goes with kAuthenticateLogin
  static constexpr std::int32_t kBodyAndAlternative = 6;      // option of LoadBodyFromFile

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
  // "none": never. Any other text counts as "required", so that a typing error exposes nothing.
  virtual void SetSecurity(const std::wstring& security) = 0;
  // A mailto: or https: address that goes into each message for the recipient's mail program to
  // unsubscribe with. "" (the default), or anything else, leaves it out.
  virtual void SetUnsubscribe(const std::wstring& address) = 0;

  // Makes the file's content the body text and a second rendering of it the alternative body text
  // (plain text for an HTML document, the same text otherwise). Returns 0, or a non-zero status for
  // a file that cannot be read, with both texts left as they were.
  virtual std::int32_t LoadBodyFromFile(const std::wstring& path, std::int32_t option) = 0;
  // As they were loaded; "" before.
  virtual const std::wstring& BodyText() const = 0;
  virtual const std::wstring& AlternativeBodyText() const = 0;
  // 1: the body is an HTML document and goes out beside its alternative. 0, the default: the body
  // goes out alone as plain text.
  virtual void SetHtml(std::int32_t flag) = 0;

  // What Compose fills in from now on. Its constant parts are encoded once.
  virtual void SetMessageTemplate(MessageTemplate message) = 0;

  // Whether another message can be composed before the next is sent: a few small ones, and always
  // one.
  virtual bool CanComposeMore() const = 0;
  // Writes the next message, with `values` in the places of the template. Only where
  // CanComposeMore. Never raises: a message that cannot be written fails when it is sent.
  virtual void Compose(const std::wstring& display_name, const std::wstring& address,
                       std::span<const std::wstring> values) = 0;
  // The same with texts of its own in place of the template's.
  virtual void ComposeTexts(const std::wstring& display_name, const std::wstring& address,
                            const MessageTexts& texts) = 0;
  // Hands the message that was composed first to the server; returns when all of it has left, or
  // where it has failed before that. Never raises.
  virtual void Send() = 0;
  // Waits for the server's reply to the message that was sent: 0 where it took the message, else a
  // code that SmtpErrorText knows. Never raises.
  virtual std::int32_t AwaitResult() = 0;
};

}  // namespace pxscheduler
