#include "tests/support/trusted_certificates.h"

#include <windows.h>
// Needs the types of the header above.
#include <wincrypt.h>

#include <optional>
#include <string_view>
#include <vector>

#include "tests/support/scratch_folder.h"
#include "text/base64.h"

namespace pxscheduler {

namespace {

// The certificates of a PEM file (RFC 7468), each in DER.
std::vector<std::string> ReadCertificates(std::string_view pem) {
  constexpr std::string_view kBegin = "-----BEGIN CERTIFICATE-----";
  constexpr std::string_view kEnd = "-----END CERTIFICATE-----";
  std::vector<std::string> certificates;
  for (std::size_t begin = pem.find(kBegin); begin != std::string_view::npos;
       begin = pem.find(kBegin, begin + 1)) {
    const std::size_t start = begin + kBegin.size();
    std::string encoded(pem.substr(start, pem.find(kEnd, start) - start));
    std::erase_if(encoded, [](char each) { return each == '\n' || each == '\r'; });
    if (std::optional<std::string> bytes = DecodeBase64(encoded))
      certificates.push_back(*std::move(bytes));
  }
  return certificates;
}

}  // namespace

struct TrustedCertificates::Added {
  struct CloseStore {
    void operator()(void* store) const { CertCloseStore(store, 0); }
  };

  struct DeleteCertificate {
    void operator()(const CERT_CONTEXT* certificate) const {
      CertDeleteCertificateFromStore(certificate);  // which also frees it
    }
  };

  std::unique_ptr<void, CloseStore> store;
  std::vector<std::unique_ptr<const CERT_CONTEXT, DeleteCertificate>> certificates;
};

TrustedCertificates::TrustedCertificates(const std::string& file)
    : added_(std::make_unique<Added>()) {
  added_->store.reset(
      CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"Root"));
  for (const std::string& bytes : ReadCertificates(ReadWholeFile(file))) {
    const CERT_CONTEXT* certificate = nullptr;
    if (CertAddEncodedCertificateToStore(
            added_->store.get(), X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(bytes.data()),
            static_cast<DWORD>(bytes.size()), CERT_STORE_ADD_ALWAYS, &certificate) != FALSE)
      added_->certificates.emplace_back(certificate);
  }
  // The chains are built from what the registry holds.
  CertControlStore(added_->store.get(), CERT_STORE_CTRL_COMMIT_FORCE_FLAG, CERT_STORE_CTRL_COMMIT,
                   nullptr);
}

TrustedCertificates::~TrustedCertificates() = default;

}  // namespace pxscheduler
