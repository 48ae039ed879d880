#pragma once

#include <map>
#include <string>
#include <string_view>

#include "data/recordset.h"
#include "platform/com/com_object.h"

namespace pxscheduler {

// A result set of the platform's data objects, used through its dispatch interface. Errors are
// those of the data objects, with their number and text; Open raises ConnectionClosed (3709) for a
// connection that is no AdoConnection.
class AdoRecordset : public Recordset {
 public:
  // Raises CannotCreateObject (429).
  AdoRecordset() : recordset_(ComObject::Create(L"ADODB.Recordset")) {}

  void Open(const std::wstring& source, Connection& connection, int cursor_type, int lock_type,
            int options) override;
  bool EndOfFile() const override;
  // 0 where the provider does not know.
  std::size_t RecordCount() const override;
  Value Fields(std::wstring_view name) const override;
  void SetSort(const std::wstring& column) override;
  void MoveNext() override;
  void Close() override;

 private:
  const ComObject& FieldOf(std::wstring_view name) const;

  ComApartment apartment_;
  ComObject recordset_;
  // A field object gives the value of whatever row is the current one, so it is looked up once.
  mutable std::map<std::wstring, ComObject, std::less<>> fields_;
};

}  // namespace pxscheduler
