#include "network/windows/schannel.h"

#include <string>

namespace pxscheduler {

namespace {

constexpr DWORD kFlags =
    SCH_CRED_NO_DEFAULT_CREDS | SCH_CRED_MANUAL_CRED_VALIDATION | SCH_USE_STRONG_CRYPTO;

}  // namespace

// The newer of the two structures is the only one with which TLS 1.3 is spoken; before Windows 10
// the system knows the older one alone.
SchannelCredentials::SchannelCredentials() {
  TLS_PARAMETERS tls{};
  tls.grbitDisabledProtocols = static_cast<DWORD>(~(SP_PROT_TLS1_2_CLIENT | SP_PROT_TLS1_3_CLIENT));
  SCH_CREDENTIALS credentials{};
  credentials.dwVersion = SCH_CREDENTIALS_VERSION;
  credentials.dwFlags = kFlags;
  credentials.cTlsParameters = 1;
  credentials.pTlsParameters = &tls;
  SCHANNEL_CRED older{};
  older.dwVersion = SCHANNEL_CRED_VERSION;
  older.dwFlags = kFlags;
  older.grbitEnabledProtocols = SP_PROT_TLS1_2_CLIENT;
  are_acquired_ = Acquire(&credentials) || Acquire(&older);
}

SchannelCredentials::~SchannelCredentials() {
  if (are_acquired_) FreeCredentialsHandle(&handle_);
}

bool SchannelCredentials::Acquire(void* parameters) {
  std::wstring package = UNISP_NAME_W;
  TimeStamp expiry{};
  return AcquireCredentialsHandleW(nullptr, package.data(), SECPKG_CRED_OUTBOUND, nullptr,
                                   parameters, nullptr, nullptr, &handle_, &expiry) == SEC_E_OK;
}

SchannelContext::SchannelContext() { SecInvalidateHandle(&handle_); }

SchannelContext::~SchannelContext() {
  if (Exists()) DeleteSecurityContext(&handle_);
}

bool SchannelContext::Exists() const {
  // The macro's parameter has no const.
  return handle_.dwLower != static_cast<ULONG_PTR>(-1) ||
         handle_.dwUpper != static_cast<ULONG_PTR>(-1);
}

SchannelToken::~SchannelToken() {
  if (buffer_.pvBuffer != nullptr) FreeContextBuffer(buffer_.pvBuffer);
}

std::string_view SchannelToken::Bytes() const {
  return {static_cast<const char*>(buffer_.pvBuffer),
          buffer_.pvBuffer == nullptr ? 0 : static_cast<std::size_t>(buffer_.cbBuffer)};
}

}  // namespace pxscheduler
