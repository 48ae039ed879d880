#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace pxscheduler {

// 128 random bits in hexadecimal digits.
std::string RandomToken();

// Makes the identifiers of a run's messages: no two alike, none to be guessed from another. Random
// bytes are fetched for many messages at once.
class MessageIdentifiers {
 public:
  // Valid until the next call.
  std::string_view Next();

 private:
  std::string random_;
  std::size_t used_ = 0;
  std::string identifier_;
};

}  // namespace pxscheduler
