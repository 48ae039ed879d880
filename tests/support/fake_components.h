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

// Rows, each marked for mail. The columns that the test does not set are Null.
class FakeRecordset : public Recordset {
 public:
  using Row = std::map<std::wstring, Value, std::less<>>;

  void Open(const std::wstring& /*source*/, Connection& /*connection*/, int /*cursor_type*/,
            int /*lock_type*/, int /*options*/) override {}
  bool EndOfFile() const override { return current_ == rows.size(); }
  std::size_t RecordCount() const override { return rows.size(); }
  Value Fields(std::wstring_view name) const override {
    const auto field = rows[current_].find(name);
    if (field != rows[current_].end()) return field->second;
    return name == L"SendEmail" ? Value{true} : Value{};
  }
  void SetSort(const std::wstring& /*column*/) override {}
  void MoveNext() override { ++current_; }
  void Close() override {}

  std::vector<Row> rows{1};

 private:
  std::size_t current_ = 0;
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
  const std::wstring& BodyText() const override { return no_text_; }
  const std::wstring& AlternativeBodyText() const override { return no_text_; }
  void SetHtml(std::int32_t flag) override { Record(L"html", flag); }
  void SetMessageTemplate(MessageTemplate message) override { message_ = std::move(message); }
  bool CanComposeMore() const override { return true; }
  void Compose(const std::wstring& display_name, const std::wstring& address,
               std::span<const std::wstring> values) override {
    ComposeTexts(display_name, address,
                 {Filled(message_.subject, values), Filled(message_.body, values),
                  Filled(message_.alternative_body, values)});
  }
  void ComposeTexts(const std::wstring& display_name, const std::wstring& address,
                    const MessageTexts& texts) override {
    calls.push_back(L"compose " + display_name + L" <" + address + L"> " + texts.subject + L" | " +
                    texts.body + L" | " + texts.alternative_body);
  }
  void Send() override { calls.emplace_back(L"send"); }
  std::int32_t AwaitResult() override {
    calls.emplace_back(L"await");
    return result;
  }

  std::vector<std::wstring> calls;
  std::int32_t result = 0;

 private:
  MessageTemplate message_;
  std::wstring no_text_;

  template <typename... Arguments>
  void Record(const wchar_t* name, const Arguments&... arguments) {
    std::wostringstream call;
    call << name;
    ((call << L' ' << arguments), ...);
    calls.push_back(call.str());
  }
};

}  // namespace pxscheduler
