#include "network/tls_transport.h"

#include <arpa/inet.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <array>
#include <climits>
#include <string>
#include <utility>

namespace pxscheduler {

namespace {

// What the library writes to and reads from: another transport, with the deadline of the step that
// is under way.
struct Carrier {
  std::unique_ptr<Transport> transport;
  Deadline deadline;
  IoResult result = IoResult::kDone;  // of the last call

  static Carrier& Of(BIO* bio) { return *static_cast<Carrier*>(BIO_get_data(bio)); }
};

int WriteToCarrier(BIO* bio, const char* bytes, int size) {
  Carrier& carrier = Carrier::Of(bio);
  carrier.result =
      carrier.transport->Send({bytes, static_cast<std::size_t>(size)}, carrier.deadline);
  return carrier.result == IoResult::kDone ? size : -1;
}

int ReadFromCarrier(BIO* bio, char* bytes, int size) {
  Carrier& carrier = Carrier::Of(bio);
  std::size_t received = 0;
  carrier.result =
      carrier.transport->Receive(bytes, static_cast<std::size_t>(size), received, carrier.deadline);
  return carrier.result == IoResult::kDone ? static_cast<int>(received) : -1;
}

long ControlCarrier(BIO* /*bio*/, int command, long /*number*/, void* /*pointer*/) {
  return command == BIO_CTRL_FLUSH ? 1 : 0;
}

// For instance: certificate of "mail.example.org", good until Nov 16 06:00:00 2026 GMT: certificate
// has expired.
std::string CertificateProblem(X509_STORE_CTX* store) {
  std::string problem = "certificate";
  if (X509* const certificate = X509_STORE_CTX_get_current_cert(store)) {
    std::array<char, 256> name{};
    X509_NAME_get_text_by_NID(X509_get_subject_name(certificate), NID_commonName, name.data(),
                              static_cast<int>(name.size()));
    problem += std::string(" of \"") + name.data() + "\"";
    const std::unique_ptr<BIO, decltype(&BIO_free)> text(BIO_new(BIO_s_mem()), &BIO_free);
    char* bytes = nullptr;
    if (text && ASN1_TIME_print(text.get(), X509_get0_notAfter(certificate)) == 1) {
      const long size = BIO_get_mem_data(text.get(), &bytes);
      problem.append(", good until ").append(bytes, static_cast<std::size_t>(size));
    }
  }
  return problem + ": " + X509_verify_cert_error_string(X509_STORE_CTX_get_error(store));
}

int NoteProblem(int is_fine, X509_STORE_CTX* store) {
  if (is_fine == 0) {
    const auto* const connection = static_cast<const SSL*>(
        X509_STORE_CTX_get_ex_data(store, SSL_get_ex_data_X509_STORE_CTX_idx()));
    *static_cast<std::string*>(SSL_get_app_data(connection)) = CertificateProblem(store);
  }
  return is_fine;
}

using BioMethod = std::unique_ptr<BIO_METHOD, decltype(&BIO_meth_free)>;
using TlsContext = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;
using Connection = std::unique_ptr<SSL, decltype(&SSL_free)>;

class TlsTransport : public Transport {
 public:
  explicit TlsTransport(std::unique_ptr<Transport> transport)
      : carrier_{.transport = std::move(transport), .deadline = {}},
        method_(BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "transport"),
                &BIO_meth_free),
        context_(SSL_CTX_new(TLS_client_method()), &SSL_CTX_free),
        connection_(nullptr, &SSL_free) {}

  ~TlsTransport() override {
    if (is_open_) {
      carrier_.deadline = std::chrono::steady_clock::now() + kFarewell;
      SSL_shutdown(connection_.get());
      ERR_clear_error();
    }
  }

  IoResult Handshake(const std::string& host, CertificateCheck check, Deadline deadline,
                     std::string& problem) {
    carrier_.deadline = deadline;
    is_open_ = Prepare(host, check, problem) && SSL_connect(connection_.get()) == 1;
    const char* const reason = ERR_reason_error_string(ERR_peek_last_error());
    ERR_clear_error();
    if (connection_) SSL_set_app_data(connection_.get(), nullptr);
    if (is_open_) return IoResult::kDone;
    if (carrier_.result == IoResult::kTimedOut) {
      problem = "no answer";
      return IoResult::kTimedOut;
    }
    if (problem.empty()) problem = reason != nullptr ? reason : "the connection broke";
    return IoResult::kBroken;
  }

  IoResult Send(std::string_view bytes, Deadline deadline) override {
    carrier_.deadline = deadline;
    std::size_t written = 0;
    if (SSL_write_ex(connection_.get(), bytes.data(), bytes.size(), &written) == 1)
      return IoResult::kDone;
    return Failed();
  }

  IoResult Receive(char* bytes, std::size_t size, std::size_t& received,
                   Deadline deadline) override {
    carrier_.deadline = deadline;
    received = 0;
    if (SSL_read_ex(connection_.get(), bytes, size, &received) == 1) return IoResult::kDone;
    return Failed();
  }

  std::string LocalAddress() const override { return carrier_.transport->LocalAddress(); }
  std::string PeerAddress() const override { return carrier_.transport->PeerAddress(); }

 private:
  static constexpr std::chrono::milliseconds kFarewell{1000};

  // What is wrong with the certificate will be told in `problem`, until the handshake is over.
  bool Prepare(const std::string& host, CertificateCheck check, std::string& problem) {
    if (!method_ || !context_ || SSL_CTX_set_min_proto_version(context_.get(), TLS1_2_VERSION) != 1)
      return false;
    BIO_meth_set_write(method_.get(), &WriteToCarrier);
    BIO_meth_set_read(method_.get(), &ReadFromCarrier);
    BIO_meth_set_ctrl(method_.get(), &ControlCarrier);
    const bool checks = check == CertificateCheck::kTrustAndHostName;
    if (checks && SSL_CTX_set_default_verify_paths(context_.get()) != 1) return false;
    SSL_CTX_set_verify(context_.get(), checks ? SSL_VERIFY_PEER : SSL_VERIFY_NONE,
                       checks ? NoteProblem : nullptr);
    connection_.reset(SSL_new(context_.get()));
    BIO* const bio = BIO_new(method_.get());
    if (!connection_ || bio == nullptr) {
      BIO_free(bio);
      return false;
    }
    SSL_set_app_data(connection_.get(), &problem);
    BIO_set_data(bio, &carrier_);
    BIO_set_init(bio, 1);
    SSL_set_bio(connection_.get(), bio, bio);
    return NameServer(host);
  }

  // Server name indication knows no numeric addresses (RFC 6066 section 3).
  bool NameServer(const std::string& host) {
    std::array<unsigned char, sizeof(in6_addr)> number{};
    const bool is_numeric = inet_pton(AF_INET, host.c_str(), number.data()) == 1 ||
                            inet_pton(AF_INET6, host.c_str(), number.data()) == 1;
    if (is_numeric) {
      X509_VERIFY_PARAM* const expected = SSL_get0_param(connection_.get());
      return X509_VERIFY_PARAM_set1_ip_asc(expected, host.c_str()) == 1;
    }
    SSL_set_hostflags(connection_.get(), X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    return SSL_set_tlsext_host_name(connection_.get(), host.c_str()) == 1 &&
           SSL_set1_host(connection_.get(), host.c_str()) == 1;
  }

  IoResult Failed() {
    is_open_ = false;  // no close notification after an error
    ERR_clear_error();
    return carrier_.result == IoResult::kTimedOut ? IoResult::kTimedOut : IoResult::kBroken;
  }

  Carrier carrier_;
  BioMethod method_;
  TlsContext context_;
  Connection connection_;
  bool is_open_ = false;
};

}  // namespace

IoResult StartTlsOver(std::unique_ptr<Transport>& transport, const std::string& host,
                      CertificateCheck check, Deadline deadline, std::string& problem) {
  auto secure = std::make_unique<TlsTransport>(std::move(transport));
  const IoResult result = secure->Handshake(host, check, deadline, problem);
  transport = std::move(secure);
  return result;
}

}  // namespace pxscheduler
