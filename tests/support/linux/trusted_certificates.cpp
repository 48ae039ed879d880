#include "tests/support/trusted_certificates.h"

#include "tests/support/scoped_environment.h"

namespace pxscheduler {

struct TrustedCertificates::Added {
  ScopedEnvironment environment;
};

TrustedCertificates::TrustedCertificates(const std::string& file)
    : added_(new Added{{"SSL_CERT_FILE", file}}) {}

TrustedCertificates::~TrustedCertificates() = default;

}  // namespace pxscheduler
