#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace pxscheduler {

struct Credentials {
  std::string user_name;  // UTF-8
  std::string password;   // UTF-8
};

// The client's side of one authentication exchange (RFC 4422). The caller encodes and decodes
// base64.
class SaslExchange {
 public:
  virtual ~SaslExchange() = default;

  virtual std::string_view Mechanism() const = 0;
  // What the AUTH command carries; nothing where the server speaks first.
  virtual std::optional<std::string> InitialResponse() = 0;
  // Returns nothing for a challenge that violates the mechanism's protocol.
  virtual std::optional<std::string> Respond(std::string_view challenge) = 0;
  // Whether the server has said all that the mechanism requires before it may report success.
  virtual bool IsComplete() const = 0;
};

struct SaslMechanism {
  std::string_view name;
  bool shows_password;  // to the server, and to whoever listens
  // The credentials must not contain a NUL.
  std::unique_ptr<SaslExchange> (*make)(const Credentials& credentials);
};

// The supported mechanisms, strongest first.
std::span<const SaslMechanism> SaslMechanisms();

}  // namespace pxscheduler
