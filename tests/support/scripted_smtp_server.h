#pragma once

#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/scratch_folder.h"

namespace pxscheduler {

// tests/support/smtp_server.py, running.
class ScriptedSmtpServer {
 public:
  // `script` is the JSON that smtp_server.py describes.
  explicit ScriptedSmtpServer(const std::string& script, const std::string& host = "127.0.0.1");

  int Port() const { return port_; }
  // Holds from the next connection on.
  void SetScript(const std::string& script);
  // The messages that arrived whole, in the order of arrival, dot-stuffing undone.
  std::vector<std::string> Messages() const { return Filed(".eml"); }
  // The envelope of a message, 0 for the first, as JSON.
  std::string Envelope(std::size_t index) const { return Filed(".json").at(index); }
  // Every command, each after the number of its connection.
  std::vector<std::string> Commands() const { return folder_.ReadLines("transcript"); }

 private:
  std::vector<std::string> Filed(const std::string& extension) const;

  ScratchFolder folder_;
  ChildProcess process_;
  int port_ = 0;
};

}  // namespace pxscheduler
