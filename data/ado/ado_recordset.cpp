#include "data/ado/ado_recordset.h"

#include <algorithm>
#include <utility>

#include "data/ado/ado_connection.h"
#include "data/ado/variant_value.h"
#include "platform/runtime_error.h"

namespace pxscheduler {

void AdoRecordset::Open(const std::wstring& source, Connection& connection, int cursor_type,
                        int lock_type, int options) {
  const auto* ado_connection = dynamic_cast<AdoConnection*>(&connection);
  if (ado_connection == nullptr) throw ConnectionClosed();
  recordset_.Call(L"Open", {Variant(source), Variant(ado_connection->Object().Dispatch()),
                            Variant(std::int32_t{cursor_type}), Variant(std::int32_t{lock_type}),
                            Variant(std::int32_t{options})});
}

bool AdoRecordset::EndOfFile() const { return recordset_.Get(L"EOF").ToBoolean(); }

std::size_t AdoRecordset::RecordCount() const {
  return static_cast<std::size_t>(std::max(recordset_.Get(L"RecordCount").ToInteger(), 0));
}

Value AdoRecordset::Fields(std::wstring_view name) const {
  return ValueOf(FieldOf(name).Get(L"Value"));
}

void AdoRecordset::SetSort(const std::wstring& column) { recordset_.Put(L"Sort", Variant(column)); }

void AdoRecordset::MoveNext() { recordset_.Call(L"MoveNext", {}); }

void AdoRecordset::Close() {
  fields_.clear();
  recordset_.Call(L"Close", {});
}

const ComObject& AdoRecordset::FieldOf(std::wstring_view name) const {
  const auto known = fields_.find(name);
  if (known != fields_.end()) return known->second;
  const std::wstring own_name(name);
  const ComObject fields(recordset_.Get(L"Fields"));
  ComObject field(fields.Get(L"Item", {Variant(own_name)}));
  return fields_.emplace(own_name, std::move(field)).first->second;
}

}  // namespace pxscheduler
