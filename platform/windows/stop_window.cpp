#include "platform/windows/stop_window.h"

namespace pxscheduler {
namespace {

constexpr wchar_t kClassName[] = L"PXScheduler stop requests";
constexpr UINT kLeave = WM_APP;
constexpr DWORD kEndInterval = 10;  // in milliseconds

}  // namespace

StopWindow::StopWindow() {
  const HANDLE is_there = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  if (is_there == nullptr) return;
  thread_ = std::thread([this, is_there] { Run(is_there); });
  ::WaitForSingleObject(is_there, INFINITE);
  ::CloseHandle(is_there);
}

StopWindow::~StopWindow() {
  is_leaving_ = true;
  const HWND window = window_;
  if (window != nullptr) ::PostMessageW(window, kLeave, 0, 0);
  if (thread_.joinable()) thread_.join();
}

void StopWindow::Run(HANDLE is_there) {
  WNDCLASSW window_class{};
  window_class.lpfnWndProc = Handle;
  window_class.hInstance = ::GetModuleHandleW(nullptr);
  window_class.lpszClassName = kClassName;
  ::RegisterClassW(&window_class);
  const HWND window = ::CreateWindowExW(0, kClassName, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                        window_class.hInstance, nullptr);
  if (window != nullptr)
    ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  window_ = window;
  ::SetEvent(is_there);
  MSG message{};
  while (window != nullptr && ::GetMessageW(&message, nullptr, 0, 0) > 0)
    ::DispatchMessageW(&message);
  ::UnregisterClassW(kClassName, window_class.hInstance);
}

LRESULT CALLBACK StopWindow::Handle(HWND window, UINT message, WPARAM first, LPARAM second) {
  auto* const self = reinterpret_cast<StopWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
  switch (message) {
    case WM_CLOSE:
    case WM_QUERYENDSESSION:
      if (self != nullptr) self->is_requested_ = true;
      return TRUE;
    case WM_ENDSESSION:
      // When this returns, the system ends the process; it grants some seconds.
      while (first != FALSE && self != nullptr && !self->is_leaving_) ::Sleep(kEndInterval);
      return 0;
    case kLeave:
      ::DestroyWindow(window);
      return 0;
    case WM_DESTROY:
      ::PostQuitMessage(0);
      return 0;
    default:
      return ::DefWindowProcW(window, message, first, second);
  }
}

}  // namespace pxscheduler
