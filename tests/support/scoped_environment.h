#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace pxscheduler {

// Sets an environment variable, or removes it, until the end of the scope.
class ScopedEnvironment {
 public:
  ScopedEnvironment(std::string name, const std::optional<std::string>& value)
      : name_(std::move(name)) {
    if (const char* before = std::getenv(name_.c_str())) before_ = before;
    Set(value);
  }
  ~ScopedEnvironment() { Set(before_); }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  void Set(const std::optional<std::string>& value) {
    if (value)
      ::setenv(name_.c_str(), value->c_str(), 1);
    else
      ::unsetenv(name_.c_str());
  }

  std::string name_;
  std::optional<std::string> before_;
};

}  // namespace pxscheduler
