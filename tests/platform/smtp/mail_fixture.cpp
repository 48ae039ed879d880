#include "tests/platform/smtp/mail_fixture.h"

#include <filesystem>
#include <utility>

#include "platform/runtime_error.h"
#include "platform/smtp/socket_network.h"

namespace pxscheduler {

namespace {

class Utf8CodePage : public CodePage {
 public:
  std::string ToBytes(std::wstring_view text) const override { return ToUtf8(text); }
  std::wstring FromBytes(std::string_view bytes) const override { return FromUtf8(bytes); }
  std::wstring RoundTrip(std::wstring_view text) const override { return std::wstring(text); }
};

class Latin1CodePage : public CodePage {
 public:
  std::string ToBytes(std::wstring_view text) const override { return {text.begin(), text.end()}; }
  std::wstring FromBytes(std::string_view bytes) const override {
    std::wstring text;
    for (const char byte : bytes) {
      text += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    }
    return text;
  }
  std::wstring RoundTrip(std::wstring_view text) const override { return std::wstring(text); }
};

}  // namespace

Moment QuietSystem::Now() const {
  using namespace std::chrono_literals;
  return {
      .local = {.date = std::chrono::sys_days(2026y / 11 / 16), .time_of_day = 15h + 7min + 41s},
      .utc_offset = -210min};
}

std::string QuietSystem::ReadFile(const std::wstring& path) const {
  if (!std::filesystem::exists(path)) {
    throw FileNotFound(path);
  }
  return ReadWholeFile(path);
}

FewCodePages::FewCodePages() : ansi_(std::make_unique<Latin1CodePage>()) {}

std::unique_ptr<CodePage> FewCodePages::Find(std::string_view name) const {
  if (name == "utf-8" || name == "UTF-8") {
    return std::make_unique<Utf8CodePage>();
  }
  return nullptr;
}

TestMail::TestMail(int port, std::chrono::milliseconds longest, std::unique_ptr<Network> network)
    : component_(std::make_unique<SmtpMailComponent>(
          system_, code_pages_, HtmlRenderings(), network ? std::move(network) : NewSocketNetwork(),
          Timeouts().AtMost(longest))) {
  component_->SetServerHost(L"127.0.0.1");
  component_->SetServerPort(port);
  component_->SetSenderAddress(L"news@agency.example");
  component_->SetSubject(L"News");
  component_->SetBodyText(L"Hello\n.\nworld\n");
}

std::int32_t TestMail::SendTo(const std::wstring& address) { return SendToEach({address}).front(); }

std::vector<std::int32_t> TestMail::SendToEach(const std::vector<std::wstring>& addresses) {
  std::vector<std::int32_t> results;
  for (const std::wstring& address : addresses) {
    ComposeTo(address);
    if (&address != &addresses.front()) {
      results.push_back(component_->AwaitResult());
    }
    component_->Send();
  }
  results.push_back(component_->AwaitResult());
  return results;
}

void TestMail::ComposeTo(const std::wstring& address) {
  component_->ResetRecipients(MailComponent::kAllRecipients);
  component_->AddRecipient(L"Ann Smith", address, MailComponent::kRecipientTo);
  component_->Compose();
}

}  // namespace pxscheduler
