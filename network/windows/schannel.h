#pragma once

#define SECURITY_WIN32
#define SCHANNEL_USE_BLACKLISTS  // declares SCH_CREDENTIALS
#include <windows.h>
// Needs the types of the header above.
#include <subauth.h>
// These need the types of both.
#include <schannel.h>
#include <security.h>

#include <string_view>

namespace pxscheduler {

// The machine's TLS, 1.2 or later, as a client without a certificate of its own. It leaves checking
// the server's certificate to its caller.
class SchannelCredentials {
 public:
  SchannelCredentials();
  ~SchannelCredentials();
  SchannelCredentials(const SchannelCredentials&) = delete;
  SchannelCredentials& operator=(const SchannelCredentials&) = delete;

  bool AreAcquired() const { return are_acquired_; }
  CredHandle* Get() { return &handle_; }

 private:
  bool Acquire(void* parameters);

  CredHandle handle_{};
  bool are_acquired_ = false;
};

// Owns the state of one connection; the system makes it with the first call that takes it.
class SchannelContext {
 public:
  SchannelContext();
  ~SchannelContext();
  SchannelContext(const SchannelContext&) = delete;
  SchannelContext& operator=(const SchannelContext&) = delete;

  bool Exists() const;
  CtxtHandle* Get() { return &handle_; }

 private:
  CtxtHandle handle_;
};

// A token that the system has allocated for the other side.
class SchannelToken {
 public:
  SchannelToken() = default;
  ~SchannelToken();
  SchannelToken(const SchannelToken&) = delete;
  SchannelToken& operator=(const SchannelToken&) = delete;

  SecBuffer* Get() { return &buffer_; }
  std::string_view Bytes() const;

 private:
  SecBuffer buffer_{0, SECBUFFER_TOKEN, nullptr};
};

}  // namespace pxscheduler
