#include "delivery/smtp/message_identifiers.h"

#include "platform/digests.h"
#include "text/hexadecimal.h"

namespace pxscheduler {

namespace {

constexpr std::size_t kIdentifierBytes = 16;
constexpr std::size_t kIdentifiersAtOnce = 256;

}  // namespace

std::string RandomToken() {
  std::string token;
  AppendHexadecimal(RandomBytes(kIdentifierBytes), token);
  return token;
}

std::string_view MessageIdentifiers::Next() {
  if (used_ == random_.size()) {
    random_ = RandomBytes(kIdentifierBytes * kIdentifiersAtOnce);
    used_ = 0;
  }
  identifier_.clear();
  AppendHexadecimal(std::string_view(random_).substr(used_, kIdentifierBytes), identifier_);
  used_ += kIdentifierBytes;
  return identifier_;
}

}  // namespace pxscheduler
