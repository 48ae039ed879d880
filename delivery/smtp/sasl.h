#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pxscheduler {

struct Credentials {
  std::string user_name;  // UTF-8
  std::string password;   // UTF-8
};

// The client's side of one authentication exchange (RFC 4422). Texts are not yet, or no longer, in
// base64.
class SaslExchange {
 public:
  virtual ~SaslExchange() = default;

  virtual std::string_view Mechanism() const = 0;
  // What goes out with the AUTH command; nothing where the server speaks first.
  virtual std::optional<std::string> InitialResponse() = 0;
  // Nothing for a challenge that is out of protocol.
  virtual std::optional<std::string> Respond(std::string_view challenge) = 0;
  // Whether the server has said all that it must before its success may be believed.
  virtual bool IsComplete() const = 0;
};

// The names of the mechanisms that this side knows, strongest first.
std::vector<std::string_view> SaslMechanisms();

// An exchange of one of these. `credentials` must hold no NUL.
std::unique_ptr<SaslExchange> NewSaslExchange(std::string_view mechanism,
                                              const Credentials& credentials);

}  // namespace pxscheduler
