#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "delivery/mail_component.h"
#include "delivery/mime/address.h"
#include "delivery/mime/byte_buffer.h"
#include "delivery/mime/wire_message.h"
#include "platform/system.h"
#include "text/letter.h"
#include "text/text_template.h"

namespace pxscheduler {

struct Recipient {
  const std::wstring& display_name;
  const Address& address;
};

// What differs from one message to the next. Everything is borrowed for the call.
struct MessageContent {
  Recipient recipient;
  Moment date;
  std::string_view message_id;           // the part before the "@"
  std::span<const std::wstring> values;  // for the places of the template
  const MessageTexts* texts = nullptr;   // in place of the template's, where not null
};

// Writes whole messages (RFC 5322, RFC 2045). What every message of a run has in common is written
// once, when it is set.
class MessageComposer {
 public:
  // `boundary_token` separates the parts of a message: letters and digits, different in each run.
  explicit MessageComposer(std::string boundary_token);

  void SetSender(const Address& sender);
  // "" or what UnsubscribeAddress returned.
  void SetUnsubscribe(const std::string& address);
  void SetHtml(bool is_html);
  // Whether parts that are not all ASCII may go out as they are, which is so from the start.
  void SetEightBit(bool is_allowed);
  // The alternative body is sent before the body where that is HTML.
  void SetTemplate(MessageTemplate message);
  // The pictures that an HTML body shows.
  void SetPictures(const std::vector<LetterPicture>& parts);

  // `message` is cleared first.
  void Compose(const MessageContent& content, WireMessage& message) const;

 private:
  void AppendFields(const MessageContent& content, ByteBuffer& wire) const;
  void AppendBody(const MessageContent& content, WireMessage& message) const;
  void AppendAlternative(const MessageContent& content, WireMessage& message) const;
  void AppendPlainText(const MessageContent& content, WireMessage& message) const;
  void AppendMultipart(const MessageContent& content, WireMessage& message) const;
  void PrepareFixedFields();
  void PrepareParts();

  std::string boundary_token_;
  Address sender_;
  std::string unsubscribe_;
  bool is_html_ = false;
  std::string inline_parts_;  // encoded, with their boundaries; "" for none

  std::string first_fields_;       // From
  std::string middle_fields_;      // after the message's own identifier: what never changes
  std::string alternative_start_;  // the rest of the fields, up to the name of the encoding
  std::string plain_start_;        // the head of the plain text, up to the name of its encoding
  std::string related_start_;      // from behind the plain text; only with pictures
  std::string html_start_;         // from there to the name of the encoding of the HTML document
  std::string end_;                // after the HTML document

  TextTemplate subject_;
  TextPart body_;
  TextPart alternative_;
};

// The address in the form that a List-Unsubscribe field takes (RFC 2369), "" unless it is a mailto:
// or https: address of printable ASCII without blanks.
std::string UnsubscribeAddress(std::wstring_view address);

}  // namespace pxscheduler
