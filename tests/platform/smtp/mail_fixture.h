#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/smtp/smtp_mail_component.h"
#include "tests/support/scripted_smtp_server.h"

namespace pxscheduler {

// The machine around a mail component: a clock that stands still, no environment, and the files of
// the real file system.
class QuietSystem : public System {
 public:
  Moment Now() const override;
  std::wstring EnvironmentVariable(const std::wstring& /*name*/) const override { return {}; }
  std::wstring CommandLine() const override { return {}; }
  std::wstring ProgramFolder() const override { return {}; }
  std::wstring TemporaryFolder() const override { return {}; }
  std::optional<int> OsMajorVersion() const override { return std::nullopt; }
  void ShowMessageBox(const std::wstring& /*caption*/, const std::wstring& /*text*/) override {}
  void Warn(const std::wstring& /*line*/) override {}
  void ShowProgress(const RunProgress& /*progress*/) override {}
  std::wstring FirstEntry(const std::wstring& /*path*/) const override { return {}; }
  void MakeFolder(const std::wstring& /*path*/) override {}
  std::unique_ptr<AppendFile> OpenForAppend(const std::wstring& /*path*/) override { return {}; }
  std::string ReadFile(const std::wstring& path) const override;
  std::wstring RealPath(const std::wstring& path) const override { return path; }
  void ReplaceContent(const std::wstring& /*path*/, std::string_view /*bytes*/) override {}
};

// UTF-8 under several names, and an ANSI code page in which every byte is its own character.
class FewCodePages : public CodePages {
 public:
  FewCodePages();
  const CodePage& Ansi() const override { return *ansi_; }
  std::unique_ptr<CodePage> Find(std::string_view name) const override;

 private:
  std::unique_ptr<CodePage> ansi_;
};

// A mail component with short time-outs, a sender, a subject and a plain body.
class TestMail {
 public:
  explicit TestMail(int port, std::chrono::milliseconds longest = std::chrono::milliseconds(2000),
                    std::unique_ptr<Network> network = nullptr);

  SmtpMailComponent& Component() { return *component_; }
  // Sends one message and waits for its result.
  std::int32_t SendTo(const std::wstring& address);
  // Sends a message to each, as a run does: the next is composed before the result is waited for.
  // The results, in the order of the addresses.
  std::vector<std::int32_t> SendToEach(const std::vector<std::wstring>& addresses);

 private:
  void ComposeTo(const std::wstring& address);

  QuietSystem system_;
  FewCodePages code_pages_;
  std::unique_ptr<SmtpMailComponent> component_;
};

}  // namespace pxscheduler
