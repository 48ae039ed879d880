#include "delivery/mime/message_composer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <utility>

#include "delivery/mime/header_text.h"
#include "text/ascii_case.h"
#include "text/base64.h"
#include "text/text.h"

namespace pxscheduler {

namespace {

constexpr std::size_t kBase64Line = 76;
constexpr std::size_t kLongestUnsubscribe = 900;

constexpr std::string_view kEncodingField = "Content-Transfer-Encoding: ";

constexpr std::array<std::string_view, 7> kDayNames = {"Sun", "Mon", "Tue", "Wed",
                                                       "Thu", "Fri", "Sat"};
constexpr std::array<std::string_view, 12> kMonthNames = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

void AppendDigits(unsigned number, std::size_t width, ByteBuffer& out) {
  char* const digits = out.Room(width);
  for (std::size_t i = width; i > 0; --i, number /= 10)
    digits[i - 1] = static_cast<char>('0' + number % 10);
  out.SetEnd(digits + width);
}

// RFC 5322 section 3.3: "Mon, 16 Nov 2026 15:07:41 +0100".
void AppendDate(const Moment& moment, ByteBuffer& out) {
  const std::chrono::year_month_day date{moment.local.date};
  const std::chrono::weekday weekday{moment.local.date};
  const std::chrono::hh_mm_ss time{moment.local.time_of_day};
  const std::chrono::hh_mm_ss offset{moment.utc_offset};
  const auto day = static_cast<unsigned>(date.day());
  const auto append_pair = [&out](std::string_view before, auto count) {
    out.Append(before);
    AppendDigits(static_cast<unsigned>(count), 2, out);
  };
  out.Append(kDayNames[weekday.c_encoding()]);
  out.Append(", ");
  AppendDigits(day, day < 10 ? 1 : 2, out);
  out.Append(" ");
  out.Append(kMonthNames[static_cast<unsigned>(date.month()) - 1]);
  out.Append(" ");
  AppendDigits(static_cast<unsigned>(static_cast<int>(date.year())), 4, out);
  append_pair(" ", time.hours().count());
  append_pair(":", time.minutes().count());
  append_pair(":", time.seconds().count());
  append_pair(offset.is_negative() ? " -" : " +", offset.hours().count());
  append_pair("", offset.minutes().count());
}

// The header of a multipart, up to the name of its encoding.
std::string MultipartStart(const std::string& subtype, const std::string& boundary) {
  return "Content-Type: multipart/" + subtype + ";\r\n boundary=\"" + boundary + "\"\r\n" +
         std::string(kEncodingField);
}

void AppendMultipartStart(const std::string& start, WireMessage& message) {
  message.bytes.Append(start);
  message.multiparts.push_back(message.bytes.View().size());
  message.bytes.Append("7bit\r\n\r\n");
}

void AppendText(const TextPart& part, std::wstring MessageTexts::*text,
                const MessageContent& content, WireMessage& message) {
  if (content.texts)
    part.AppendText(content.texts->*text, message);
  else
    part.Append(content.values, message);
}

std::string Base64Lines(std::string_view bytes) {
  const std::string text = EncodeBase64(bytes);
  std::string lines;
  for (std::size_t start = 0; start < text.size(); start += kBase64Line)
    lines += text.substr(start, kBase64Line) + "\r\n";
  return lines;
}

}  // namespace

MessageComposer::MessageComposer(std::string boundary_token)
    : boundary_token_(std::move(boundary_token)) {
  PrepareFixedFields();
  PrepareParts();
}

void MessageComposer::SetSender(const Address& sender) {
  sender_ = sender;
  from_field_ = "From: " + sender.text + "\r\n";
}

void MessageComposer::SetUnsubscribe(const std::string& address) {
  unsubscribe_ = address;
  PrepareFixedFields();
}

void MessageComposer::SetHtml(bool is_html) {
  is_html_ = is_html;
  PrepareParts();
}

void MessageComposer::SetEightBit(bool is_allowed) {
  body_.SetEightBit(is_allowed);
  alternative_.SetEightBit(is_allowed);
}

void MessageComposer::SetTemplate(MessageTemplate message) {
  subject_ = std::move(message.subject);
  body_.SetTemplate(message.body);
  alternative_.SetTemplate(message.alternative_body);
}

void MessageComposer::SetPictures(const std::vector<LetterPicture>& pictures) {
  picture_parts_.clear();
  for (const LetterPicture& picture : pictures) {
    picture_parts_ += "\r\n--=_rel_" + boundary_token_ + "\r\nContent-Type: " + picture.media_type +
                      "\r\nContent-Transfer-Encoding: base64\r\nContent-ID: <" +
                      picture.content_id + ">\r\nContent-Disposition: inline\r\n\r\n" +
                      Base64Lines(picture.bytes);
  }
  PrepareParts();
}

void MessageComposer::PrepareFixedFields() {
  fixed_fields_ =
      "MIME-Version: 1.0\r\n"
      "Auto-Submitted: auto-generated\r\n"
      "Precedence: bulk\r\n";
  if (!unsubscribe_.empty()) {
    fixed_fields_ += "List-Unsubscribe:\r\n <" + unsubscribe_ + ">\r\n";
    // One click is a request to a web server (RFC 8058).
    if (unsubscribe_.starts_with("https:"))
      fixed_fields_ += "List-Unsubscribe-Post: List-Unsubscribe=One-Click\r\n";
  }
}

// Boundaries begin with "=_", so that no line of a part can be one: IdentityEncoding refuses texts
// with such a line, and neither quoted-printable nor base64 contains "=_".
void MessageComposer::PrepareParts() {
  const std::string alternative = "=_alt_" + boundary_token_;
  const std::string related = "=_rel_" + boundary_token_;
  plain_start_ = is_html_ ? "--" + alternative + "\r\n" : "";
  plain_start_ += "Content-Type: text/plain; charset=utf-8\r\n";
  plain_start_ += kEncodingField;
  alternative_start_ = MultipartStart("alternative", alternative);
  related_start_ =
      "\r\n--" + alternative + "\r\n" + MultipartStart("related; type=\"text/html\"", related);
  html_start_ = picture_parts_.empty() ? "\r\n--" + alternative : "--" + related;
  html_start_ += "\r\nContent-Type: text/html; charset=utf-8\r\n";
  html_start_ += kEncodingField;
  end_ = picture_parts_.empty() ? "" : picture_parts_ + "\r\n--" + related + "--\r\n";
  end_ += "\r\n--" + alternative + "--\r\n";
}

void MessageComposer::Compose(const MessageContent& content, WireMessage& message) const {
  message.Clear();
  AppendFields(content, message.bytes);
  if (is_html_)
    AppendMultipart(content, message);
  else
    AppendPlainText(content, message);
  message.bytes.Append(".\r\n");
}

void MessageComposer::AppendFields(const MessageContent& content, ByteBuffer& wire) const {
  wire.Append(from_field_);
  wire.Append("To: ");
  AppendMailbox(content.recipient.display_name, content.recipient.address.text, 4, wire);
  wire.Append("\r\nSubject: ");
  AppendUnstructured(content.texts ? content.texts->subject : Filled(subject_, content.values), 9,
                     wire);
  wire.Append("\r\nDate: ");
  AppendDate(content.date, wire);
  wire.Append("\r\nMessage-ID: <");
  wire.Append(content.message_id);
  wire.Append("@");
  wire.Append(sender_.domain);
  wire.Append(">\r\n");
  wire.Append(fixed_fields_);
}

void MessageComposer::AppendPlainText(const MessageContent& content, WireMessage& message) const {
  message.bytes.Append(plain_start_);
  AppendText(body_, &MessageTexts::body, content, message);
  if (!message.bytes.View().ends_with("\r\n")) message.bytes.Append("\r\n");
}

void MessageComposer::AppendMultipart(const MessageContent& content, WireMessage& message) const {
  AppendMultipartStart(alternative_start_, message);
  message.bytes.Append(plain_start_);
  AppendText(alternative_, &MessageTexts::alternative_body, content, message);
  if (!picture_parts_.empty()) AppendMultipartStart(related_start_, message);
  message.bytes.Append(html_start_);
  AppendText(body_, &MessageTexts::body, content, message);
  message.bytes.Append(end_);
  if (!message.eight_bit_parts.empty())
    for (const std::size_t encoding : message.multiparts) message.bytes.Overwrite(encoding, "8bit");
}

std::string UnsubscribeAddress(std::wstring_view address) {
  if (address.size() > kLongestUnsubscribe) return {};
  address = TrimBlanks(address);
  const auto is_allowed = [](wchar_t unit) {
    return unit > L' ' && unit < 0x7F && unit != L'<' && unit != L'>' && unit != L'"';
  };
  if (!std::all_of(address.begin(), address.end(), is_allowed)) return {};
  std::string text(address.begin(), address.end());
  const std::size_t scheme_size = text.find(':') + 1;
  text.replace(0, scheme_size, LowerAscii(text.substr(0, scheme_size)));
  const std::string_view scheme = std::string_view(text).substr(0, scheme_size);
  const bool is_known = scheme == "mailto:" || scheme == "https:";
  return is_known && text.size() > scheme_size ? text : std::string();
}

}  // namespace pxscheduler
