#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace pxscheduler {

// 128 random bits as hexadecimal digits: unique, and nobody can guess it.
std::string RandomToken();

// Makes one such token after another, from random bytes that are fetched for many at once.
class RandomTokens {
 public:
  // Valid until the next call.
  std::string_view Next();

 private:
  std::string random_;
  std::size_t used_ = 0;
  std::string token_;
};

}  // namespace pxscheduler
