#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace pxscheduler {

// A program of the host, by its absolute path, that a test starts and that ends with it. Tests for
// Windows run under Wine, and start the same programs as those for Linux.
class ChildProcess {
 public:
  // Its output and errors are appended to the file `output`.
  ChildProcess(const std::vector<std::string>& arguments, const std::filesystem::path& output);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // Waits for its end and returns the exit status, -1 where it has none.
  int Wait();

 private:
  struct Process;
  std::unique_ptr<Process> process_;
};

// What a program of the host calls a file.
std::string HostPath(const std::filesystem::path& path);

}  // namespace pxscheduler
