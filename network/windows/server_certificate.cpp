#include "network/windows/server_certificate.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

#include "network/socket_calls.h"

namespace pxscheduler {

namespace {

// Leaves the name alone; from wininet.h, where it means the same.
constexpr DWORD kIgnoreName = 0x00001000;

struct FreeChain {
  void operator()(const CERT_CHAIN_CONTEXT* chain) const { CertFreeCertificateChain(chain); }
};
using Chain = std::unique_ptr<const CERT_CHAIN_CONTEXT, FreeChain>;

struct FreeLocal {
  void operator()(void* memory) const { LocalFree(memory); }
};

Chain BuildChain(const CERT_CONTEXT& certificate, Deadline deadline) {
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  std::string usage = szOID_PKIX_KP_SERVER_AUTH;
  std::array usages = {usage.data()};
  CERT_CHAIN_PARA parameters{};
  // Up to what every version knows.
  parameters.cbSize = offsetof(CERT_CHAIN_PARA, pStrongSignPara);
  parameters.RequestedUsage.dwType = USAGE_MATCH_TYPE_AND;
  parameters.RequestedUsage.Usage.cUsageIdentifier = static_cast<DWORD>(usages.size());
  parameters.RequestedUsage.Usage.rgpszUsageIdentifier = usages.data();
  // 0 would stand for the system's own time-out.
  parameters.dwUrlRetrievalTimeout = static_cast<DWORD>(std::max<long long>(left.count(), 1));
  const CERT_CHAIN_CONTEXT* chain = nullptr;
  CertGetCertificateChain(nullptr, &certificate, nullptr, certificate.hCertStore, &parameters, 0,
                          nullptr, &chain);
  return Chain(chain);
}

// `name`, where it is not empty, is the host that the certificate must be made out to.
std::optional<std::string> PolicyViolation(const Chain& chain, std::wstring name) {
  SSL_EXTRA_CERT_CHAIN_POLICY_PARA ssl{};
  ssl.cbSize = sizeof(ssl);
  ssl.dwAuthType = AUTHTYPE_SERVER;
  ssl.fdwChecks = name.empty() ? kIgnoreName : 0;
  ssl.pwszServerName = name.empty() ? nullptr : name.data();
  CERT_CHAIN_POLICY_PARA parameters{};
  parameters.cbSize = sizeof(parameters);
  parameters.pvExtraPolicyPara = &ssl;
  CERT_CHAIN_POLICY_STATUS status{};
  status.cbSize = sizeof(status);
  if (CertVerifyCertificateChainPolicy(CERT_CHAIN_POLICY_SSL, chain.get(), &parameters, &status) ==
      FALSE)
    return "it cannot be checked";
  if (status.dwError == 0) return std::nullopt;
  return std::system_category().message(static_cast<int>(status.dwError));
}

// The bytes of a numeric address as a certificate holds them (RFC 5280 section 4.2.1.6).
std::optional<std::string> AddressBytes(const std::string& host) {
  std::string bytes(sizeof(in6_addr), '\0');
  if (inet_pton(AF_INET6, host.c_str(), bytes.data()) == 1) return bytes;
  bytes.resize(sizeof(in_addr));
  if (inet_pton(AF_INET, host.c_str(), bytes.data()) == 1) return bytes;
  return std::nullopt;
}

// Whether the certificate's alternative names hold this address.
bool NamesAddress(const CERT_CONTEXT& certificate, std::string_view address) {
  const CERT_EXTENSION* const extension =
      CertFindExtension(szOID_SUBJECT_ALT_NAME2, certificate.pCertInfo->cExtension,
                        certificate.pCertInfo->rgExtension);
  if (extension == nullptr) return false;
  void* decoded = nullptr;
  DWORD size = 0;
  if (CryptDecodeObjectEx(X509_ASN_ENCODING, X509_ALTERNATE_NAME, extension->Value.pbData,
                          extension->Value.cbData, CRYPT_DECODE_ALLOC_FLAG, nullptr,
                          static_cast<void*>(&decoded), &size) == FALSE)
    return false;
  const std::unique_ptr<void, FreeLocal> owner(decoded);
  const auto& names = *static_cast<const CERT_ALT_NAME_INFO*>(decoded);
  return std::any_of(names.rgAltEntry, names.rgAltEntry + names.cAltEntry,
                     [address](const CERT_ALT_NAME_ENTRY& entry) {
                       return entry.dwAltNameChoice == CERT_ALT_NAME_IP_ADDRESS &&
                              entry.IPAddress.cbData == address.size() &&
                              std::memcmp(entry.IPAddress.pbData, address.data(), address.size()) ==
                                  0;
                     });
}

}  // namespace

bool IsNumericHost(const std::string& host) { return AddressBytes(host).has_value(); }

std::optional<std::string> ReasonOfDistrust(const CERT_CONTEXT& certificate,
                                            const std::string& host, Deadline deadline) {
  const Chain chain = BuildChain(certificate, deadline);
  if (!chain || host.empty()) return "it cannot be checked";
  const std::optional<std::string> address = AddressBytes(host);
  if (!address) return PolicyViolation(chain, std::wstring(host.begin(), host.end()));
  // The system compares names only.
  if (const auto violation = PolicyViolation(chain, {})) return violation;
  if (NamesAddress(certificate, *address)) return std::nullopt;
  return "it was not made out to " + host;
}

}  // namespace pxscheduler
