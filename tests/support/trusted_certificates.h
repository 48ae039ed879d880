#pragma once

#include <memory>
#include <string>

namespace pxscheduler {

// Makes this user's or this process's TLS trust the certificates in a PEM file, and on Windows
// distrust them again at the end of its life.
class TrustedCertificates {
 public:
  explicit TrustedCertificates(const std::string& file);
  ~TrustedCertificates();
  TrustedCertificates(const TrustedCertificates&) = delete;
  TrustedCertificates& operator=(const TrustedCertificates&) = delete;

 private:
  struct Added;
  std::unique_ptr<Added> added_;
};

}  // namespace pxscheduler
