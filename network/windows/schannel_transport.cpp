#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "network/socket_calls.h"
#include "network/tls_transport.h"
#include "network/windows/schannel.h"
#include "network/windows/server_certificate.h"

namespace pxscheduler {

namespace {

constexpr DWORD kContextFlags = ISC_REQ_SEQUENCE_DETECT | ISC_REQ_REPLAY_DETECT |
                                ISC_REQ_CONFIDENTIALITY | ISC_REQ_EXTENDED_ERROR |
                                ISC_REQ_ALLOCATE_MEMORY | ISC_REQ_STREAM |
                                ISC_REQ_MANUAL_CRED_VALIDATION | ISC_REQ_USE_SUPPLIED_CREDS;
constexpr std::size_t kReadSize = 16384;
// More than any handshake and any record needs.
constexpr std::size_t kMostPending = 1 << 18;
constexpr int kMostRounds = 1000;
constexpr std::chrono::milliseconds kFarewell{1000};

// Whether a record may begin so: with one of the content types of RFC 8446 section 5.1.
bool BeginsRecord(char content_type) {
  constexpr char kChangeCipherSpec = 20;
  constexpr char kApplicationData = 23;
  return content_type >= kChangeCipherSpec && content_type <= kApplicationData;
}

SecBuffer BufferOf(ULONG type, char* bytes = nullptr, std::size_t size = 0) {
  return {static_cast<ULONG>(size), type, bytes};
}

template <std::size_t kCount>
SecBufferDesc Describe(std::array<SecBuffer, kCount>& buffers) {
  return {SECBUFFER_VERSION, static_cast<ULONG>(kCount), buffers.data()};
}

template <std::size_t kCount>
const SecBuffer* Find(const std::array<SecBuffer, kCount>& buffers, ULONG type) {
  const auto found = std::find_if(buffers.begin(), buffers.end(), [type](const SecBuffer& each) {
    return each.BufferType == type;
  });
  return found == buffers.end() ? nullptr : &*found;
}

class SchannelTransport : public Transport {
 public:
  explicit SchannelTransport(std::unique_ptr<Transport> transport)
      : transport_(std::move(transport)) {}

  ~SchannelTransport() override {
    if (is_open_) SayFarewell();
  }

  IoResult Handshake(const std::string& host, CertificateCheck check, Deadline deadline,
                     std::string& problem) {
    host_ = host;
    check_ = check;
    const IoResult result = Negotiate(deadline);
    if (result == IoResult::kTimedOut) problem = "no answer";
    if (result == IoResult::kBroken) problem = problem_.empty() ? "the connection broke" : problem_;
    is_open_ =
        result == IoResult::kDone &&
        QueryContextAttributesW(context_.Get(), SECPKG_ATTR_STREAM_SIZES, &sizes_) == SEC_E_OK;
    return result == IoResult::kDone && !is_open_ ? IoResult::kBroken : result;
  }

  IoResult Send(std::string_view bytes, Deadline deadline) override {
    records_.clear();
    while (!bytes.empty()) {
      const std::size_t size = std::min<std::size_t>(bytes.size(), sizes_.cbMaximumMessage);
      if (!AppendRecord(bytes.substr(0, size))) return Failed(IoResult::kBroken);
      bytes.remove_prefix(size);
    }
    return Failed(transport_->Send(records_, deadline));
  }

  IoResult Receive(char* bytes, std::size_t size, std::size_t& received,
                   Deadline deadline) override {
    received = 0;
    while (decrypted_.empty()) {
      const IoResult result = pending_.empty() ? ReadMore(deadline) : Decrypt(deadline);
      if (result != IoResult::kDone) return Failed(result);
    }
    received = std::min(size, decrypted_.size());
    std::memcpy(bytes, decrypted_.data(), received);
    decrypted_.erase(0, received);
    return IoResult::kDone;
  }

  std::string LocalAddress() const override { return transport_->LocalAddress(); }
  std::string PeerAddress() const override { return transport_->PeerAddress(); }

 private:
  // Handshakes: at the start, and again whenever the server wants to. What has arrived for it is
  // in `pending_`, and so is what has arrived behind it.
  IoResult Negotiate(Deadline deadline) {
    if (!credentials_.AreAcquired()) return IoResult::kBroken;
    bool asked_for_certificate = false;
    for (int round = 0; round < kMostRounds; ++round) {
      // A server that goes on in the clear would have the system wait for the rest of a record.
      if (!pending_.empty() && !BeginsRecord(pending_.front())) return IoResult::kBroken;
      SchannelToken token;
      const SECURITY_STATUS status = Step(token);
      if (status == SEC_I_INCOMPLETE_CREDENTIALS && !asked_for_certificate) {
        asked_for_certificate = true;  // the server wants one; the same step again goes without
        continue;
      }
      if (!token.Bytes().empty()) {  // an alert, where the step has failed
        const IoResult sent = transport_->Send(token.Bytes(), deadline);
        if (sent != IoResult::kDone) return sent;
      }
      if (status == SEC_E_OK) return IsAcceptable(deadline) ? IoResult::kDone : IoResult::kBroken;
      const bool goes_on = status == SEC_I_CONTINUE_NEEDED || status == SEC_E_INCOMPLETE_MESSAGE;
      if (!goes_on) {
        problem_ = std::system_category().message(static_cast<int>(status));
        return IoResult::kBroken;
      }
      if (pending_.empty() || status == SEC_E_INCOMPLETE_MESSAGE) {
        const IoResult read = ReadMore(deadline);
        if (read != IoResult::kDone) return read;
      }
    }
    return IoResult::kBroken;
  }

  // One step of a handshake, which takes what it needs off `pending_`.
  SECURITY_STATUS Step(SchannelToken& token) {
    std::array input = {BufferOf(SECBUFFER_TOKEN, pending_.data(), pending_.size()),
                        BufferOf(SECBUFFER_EMPTY)};
    SecBufferDesc input_description = Describe(input);
    SecBufferDesc output_description{SECBUFFER_VERSION, 1, token.Get()};
    DWORD attributes = 0;
    TimeStamp expiry{};
    const bool is_first = !context_.Exists();
    std::wstring name(host_.begin(), host_.end());
    // Server name indication knows no numeric addresses (RFC 6066 section 3).
    wchar_t* const target = IsNumericHost(host_) ? nullptr : name.data();
    const SECURITY_STATUS status =
        InitializeSecurityContextW(credentials_.Get(), is_first ? nullptr : context_.Get(), target,
                                   kContextFlags, 0, 0, is_first ? nullptr : &input_description, 0,
                                   context_.Get(), &output_description, &attributes, &expiry);
    if (status == SEC_E_OK || status == SEC_I_CONTINUE_NEEDED)
      KeepExtra(is_first ? nullptr : Find(input, SECBUFFER_EXTRA));
    return status;
  }

  bool IsAcceptable(Deadline deadline) {
    if (check_ == CertificateCheck::kNone) return true;
    PCCERT_CONTEXT certificate = nullptr;
    if (QueryContextAttributesW(context_.Get(), SECPKG_ATTR_REMOTE_CERT_CONTEXT,
                                static_cast<void*>(&certificate)) != SEC_E_OK ||
        certificate == nullptr)
      return false;
    const std::unique_ptr<const CERT_CONTEXT, decltype(&CertFreeCertificateContext)> owner(
        certificate, &CertFreeCertificateContext);
    const std::optional<std::string> distrust = ReasonOfDistrust(*certificate, host_, deadline);
    if (distrust) problem_ = "certificate: " + *distrust;
    return !distrust;
  }

  // Decrypts one record of `pending_`, or reads the rest of it.
  IoResult Decrypt(Deadline deadline) {
    std::array buffers = {BufferOf(SECBUFFER_DATA, pending_.data(), pending_.size()),
                          BufferOf(SECBUFFER_EMPTY), BufferOf(SECBUFFER_EMPTY),
                          BufferOf(SECBUFFER_EMPTY)};
    SecBufferDesc description = Describe(buffers);
    const SECURITY_STATUS status = DecryptMessage(context_.Get(), &description, 0, nullptr);
    if (status == SEC_E_INCOMPLETE_MESSAGE) return ReadMore(deadline);
    if (status != SEC_E_OK && status != SEC_I_RENEGOTIATE)
      return IoResult::kBroken;  // SEC_I_CONTEXT_EXPIRED is the server's farewell
    if (const SecBuffer* const data = Find(buffers, SECBUFFER_DATA))
      decrypted_.append(static_cast<const char*>(data->pvBuffer), data->cbBuffer);
    KeepExtra(Find(buffers, SECBUFFER_EXTRA));
    // In TLS 1.3 this is any message of the handshake that comes later, such as a session ticket.
    return status == SEC_I_RENEGOTIATE ? Negotiate(deadline) : IoResult::kDone;
  }

  // Drops what has been taken off `pending_`: all but the extra bytes at its end.
  void KeepExtra(const SecBuffer* extra) {
    const std::size_t kept = extra == nullptr ? 0 : extra->cbBuffer;
    pending_.erase(0, pending_.size() - std::min<std::size_t>(kept, pending_.size()));
  }

  IoResult ReadMore(Deadline deadline) {
    const std::size_t size = pending_.size();
    if (size > kMostPending) return IoResult::kBroken;
    pending_.resize(size + kReadSize);
    std::size_t received = 0;
    const IoResult result =
        transport_->Receive(pending_.data() + size, kReadSize, received, deadline);
    pending_.resize(size + received);
    return result;
  }

  bool AppendRecord(std::string_view bytes) {
    const std::size_t start = records_.size();
    records_.resize(start + sizes_.cbHeader + bytes.size() + sizes_.cbTrailer);
    char* const header = records_.data() + start;
    char* const data = header + sizes_.cbHeader;
    std::memcpy(data, bytes.data(), bytes.size());
    std::array buffers = {BufferOf(SECBUFFER_STREAM_HEADER, header, sizes_.cbHeader),
                          BufferOf(SECBUFFER_DATA, data, bytes.size()),
                          BufferOf(SECBUFFER_STREAM_TRAILER, data + bytes.size(), sizes_.cbTrailer),
                          BufferOf(SECBUFFER_EMPTY)};
    SecBufferDesc description = Describe(buffers);
    if (EncryptMessage(context_.Get(), 0, &description, 0) != SEC_E_OK) return false;
    // The trailer may be shorter than its longest.
    records_.resize(start + buffers[0].cbBuffer + buffers[1].cbBuffer + buffers[2].cbBuffer);
    return true;
  }

  // close_notify (RFC 8446 section 6.1), for which nobody waits.
  void SayFarewell() {
    DWORD shutdown = SCHANNEL_SHUTDOWN;
    std::array buffers = {
        BufferOf(SECBUFFER_TOKEN, reinterpret_cast<char*>(&shutdown), sizeof(shutdown))};
    SecBufferDesc description = Describe(buffers);
    if (ApplyControlToken(context_.Get(), &description) != SEC_E_OK) return;
    pending_.clear();
    SchannelToken token;
    Step(token);
    if (!token.Bytes().empty())
      transport_->Send(token.Bytes(), std::chrono::steady_clock::now() + kFarewell);
  }

  IoResult Failed(IoResult result) {
    is_open_ = is_open_ && result == IoResult::kDone;  // no farewell after an error
    return result;
  }

  SocketLibrary library_;
  std::unique_ptr<Transport> transport_;
  SchannelCredentials credentials_;
  SchannelContext context_;
  SecPkgContext_StreamSizes sizes_{};
  std::string host_;
  CertificateCheck check_ = CertificateCheck::kTrustAndHostName;
  std::string pending_;    // received and not yet decrypted
  std::string decrypted_;  // and not yet handed out
  std::string records_;    // to be sent
  std::string problem_;    // of a handshake that failed
  bool is_open_ = false;
};

}  // namespace

IoResult StartTlsOver(std::unique_ptr<Transport>& transport, const std::string& host,
                      CertificateCheck check, Deadline deadline, std::string& problem) {
  auto secure = std::make_unique<SchannelTransport>(std::move(transport));
  const IoResult result = secure->Handshake(host, check, deadline, problem);
  transport = std::move(secure);
  return result;
}

}  // namespace pxscheduler
