#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "text/text_template.h"

namespace pxscheduler {

// The three texts of every message in a run, with places for a client's values.
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

// Composes messages and sends them to an SMTP server. The calls of a run, in their order:
//   1. the settings, which hold until they are set again;
//   2. LoadBodyFromFile, and SetHtml where the body is an HTML document;
//   3. SetMessageTemplate, usually with the texts that were loaded;
//   4. for each client Compose, Send and AwaitResult. Messages may be composed ahead while
//      CanComposeMore; they are sent in the order in which they were composed, each after the
//      result of the one before.
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
  // When to use TLS, in any case of letters. "" (the default): whenever the server offers it; the
  // certificate is checked if a password will be sent. "required": always; nothing is sent in the
  // clear and the certificate is always checked. "unverified": as "", but no certificate is
  // checked. "none": never. Any other text counts as "required", so that a typing error exposes
  // nothing.
  virtual void SetSecurity(const std::wstring& security) = 0;
  // A mailto: or https: address that each message names for unsubscribing (RFC 2369). "" (the
  // default) or anything else: none.
  virtual void SetUnsubscribe(const std::wstring& address) = 0;

  // Reads the body text from a file and makes its plain rendering the alternative body text: plain
  // text for an HTML document, otherwise the same text. Returns 0, or another status for a file
  // that cannot be read, which leaves both texts as they were.
  virtual std::int32_t LoadBodyFromFile(const std::wstring& path, std::int32_t option) = 0;
  // The texts that were loaded last, "" at first.
  virtual const std::wstring& BodyText() const = 0;
  virtual const std::wstring& AlternativeBodyText() const = 0;
  // 1: the body is an HTML document, sent together with the alternative. 0, the default: the body
  // is plain text, sent alone.
  virtual void SetHtml(std::int32_t flag) = 0;

  // The template that Compose fills from now on. Its constant texts are encoded once.
  virtual void SetMessageTemplate(MessageTemplate message) = 0;

  // Whether another message can be composed before the next is sent: a few small ones can, and one
  // always.
  virtual bool CanComposeMore() const = 0;
  // Composes the next message, with `values` in the places of the template. Only while
  // CanComposeMore. Never raises: a message that cannot be composed fails when it is sent.
  virtual void Compose(const std::wstring& display_name, const std::wstring& address,
                       std::span<const std::wstring> values) = 0;
  // The same with other texts than the template's.
  virtual void ComposeTexts(const std::wstring& display_name, const std::wstring& address,
                            const MessageTexts& texts) = 0;
  // Sends the oldest composed message; returns when all of it has left, or when that failed. Never
  // raises.
  virtual void Send() = 0;
  // Waits for the server's reply to the message that was sent. Returns 0 where the server accepted
  // it, otherwise a code that SmtpErrorText explains. Never raises.
  virtual std::int32_t AwaitResult() = 0;
};

}  // namespace pxscheduler
