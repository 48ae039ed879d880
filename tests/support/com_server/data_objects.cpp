#include <algorithm>
#include <cstddef>
#include <memory>

#include "tests/support/com_server/automation.h"

namespace pxscheduler {
namespace {

constexpr HRESULT kItemNotFound = static_cast<HRESULT>(0x800A0CC1);

struct Cursor {
  ResultSet set;
  std::size_t row = 0;
};

Automation::Member Does(const std::function<void()>& action) {
  return [action](const Arguments&, VARIANT&) {
    action();
    return S_OK;
  };
}

template <typename Expression>
Automation::Member Gives(const Expression& expression) {
  return [expression](const Arguments&, VARIANT& result) { return Give(result, expression()); };
}

// Of the cursor's current row at each call.
IDispatch* NewFieldObject(ComScript& script, const std::shared_ptr<Cursor>& cursor,
                          std::size_t column) {
  const auto value = [cursor, column](const Arguments&, VARIANT& result) {
    const auto& cell = cursor->set.rows.at(cursor->row).at(column);
    if (cell) return Give(result, *cell);
    V_VT(&result) = VT_NULL;
    return S_OK;
  };
  return new Automation(script, "Field", {{L"Value", value}});
}

IDispatch* NewFieldsObject(ComScript& script, const std::shared_ptr<Cursor>& cursor) {
  const auto item = [&script, cursor](const Arguments& arguments, VARIANT& result) {
    const auto& columns = cursor->set.columns;
    const auto found = std::ranges::find(columns, std::wstring(V_BSTR(&arguments.at(0))));
    if (found == columns.end()) return kItemNotFound;
    const auto column = static_cast<std::size_t>(found - columns.begin());
    return Give(result, NewFieldObject(script, cursor, column));
  };
  return new Automation(script, "Fields", {{L"Item", item}});
}

}  // namespace

IDispatch* NewConnectionObject(ComScript& script) {
  const auto is_open = std::make_shared<LONG>(0);
  return new Automation(script, "Connection",
                        {{L"Open", Does([is_open] { *is_open = 1; })},
                         {L"State", Gives([is_open] { return *is_open; })},
                         {L"Execute", Gives([&script] { return NewRecordsetObject(script); })},
                         {L"CursorLocation", Does([] {})},
                         {L"DefaultDatabase", Gives([] { return std::wstring(L"Agency"); })},
                         {L"Close", Does([is_open] { *is_open = 0; })}});
}

IDispatch* NewRecordsetObject(ComScript& script) {
  const auto cursor = std::make_shared<Cursor>();
  const auto open = [&script, cursor](const Arguments& arguments, VARIANT&) {
    *cursor = {script.result_sets.at(V_BSTR(&arguments.at(0)))};
    return S_OK;
  };
  const auto size = [cursor] { return static_cast<LONG>(cursor->set.rows.size()); };
  return new Automation(
      script, "Recordset",
      {{L"Open", open},
       {L"EOF", Gives([=] { return LONG{static_cast<LONG>(cursor->row) >= size()}; })},
       {L"RecordCount", Gives(size)},
       {L"Fields", Gives([&script, cursor] { return NewFieldsObject(script, cursor); })},
       {L"Sort", Does([] {})},
       {L"MoveNext", Does([cursor] { ++cursor->row; })},
       {L"Close", Does([] {})}});
}

}  // namespace pxscheduler
