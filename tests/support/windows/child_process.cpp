#include "tests/support/child_process.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "tests/support/scratch_folder.h"
#include "text/utf8.h"

namespace pxscheduler {

namespace {

// Wine hands out neither a handle nor an identifier of a program of the host, so a shell around it
// writes down how to stop it and how it ended. It ends by itself should nobody do that. The first
// argument is the folder for that, the second one the file for the output.
constexpr char kShell[] = "/bin/sh";
constexpr char kScript[] =
    "exec 2>/dev/null; folder=$1; output=$2; shift 2; timeout 300 \"$@\" </dev/null >>\"$output\" "
    "2>&1 & "
    "echo $! >\"$folder/process\"; wait $!; echo $? >\"$folder/status\"";

// As the C library of the host's programs gets it back: everything in quotes.
std::wstring CommandLine(const std::vector<std::string>& arguments) {
  std::wstring line;
  for (const std::string& argument : arguments) {
    line += line.empty() ? L"\"" : L" \"";
    for (const wchar_t character : FromUtf8(argument)) {
      if (character == L'"') line += L'\\';
      line += character;
    }
    line += L'"';
  }
  return line;
}

bool Start(const std::vector<std::string>& arguments) {
  std::wstring line = CommandLine(arguments);
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  return CreateProcessW((L"Z:" + FromUtf8(arguments.front())).c_str(), line.data(), nullptr,
                        nullptr, FALSE, 0, nullptr, nullptr, &startup, &process) != FALSE;
}

}  // namespace

struct ChildProcess::Process {
  ScratchFolder folder;

  // Whether it ends within `time`.
  bool EndsWithin(std::chrono::milliseconds time) const {
    const auto deadline = std::chrono::steady_clock::now() + time;
    while (folder.Read("status").find('\n') == std::string::npos) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
  }
};

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const std::filesystem::path& output)
    : process_(std::make_unique<Process>()) {
  std::vector<std::string> command = {
      kShell, "-c", kScript, "sh", HostPath(process_->folder.Path()), HostPath(output)};
  command.insert(command.end(), arguments.begin(), arguments.end());
  if (!Start(command) || AwaitLine(process_->folder.Path("process")).empty())
    throw std::runtime_error("cannot start " + arguments.front());
}

ChildProcess::~ChildProcess() {
  if (process_->EndsWithin(std::chrono::milliseconds(0))) return;
  std::string identifier = process_->folder.Read("process");
  std::erase(identifier, '\n');
  if (Start({kShell, "-c", "kill " + identifier})) process_->EndsWithin(std::chrono::seconds(2));
}

int ChildProcess::Wait() {
  return process_->EndsWithin(std::chrono::seconds(20)) ? std::stoi(process_->folder.Read("status"))
                                                        : -1;
}

std::string HostPath(const std::filesystem::path& path) {
  std::string text = ToUtf8(path.generic_wstring());
  return text.starts_with("Z:") ? text.substr(2) : text;
}

}  // namespace pxscheduler
