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

// What differs from one message to the next, borrowed for the call.
struct MessageContent {
  Recipient recipient;
  Moment date;
  std::string_view message_id;           // the part before the "@"
  std::span<const std::wstring> values;  // for the places of the template
  const MessageTexts* texts = nullptr;   // in place of the template, unless null
};

// Writes whole messages (RFC 5322, RFC 2045). What all messages of a run have in common is written
// once, by the setters.
class MessageComposer {
 public:
  // `boundary_token` makes the boundaries between the parts: letters and digits, unique to the run.
  explicit MessageComposer(std::string boundary_token);

  void SetSender(const Address& sender);
  // "" or what UnsubscribeAddress returned.
  void SetUnsubscribe(const std::string& address);
  void SetHtml(bool is_html);
  // Whether parts that are not all ASCII may go out as they are; true at first.
  void SetEightBit(bool is_allowed);
  // The alternative body is sent with an HTML body only, before it.
  void SetTemplate(MessageTemplate message);
  // The pictures that an HTML body refers to.
  void SetPictures(const std::vector<LetterPicture>& pictures);

  // Replaces what `message` held.
  void Compose(const MessageContent& content, WireMessage& message) const;

 private:
  void AppendFields(const MessageContent& content, ByteBuffer& wire) const;
  void AppendPlainText(const MessageContent& content, WireMessage& message) const;
  void AppendMultipart(const MessageContent& content, WireMessage& message) const;
  void PrepareFixedFields();
  void PrepareParts();

  std::string boundary_token_;
  Address sender_;
  std::string unsubscribe_;
  bool is_html_ = false;
  std::string picture_parts_;  // encoded, with their boundaries; "" for none

  std::string from_field_;
  std::string fixed_fields_;  // which follow those of the single message
  // The text between the parts of a message. Each ends before the name of a transfer encoding.
  std::string alternative_start_;
  std::string plain_start_;
  std::string related_start_;  // only with pictures
  std::string html_start_;
  std::string end_;  // after the HTML document

  TextTemplate subject_;
  TextPart body_;
  TextPart alternative_;
};

// The address as it stands in a List-Unsubscribe field (RFC 2369); "" unless it is a mailto: or
// https: address of printable ASCII without blanks.
std::string UnsubscribeAddress(std::wstring_view address);

}  // namespace pxscheduler
