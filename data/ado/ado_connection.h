#pragma once

#include <optional>
#include <string>

#include "data/connection.h"
#include "platform/com/com_object.h"

namespace pxscheduler {

// A connection of the platform's data objects, used through its dispatch interface. Errors are
// those of the data objects, with their number and text.
class AdoConnection : public Connection {
 public:
  static constexpr wchar_t kProgramId[] = L"ADODB.Connection";

  // Raises CannotCreateObject (429).
  AdoConnection() : connection_(ComObject::Create(kProgramId)) {}

  void Open(const std::wstring& connection_string, const std::wstring& user_id,
            const std::wstring& password, int options) override;
  int State() const override;
  void SetCursorLocation(int location) override;
  void Execute(const std::wstring& command_text, int options) override;
  std::wstring DefaultDatabase() override;
  void Close() override;

  const ComObject& Object() const { return connection_; }

 private:
  ComApartment apartment_;
  ComObject connection_;
};

}  // namespace pxscheduler
