#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/scratch_folder.h"

namespace pxscheduler {

// A process that a test starts and that ends with it.
class ChildProcess {
 public:
  // The program is looked for as a shell does; its output goes to `output`, "" for nowhere.
  ChildProcess(const std::vector<std::string>& arguments, const std::filesystem::path& output);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

 private:
  pid_t process_ = -1;
};

std::string ReadWholeFile(const std::filesystem::path& path);

// Waits until the file exists, at most ten seconds, and returns its content; "" when it never does.
std::string AwaitFile(const std::filesystem::path& path);

// tests/support/smtp_server.py, running.
class ScriptedSmtpServer {
 public:
  // `script` is the JSON that smtp_server.py describes.
  explicit ScriptedSmtpServer(const std::string& script, const std::string& host = "127.0.0.1");

  int Port() const { return port_; }
  // Holds from the next connection on.
  void SetScript(const std::string& script);
  // The messages that arrived whole, in the order of arrival, dot-stuffing undone.
  std::vector<std::string> Messages() const;
  // The envelope of a message, 0 for the first, as JSON.
  std::string Envelope(std::size_t index) const;
  // Every command, each after the number of its connection.
  std::vector<std::string> Commands() const;

 private:
  ScratchFolder folder_;
  ChildProcess process_;
  int port_ = 0;
};

}  // namespace pxscheduler
