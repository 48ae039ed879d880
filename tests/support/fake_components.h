#pragma once

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "platform/connection.h"
#include "platform/mail_component.h"
#include "platform/recordset.h"
#include "platform/runtime_error.h"
#include "platform/text_control.h"

namespace pxscheduler {

// Records every call in order and fails to open for the passwords that it is told to refuse.
class FakeConnection : public Connection {
 public:
  void Open(const std::wstring& connection_string, const std::wstring& user_id,
            const std::wstring& password, int options) override {
    calls.push_back(L"Open " + connection_string);
    EXPECT_EQ(user_id, L"");
    EXPECT_EQ(password, L"");
    EXPECT_EQ(options, kOptionUnspecified);
    for (const std::wstring& refused : refused_passwords) {
      if (connection_string.find(L";Password=" + refused + L";") != std::wstring::npos) {
        throw RuntimeError{-2147217843, L"Login failed for user 'appuser'."};
      }
    }
    state = kStateOpen;
  }
  int State() const override { return state; }
  void SetCursorLocation(int location) override {
    calls.push_back(L"CursorLocation " + std::to_wstring(location));
  }
  void Execute(const std::wstring& command_text, int options) override {
    EXPECT_EQ(options, kOptionUnspecified);
    calls.push_back(L"Execute " + command_text);
  }
  std::wstring DefaultDatabase() override { return database; }
  void Close() override { state = kStateClosed; }

  std::vector<std::wstring> refused_passwords;
  std::vector<std::wstring> calls;
  std::wstring database;
  int state = kStateClosed;
};

// Hands out the rows it is given; `opened` keeps the statements.
class FakeRecordset : public Recordset {
 public:
  using Row = std::map<std::wstring, Value, std::less<>>;

  void Open(const std::wstring& source, Connection& connection, int /*cursor_type*/,
            int /*lock_type*/, int /*options*/) override {
    if (connection.State() != Connection::kStateOpen) throw ConnectionClosed();
    opened.push_back(source);
    current = 0;
  }
  bool EndOfFile() const override { return current >= rows.size(); }
  std::size_t RecordCount() const override { return rows.size(); }
  Value Fields(std::wstring_view name) const override {
    if (EndOfFile()) throw NoCurrentRecord();
    const auto field = rows[current].find(name);
    if (field == rows[current].end()) throw ItemNotFound();
    return field->second;
  }
  void SetSort(const std::wstring& /*column*/) override {}
  void MoveNext() override { ++current; }
  void Close() override { ++closed; }

  std::vector<Row> rows;
  std::vector<std::wstring> opened;
  std::size_t current = 0;
  int closed = 0;
};

// A row with every column that a message needs, Null but for these two.
inline FakeRecordset::Row ClientRow(Value email, Value send_email) {
  FakeRecordset::Row row{{L"Email", std::move(email)}, {L"SendEmail", std::move(send_email)}};
  for (const wchar_t* column : {L"ProfileNumber", L"Prefix", L"FirstName", L"LastName", L"FullName",
                                L"Attention", L"Phone", L"Fax", L"BirthDate", L"AnniversaryDate",
                                L"TravelDate", L"ReturnDate", L"FirstDate", L"LastDate"})
    row[column] = std::monostate{};
  return row;
}

// Records every call in order; AwaitResult() returns `result`.
class FakeMailComponent : public MailComponent {
 public:
  void SetServerHost(const std::wstring& host) override { calls.push_back(L"host " + host); }
  void SetServerPort(std::int32_t port) override {
    calls.push_back(L"port " + std::to_wstring(port));
  }
  void SetSenderAddress(const std::wstring& address) override {
    calls.push_back(L"sender " + address);
  }
  void SetAuthenticationMode(std::int32_t mode) override {
    calls.push_back(L"mode " + std::to_wstring(mode));
  }
  void SetAuthenticationOption(std::int32_t option) override {
    calls.push_back(L"option " + std::to_wstring(option));
  }
  void SetUserName(const std::wstring& user_name) override {
    calls.push_back(L"user " + user_name);
  }
  void SetPassword(const std::wstring& password) override {
    calls.push_back(L"password " + password);
  }
  void SetSecurity(const std::wstring& security) override {
    calls.push_back(L"security " + security);
  }
  void SetUnsubscribe(const std::wstring& address) override {
    calls.push_back(L"unsubscribe " + address);
  }
  std::int32_t LoadBodyFromFile(const std::wstring& path, std::int32_t option) override {
    calls.push_back(L"load " + path + L" " + std::to_wstring(option));
    return load_status;
  }
  const std::wstring& BodyText() const override { return body; }
  const std::wstring& AlternativeBodyText() const override { return alternative; }
  void SetBodyText(std::wstring text) override { body = std::move(text); }
  void SetAlternativeBodyText(std::wstring text) override { alternative = std::move(text); }
  void SetHtml(std::int32_t flag) override { calls.push_back(L"html " + std::to_wstring(flag)); }
  void SetSubject(std::wstring text) override { subject = std::move(text); }
  void ResetRecipients(std::int32_t which) override {
    calls.push_back(L"reset " + std::to_wstring(which));
  }
  void AddRecipient(const std::wstring& display_name, const std::wstring& address,
                    std::int32_t kind) override {
    calls.push_back(L"to " + display_name + L" <" + address + L"> " + std::to_wstring(kind));
  }
  void Compose() override { calls.emplace_back(L"compose"); }
  void Send() override { calls.emplace_back(L"send"); }
  std::int32_t AwaitResult() override {
    calls.emplace_back(L"await");
    return result;
  }

  std::vector<std::wstring> calls;
  std::wstring subject;
  std::wstring body;
  std::wstring alternative;
  std::int32_t load_status = 0;
  std::int32_t result = 0;
};

class FakeTextControl : public TextControl {
 public:
  void Load(const std::wstring& path, std::int16_t offset, std::int16_t format) override {
    calls.push_back(L"load " + path + L" " + std::to_wstring(offset) + L" " +
                    std::to_wstring(format));
  }
  void Save(const std::wstring& path, std::int16_t offset, std::int16_t format) override {
    calls.push_back(L"save " + path + L" " + std::to_wstring(offset) + L" " +
                    std::to_wstring(format));
  }
  std::int32_t DocumentPageValue(int index) const override {
    return document_page.at(static_cast<std::size_t>(index));
  }
  void SetDocumentPageValue(int index, std::int32_t value) override {
    document_page.at(static_cast<std::size_t>(index)) = value;
  }
  std::int32_t PageSetting(int index) const override {
    return page_settings.at(static_cast<std::size_t>(index));
  }
  void SetPageSetting(int index, std::int32_t value) override {
    page_settings.at(static_cast<std::size_t>(index)) = value;
  }

  std::vector<std::wstring> calls;
  std::array<std::int32_t, kPageValues> document_page{};
  std::array<std::int32_t, kPageValues> page_settings{};
};

}  // namespace pxscheduler
