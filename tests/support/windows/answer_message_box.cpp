// Waits for a message box with the given caption, prints what it shows, a line for each of its
// texts and buttons in UTF-8, and presses OK. Fails where none comes up within 30 seconds. Usage:
// answer_message_box CAPTION

#include <windows.h>

#include <array>
#include <iostream>
#include <string>

#include "text/utf8.h"

namespace pxscheduler {
namespace {

constexpr int kTries = 600;
constexpr DWORD kBetweenTries = 50;  // milliseconds

BOOL CALLBACK Print(HWND window, LPARAM /*unused*/) {
  std::array<wchar_t, 2048> text{};
  const int size = ::GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
  std::array<wchar_t, 64> kind{};
  const int kind_size = ::GetClassNameW(window, kind.data(), static_cast<int>(kind.size()));
  if (size > 0) {
    std::cout << ToUtf8({kind.data(), static_cast<std::size_t>(kind_size)}) << ": "
              << ToUtf8({text.data(), static_cast<std::size_t>(size)}) << '\n';
  }
  return TRUE;
}

int Answer(const std::wstring& caption) {
  HWND box = nullptr;
  for (int i = 0; i < kTries && box == nullptr; ++i) {
    ::Sleep(kBetweenTries);
    box = ::FindWindowW(L"#32770", caption.c_str());  // the class of dialogs
    if (box != nullptr && ::IsWindowVisible(box) == 0) box = nullptr;
  }
  if (box == nullptr) return 1;
  ::EnumChildWindows(box, Print, 0);
  std::cout.flush();
  return ::PostMessageW(box, WM_COMMAND, IDOK, 0) == 0 ? 1 : 0;
}

}  // namespace
}  // namespace pxscheduler

int main(int argument_count, char** arguments) {
  return argument_count == 2 ? pxscheduler::Answer(pxscheduler::FromUtf8(arguments[1])) : 2;
}
