#pragma once

#include <windows.h>

#include <atomic>
#include <thread>

namespace pxscheduler {

// A window that nobody sees, to which the system sends what it has to tell a program without a
// console: that the session ends, and that somebody wants the program to end (WM_CLOSE, which the
// task scheduler and taskkill send).
class StopWindow {
 public:
  StopWindow();
  StopWindow(const StopWindow&) = delete;
  StopWindow& operator=(const StopWindow&) = delete;
  ~StopWindow();

  bool IsStopRequested() const { return is_requested_; }

 private:
  static LRESULT CALLBACK Handle(HWND window, UINT message, WPARAM first, LPARAM second);
  void Run(HANDLE is_there);

  std::atomic<bool> is_requested_ = false;
  std::atomic<bool> is_leaving_ = false;
  std::atomic<HWND> window_ = nullptr;
  std::thread thread_;  // windows get their messages in the thread that made them
};

}  // namespace pxscheduler
