#include "tests/support/tds_server.h"

#include <cstdlib>
#include <stdexcept>

namespace pxscheduler {
namespace {

std::vector<std::string> Command(const ScratchFolder& folder, const TdsServer::Options& options) {
  std::vector<std::string> command = {
      "/usr/bin/python3", HostPath(TESTS_FOLDER "/support/tds_server.py"),
      "--answers=" + HostPath(folder.Write("answers.json", options.answers)),
      "--log=" + HostPath(folder.Path("log"))};
  command.insert(command.end(), options.arguments.begin(), options.arguments.end());
  return command;
}

}  // namespace

TdsServer::TdsServer(const Options& options)
    : process_(Command(folder_, options), folder_.Path("output")) {
  const std::string port = AwaitLine(folder_.Path("output"));
  port_ = static_cast<int>(std::strtol(port.c_str(), nullptr, 10));
  if (port_ == 0) throw std::runtime_error("tds_server.py does not start: " + port);
}

std::vector<std::string> TdsServer::Log() const { return folder_.ReadLines("log"); }

std::vector<std::string> TdsServer::Log(const std::string& kind) const {
  std::vector<std::string> found;
  for (const std::string& line : Log())
    if (line.starts_with(kind + '\t')) found.push_back(line.substr(kind.size() + 1));
  return found;
}

}  // namespace pxscheduler
