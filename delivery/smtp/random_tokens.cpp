#include "delivery/smtp/random_tokens.h"

#include "platform/digests.h"
#include "text/hexadecimal.h"

namespace pxscheduler {

namespace {

constexpr std::size_t kTokenBytes = 16;
constexpr std::size_t kTokensAtOnce = 256;

}  // namespace

std::string RandomToken() {
  std::string token;
  AppendHexadecimal(RandomBytes(kTokenBytes), token);
  return token;
}

std::string_view RandomTokens::Next() {
  if (used_ == random_.size()) {
    random_ = RandomBytes(kTokenBytes * kTokensAtOnce);
    used_ = 0;
  }
  token_.clear();
  AppendHexadecimal(std::string_view(random_).substr(used_, kTokenBytes), token_);
  used_ += kTokenBytes;
  return token_;
}

}  // namespace pxscheduler
