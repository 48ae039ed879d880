#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/mime/address.h"
#include "platform/mime/byte_buffer.h"
#include "platform/mime/inline_part.h"
#include "platform/mime/quoted_printable.h"
#include "platform/system.h"
#include "platform/text_pieces.h"

namespace pxscheduler {

struct Recipient {
  std::wstring display_name;
  Address address;
};

// What differs from one message to the next. Everything is borrowed for the call.
struct MessageContent {
  const std::vector<Recipient>& recipients;
  std::wstring_view subject;
  Moment date;
  std::string_view message_id;  // the part before the "@"
  const TextPieces& body;
  const TextPieces& alternative;  // sent before the body when that is HTML
};

// Writes whole messages (RFC 5322, RFC 2045) into a buffer, ready for the DATA phase of SMTP: full
// stops doubled, the final full stop included. What every message of a run has in common is written
// once, when it is set.
class MessageComposer {
 public:
  // `boundary_token` separates the parts of a message: letters and digits, different in each run.
  explicit MessageComposer(std::string boundary_token);

  void SetSender(const Address& sender);
  // "" or what UnsubscribeAddress returned.
  void SetUnsubscribe(const std::string& address);
  void SetHtml(bool is_html);
  // The pictures that an HTML body shows.
  void SetInlineParts(const std::vector<InlinePart>& parts);

  // `wire` is cleared first.
  void Compose(const MessageContent& content, ByteBuffer& wire);

 private:
  void AppendBody(const MessageContent& content, ByteBuffer& wire);
  void PrepareFixedFields();
  void PrepareParts();

  std::string boundary_token_;
  Address sender_;
  std::string unsubscribe_;
  bool is_html_ = false;
  std::string inline_parts_;  // encoded, with their boundaries; "" for none

  std::string first_fields_;   // From
  std::string middle_fields_;  // after the message's own identifier: what never changes
  std::string plain_start_;    // from the content type of the message to the body's first line
  std::string html_start_;     // between the plain rendering and the HTML document
  std::string end_;            // after the HTML document

  QuotedPrintable body_;
  QuotedPrintable alternative_;
};

// The address in the form that a List-Unsubscribe field takes (RFC 2369), "" unless it is a mailto:
// or https: address of printable ASCII without blanks.
std::string UnsubscribeAddress(std::wstring_view address);

}  // namespace pxscheduler
