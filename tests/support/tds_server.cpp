#include "tests/support/tds_server.h"

#include <cstdlib>
#include <stdexcept>

namespace pxscheduler {
namespace {

std::vector<std::string> Command(const ScratchFolder& folder, const std::string& answers,
                                 const std::vector<std::string>& arguments) {
  std::vector<std::string> command = {
      "/usr/bin/python3", HostPath(TESTS_FOLDER "/support/tds_server.py"),
      "--answers=" + HostPath(folder.Write("answers.json", answers)),
      "--log=" + HostPath(folder.Path("log"))};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

}  // namespace

TdsServer::TdsServer(const std::string& answers, const std::vector<std::string>& arguments)
    : process_(Command(folder_, answers, arguments), folder_.Path("output")) {
  const std::string port = AwaitLine(folder_.Path("output"));
  port_ = static_cast<int>(std::strtol(port.c_str(), nullptr, 10));
  if (port_ == 0) throw std::runtime_error("tds_server.py does not start: " + port);
}

}  // namespace pxscheduler
