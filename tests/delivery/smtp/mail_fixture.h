#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "delivery/smtp/smtp_mail_component.h"
#include "network/socket_network.h"
#include "tests/support/fake_platform.h"
#include "tests/support/scripted_smtp_server.h"

namespace pxscheduler {

// A mail component with a sender, a subject and a plain body.
class TestMail {
 public:
  explicit TestMail(int port, std::chrono::milliseconds longest = std::chrono::seconds(20),
                    std::unique_ptr<Network> network = NewSocketNetwork())
      : component_(
            system_, [this](const std::wstring& path) { return letters[path]; }, std::move(network),
            Timeouts().AtMost(longest)) {
    component_.SetServerHost(L"127.0.0.1");
    component_.SetServerPort(port);
    component_.SetSenderAddress(L"news@agency.example");
    component_.SetMessageTemplate(
        {.subject = {{L"News"}, {}}, .body = {{L"Hello\n.\nworld\n"}, {}}, .alternative_body = {}});
  }

  SmtpMailComponent& Component() { return component_; }
  const std::vector<std::wstring>& Warnings() const { return system_.warnings; }

  std::map<std::wstring, std::optional<Letter>> letters;  // by path

  // Logs in as "user".
  void UsePassword(const std::wstring& password) {
    component_.SetAuthenticationMode(MailComponent::kAuthenticateLogin);
    component_.SetAuthenticationOption(MailComponent::kAuthenticationOption);
    component_.SetUserName(L"user");
    component_.SetPassword(password);
  }

  // Sends one message and waits for its result.
  std::int32_t SendTo(const std::wstring& address) { return SendToEach({address}).front(); }

  // Sends a message to each, as a run does: the next is composed before the result is waited for.
  // The results, in the order of the addresses.
  std::vector<std::int32_t> SendToEach(const std::vector<std::wstring>& addresses) {
    std::vector<std::int32_t> results;
    for (const std::wstring& address : addresses) {
      component_.Compose(L"Ann Smith", address, {});
      if (&address != &addresses.front()) results.push_back(component_.AwaitResult());
      component_.Send();
    }
    results.push_back(component_.AwaitResult());
    return results;
  }

 private:
  FakeSystem system_;
  SmtpMailComponent component_;
};

}  // namespace pxscheduler
