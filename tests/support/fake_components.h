#pragma once

#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "data/connection.h"
#include "data/recordset.h"
#include "delivery/mail_component.h"

namespace pxscheduler {

// Stays closed and keeps the string that it was last opened with. Its database is "Agency".
class FakeConnection : public Connection {
 public:
  void Open(const std::wstring& text, const std::wstring& /*user_id*/,
            const std::wstring& /*password*/, int /*options*/) override {
    connection_string = text;
  }
  int State() const override { return kStateClosed; }
  void SetCursorLocation(int /*location*/) override {}
  void Execute(const std::wstring& /*command_text*/, int /*options*/) override {}
  std::wstring DefaultDatabase() override { return L"Agency"; }
  void Close() override {}

  std::wstring connection_string;
};

// One row, marked for mail. The columns that the test does not set are Null.
class FakeRecordset : public Recordset {
 public:
  void Open(const std::wstring& /*source*/, Connection& /*connection*/, int /*cursor_type*/,
            int /*lock_type*/, int /*options*/) override {}
  bool EndOfFile() const override { return false; }
  std::size_t RecordCount() const override { return 1; }
  Value Fields(std::wstring_view name) const override {
    const auto field = row.find(name);
    return field == row.end() ? Value{} : field->second;
  }
  void SetSort(const std::wstring& /*column*/) override {}
  void MoveNext() override {}
  void Close() override {}

  std::map<std::wstring, Value, std::less<>> row{{L"SendEmail", true}};
};

// Records every call in order; AwaitResult() returns `result`.
class FakeMailComponent : public MailComponent {
 public:
  void SetServerHost(const std::wstring& host) override { Record(L"host", host); }
  void SetServerPort(std::int32_t port) override { Record(L"port", port); }
  void SetSenderAddress(const std::wstring& address) override { Record(L"sender", address); }
  void SetAuthenticationMode(std::int32_t mode) override { Record(L"mode", mode); }
  void SetAuthenticationOption(std::int32_t option) override { Record(L"option", option); }
  void SetUserName(const std::wstring& user_name) override { Record(L"user", user_name); }
  void SetPassword(const std::wstring& password) override { Record(L"password", password); }
  void SetSecurity(const std::wstring& security) override { Record(L"security", security); }
  void SetUnsubscribe(const std::wstring& address) override { Record(L"unsubscribe", address); }
  std::int32_t LoadBodyFromFile(const std::wstring& path, std::int32_t option) override {
    Record(L"load", path, option);
    return 0;
  }
  const std::wstring& BodyText() const override { return body; }
  const std::wstring& AlternativeBodyText() const override { return alternative; }
  void SetBodyText(TextPieces text) override { body = Joined(text); }
  void SetAlternativeBodyText(TextPieces text) override { alternative = Joined(text); }
  void SetHtml(std::int32_t flag) override { Record(L"html", flag); }
  void SetSubject(std::wstring text) override { subject = std::move(text); }
  void ResetRecipients(std::int32_t which) override { Record(L"reset", which); }
  void AddRecipient(const std::wstring& display_name, const std::wstring& address,
                    std::int32_t kind) override {
    Record(L"to", display_name, L"<" + address + L">", kind);
  }
  bool CanComposeMore() const override { return true; }
  void Compose() override { calls.emplace_back(L"compose"); }
  void Send() override {}
  std::int32_t AwaitResult() override { return result; }

  std::vector<std::wstring> calls;
  std::wstring subject;
  std::wstring body;
  std::wstring alternative;
  std::int32_t result = 0;

 private:
  template <typename... Arguments>
  void Record(const wchar_t* name, const Arguments&... arguments) {
    std::wostringstream call;
    call << name;
    ((call << L' ' << arguments), ...);
    calls.push_back(call.str());
  }
};

}  // namespace pxscheduler
