#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

#include "platform/letter_case.h"
#include "tests/support/com_server/automation.h"
#include "tests/support/com_server/com_server.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr HRESULT kConnectionClosed = static_cast<HRESULT>(0x800A0E7D);
constexpr HRESULT kObjectClosed = static_cast<HRESULT>(0x800A0E78);
constexpr HRESULT kItemNotFound = static_cast<HRESULT>(0x800A0CC1);

HRESULT Give(VARIANT* result, VARTYPE type, LONG number) {
  V_VT(result) = type;
  if (type == VT_BOOL)
    V_BOOL(result) = number != 0 ? VARIANT_TRUE : VARIANT_FALSE;
  else
    V_I4(result) = number;
  return S_OK;
}

HRESULT Give(VARIANT* result, IDispatch* object) {
  V_VT(result) = VT_DISPATCH;
  V_DISPATCH(result) = object;
  return S_OK;
}

std::vector<std::wstring> Split(const std::wstring& line) {
  std::vector<std::wstring> parts;
  std::wistringstream stream(line);
  for (std::wstring part; std::getline(stream, part, L'\t');) parts.push_back(part);
  return parts;
}

struct ResultSet {
  std::vector<std::wstring> columns;
  std::vector<std::vector<std::wstring>> rows;
};

ResultSet ResultOf(const std::wstring& statement) {
  ResultSet result;
  bool wanted = false;
  std::wistringstream lines(FromUtf8(ReadWhole(EnvironmentText(kComRows))));
  for (std::wstring line; std::getline(lines, line);)
    if (line.starts_with(L"? "))
      wanted = statement.starts_with(line.substr(2));
    else if (wanted && result.columns.empty())
      result.columns = Split(line);
    else if (wanted)
      result.rows.push_back(Split(line));
  return result;
}

HRESULT GiveCell(const std::wstring& cell, VARIANT* result) {
  const std::wstring type = cell.substr(0, cell.find(L':'));
  const std::wstring text = type == cell ? L"" : cell.substr(type.size() + 1);
  if (type == L"null") {
    V_VT(result) = VT_NULL;
    return S_OK;
  }
  V_VT(result) = VT_BSTR;
  V_BSTR(result) = NewText(text);
  const VARTYPE wanted = type == L"long"    ? VT_I4
                         : type == L"bool"  ? VT_BOOL
                         : type == L"date"  ? VT_DATE
                         : type == L"money" ? VT_CY
                                            : VT_BSTR;
  if (wanted == VT_DATE)  // a serial number, which no locale reads otherwise
    ::VariantChangeTypeEx(result, result, LOCALE_INVARIANT, 0, VT_R8);
  return ::VariantChangeTypeEx(result, result, LOCALE_INVARIANT, 0, wanted);
}

class ConnectionObject : public Automation {
 public:
  ConnectionObject()
      : Automation(L"Connection", {L"Open", L"State", L"Execute", L"CursorLocation",
                                   L"DefaultDatabase", L"Close"}) {}
  bool IsOpen() const { return open_; }

 private:
  HRESULT Carry(DISPID member, WORD /*kind*/, const Arguments& /*arguments*/,
                VARIANT* result) override {
    switch (member) {
      case 1:
        open_ = true;
        return S_OK;
      case 2:
        return Give(result, VT_I4, open_ ? 1 : 0);
      case 3:
        return Give(result, NewRecordsetObject());
      case 5:
        V_VT(result) = VT_BSTR;
        V_BSTR(result) = NewText(L"Agency");
        return S_OK;
      case 6:
        open_ = false;
        return S_OK;
      default:
        return S_OK;
    }
  }

  bool open_ = false;
};

class RecordsetObject : public Automation {
 public:
  RecordsetObject()
      : Automation(L"Recordset",
                   {L"Open", L"EOF", L"RecordCount", L"Fields", L"Sort", L"MoveNext", L"Close"}) {}
  const ResultSet& Rows() const { return rows_; }
  std::size_t Current() const { return current_; }

 private:
  HRESULT Carry(DISPID member, WORD kind, const Arguments& arguments, VARIANT* result) override;
  void Sort(const std::wstring& column) {
    const auto at = std::ranges::find(rows_.columns, column) - rows_.columns.begin();
    std::ranges::stable_sort(rows_.rows, {}, [at](const std::vector<std::wstring>& row) {
      return LowerCase(row.at(static_cast<std::size_t>(at)));
    });
  }

  ResultSet rows_;
  std::size_t current_ = 0;
  bool open_ = false;
};

// Both keep their result set alive.
class FieldObject : public Automation {
 public:
  FieldObject(RecordsetObject& owner, std::size_t column)
      : Automation(L"Field", {L"Value"}), owner_(owner), column_(column) {
    owner_.AddRef();
  }
  ~FieldObject() override { owner_.Release(); }

 private:
  HRESULT Carry(DISPID /*member*/, WORD /*kind*/, const Arguments& /*arguments*/,
                VARIANT* result) override {
    return GiveCell(owner_.Rows().rows.at(owner_.Current()).at(column_), result);
  }

  RecordsetObject& owner_;
  std::size_t column_;
};

class FieldsObject : public Automation {
 public:
  explicit FieldsObject(RecordsetObject& owner) : Automation(L"Fields", {L"Item"}), owner_(owner) {
    owner_.AddRef();
  }
  ~FieldsObject() override { owner_.Release(); }

 private:
  HRESULT Carry(DISPID /*member*/, WORD /*kind*/, const Arguments& arguments,
                VARIANT* result) override {
    const std::vector<std::wstring>& columns = owner_.Rows().columns;
    const std::wstring name = LowerCase(V_BSTR(&arguments.at(0)));
    for (std::size_t i = 0; i < columns.size(); ++i)
      if (LowerCase(columns[i]) == name) return Give(result, new FieldObject(owner_, i));
    return kItemNotFound;
  }

  RecordsetObject& owner_;
};

HRESULT RecordsetObject::Carry(DISPID member, WORD /*kind*/, const Arguments& arguments,
                               VARIANT* result) {
  if (member == 1) {
    const auto* connection = static_cast<ConnectionObject*>(V_DISPATCH(&arguments.at(1)));
    if (!connection->IsOpen()) return kConnectionClosed;
    rows_ = ResultOf(V_BSTR(&arguments.at(0)));
    current_ = 0;
    open_ = true;
    return S_OK;
  }
  if (!open_) return kObjectClosed;
  switch (member) {
    case 2:
      return Give(result, VT_BOOL, current_ >= rows_.rows.size());
    case 3:
      return Give(result, VT_I4, static_cast<LONG>(rows_.rows.size()));
    case 4:
      return Give(result, new FieldsObject(*this));
    case 5:
      Sort(V_BSTR(&arguments.at(0)));
      return S_OK;
    case 6:
      ++current_;
      return S_OK;
    default:
      open_ = false;
      return S_OK;
  }
}

}  // namespace

IDispatch* NewConnectionObject() { return new ConnectionObject; }
IDispatch* NewRecordsetObject() { return new RecordsetObject; }

}  // namespace pxscheduler
