#pragma once

#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/scratch_folder.h"

namespace pxscheduler {

// tds_server.py on a free port of this machine, for as long as the object lives.
class TdsServer {
 public:
  // `answers` is the JSON text of scripted answers, `arguments` are further ones of the program.
  explicit TdsServer(const std::string& answers = "[]",
                     const std::vector<std::string>& arguments = {});

  // The server as a data source names it.
  std::wstring DataSource() const { return L"127.0.0.1," + std::to_wstring(port_); }
  // The lines of its log so far: logins and statements as they were received.
  std::vector<std::string> Log() const { return folder_.ReadLines("log"); }

 private:
  ScratchFolder folder_;
  ChildProcess process_;
  int port_ = 0;
};

}  // namespace pxscheduler
