#include "delivery/smtp/sasl.h"

#include <charconv>
#include <utility>

#include "delivery/smtp/random_tokens.h"
#include "platform/digests.h"
#include "text/base64.h"
#include "text/hexadecimal.h"

namespace pxscheduler {

namespace {

constexpr int kFewestIterations = 1;
constexpr int kMostIterations = 5'000'000;  // seconds of work; more is an attack

std::string Hexadecimal(std::string_view bytes) {
  std::string text;
  AppendHexadecimal(bytes, text);
  return text;
}

// RFC 4616.
class PlainExchange : public SaslExchange {
 public:
  explicit PlainExchange(Credentials credentials) : credentials_(std::move(credentials)) {}

  std::string_view Mechanism() const override { return "PLAIN"; }
  std::optional<std::string> InitialResponse() override {
    return '\0' + credentials_.user_name + '\0' + credentials_.password;
  }
  std::optional<std::string> Respond(std::string_view /*challenge*/) override {
    return std::nullopt;
  }
  bool IsComplete() const override { return true; }

 private:
  Credentials credentials_;
};

// draft-murchison-sasl-login: two questions, whatever their wording.
class LoginExchange : public SaslExchange {
 public:
  explicit LoginExchange(Credentials credentials) : credentials_(std::move(credentials)) {}

  std::string_view Mechanism() const override { return "LOGIN"; }
  std::optional<std::string> InitialResponse() override { return std::nullopt; }
  std::optional<std::string> Respond(std::string_view /*challenge*/) override {
    switch (questions_++) {
      case 0:
        return credentials_.user_name;
      case 1:
        return credentials_.password;
      default:
        return std::nullopt;
    }
  }
  bool IsComplete() const override { return questions_ == 2; }

 private:
  Credentials credentials_;
  int questions_ = 0;
};

// RFC 2195.
class CramMd5Exchange : public SaslExchange {
 public:
  explicit CramMd5Exchange(Credentials credentials) : credentials_(std::move(credentials)) {}

  std::string_view Mechanism() const override { return "CRAM-MD5"; }
  std::optional<std::string> InitialResponse() override { return std::nullopt; }
  std::optional<std::string> Respond(std::string_view challenge) override {
    if (responded_ || challenge.empty()) return std::nullopt;
    responded_ = true;
    return credentials_.user_name + ' ' + Hexadecimal(HmacMd5(credentials_.password, challenge));
  }
  bool IsComplete() const override { return responded_; }

 private:
  Credentials credentials_;
  bool responded_ = false;
};

// RFC 5802 and RFC 7677, without channel binding.
class ScramSha256Exchange : public SaslExchange {
 public:
  explicit ScramSha256Exchange(Credentials credentials)
      : password_(std::move(credentials.password)), nonce_(RandomToken()) {
    first_bare_ = "n=" + Escaped(credentials.user_name) + ",r=" + nonce_;
  }

  std::string_view Mechanism() const override { return "SCRAM-SHA-256"; }
  std::optional<std::string> InitialResponse() override { return "n,," + first_bare_; }
  std::optional<std::string> Respond(std::string_view challenge) override {
    switch (challenges_++) {
      case 0:
        return Proof(challenge);
      case 1:
        is_verified_ = challenge == "v=" + EncodeBase64(server_signature_);
        return is_verified_ ? std::optional<std::string>("") : std::nullopt;
      default:
        return std::nullopt;
    }
  }
  bool IsComplete() const override { return is_verified_; }

 private:
  static std::string Escaped(std::string_view name) {
    std::string escaped;
    for (const char byte : name)
      escaped += byte == ',' ? "=2C" : byte == '=' ? "=3D" : std::string(1, byte);
    return escaped;
  }

  // Takes the next field off "r=...,s=...,i=..." and returns its value; nothing where it has
  // another name.
  static std::optional<std::string_view> TakeField(std::string_view& text, std::string_view name) {
    if (!text.starts_with(name)) return std::nullopt;
    text.remove_prefix(name.size());
    const std::string_view value = text.substr(0, text.find(','));
    text.remove_prefix(std::min(value.size() + 1, text.size()));
    return value;
  }

  std::optional<std::string> Proof(std::string_view server_first) {
    std::string_view rest = server_first;
    const auto nonce = TakeField(rest, "r=");
    const auto encoded_salt = nonce ? TakeField(rest, "s=") : std::nullopt;
    const auto count = encoded_salt ? TakeField(rest, "i=") : std::nullopt;
    if (!count || !nonce->starts_with(nonce_) || nonce->size() == nonce_.size())
      return std::nullopt;
    const std::optional<std::string> salt = DecodeBase64(*encoded_salt);
    int iterations = 0;
    const auto [end, error] =
        std::from_chars(count->data(), count->data() + count->size(), iterations);
    if (!salt || error != std::errc() || end != count->data() + count->size() ||
        iterations < kFewestIterations || iterations > kMostIterations)
      return std::nullopt;
    const std::string final_without_proof = "c=biws,r=" + std::string(*nonce);
    const std::string signed_text =
        first_bare_ + ',' + std::string(server_first) + ',' + final_without_proof;
    const std::string salted = Pbkdf2Sha256(password_, *salt, iterations);
    const std::string client_key = HmacSha256(salted, "Client Key");
    const std::string signature = HmacSha256(Sha256(client_key), signed_text);
    server_signature_ = HmacSha256(HmacSha256(salted, "Server Key"), signed_text);
    std::string proof = client_key;
    for (std::size_t i = 0; i < proof.size(); ++i)
      proof[i] = static_cast<char>(proof[i] ^ signature[i]);
    return final_without_proof + ",p=" + EncodeBase64(proof);
  }

  std::string password_;
  std::string nonce_;
  std::string first_bare_;
  std::string server_signature_;
  int challenges_ = 0;
  bool is_verified_ = false;
};

template <typename Exchange>
std::unique_ptr<SaslExchange> Make(const Credentials& credentials) {
  return std::make_unique<Exchange>(credentials);
}

constexpr SaslMechanism kMechanisms[] = {{"SCRAM-SHA-256", false, Make<ScramSha256Exchange>},
                                         {"CRAM-MD5", false, Make<CramMd5Exchange>},
                                         {"PLAIN", true, Make<PlainExchange>},
                                         {"LOGIN", true, Make<LoginExchange>}};

}  // namespace

std::span<const SaslMechanism> SaslMechanisms() { return kMechanisms; }

}  // namespace pxscheduler
