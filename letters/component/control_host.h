#pragma once

#include <oleidl.h>
#include <windows.h>

#include <memory>
#include <type_traits>

#include "platform/com/com_pointer.h"

namespace pxscheduler {

struct WindowDestruction {
  void operator()(HWND window) const { ::DestroyWindow(window); }
};
using OwnedWindow = std::unique_ptr<std::remove_pointer_t<HWND>, WindowDestruction>;

// Hosts a control on a window that is never shown, as long as the host lives: the control gets a
// client site and is activated in place, which makes its own window. A control that cannot be
// embedded is left alone, and one that declines to be activated is used as it is.
//
// Belongs to the thread that made it, which must be in an apartment.
class ControlHost {
 public:
  // Raises ComError where the window cannot be made or the control refuses its site.
  explicit ControlHost(IUnknown& control);
  ControlHost(const ControlHost&) = delete;
  ControlHost& operator=(const ControlHost&) = delete;
  ~ControlHost();

 private:
  OwnedWindow window_;
  ComPointer<IOleObject> control_;  // null where it cannot be embedded
};

}  // namespace pxscheduler
