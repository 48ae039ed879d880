#include "tests/support/tds_server.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace pxscheduler {
namespace {

constexpr char kScript[] = TEST_SUPPORT_FOLDER "/tds_server.py";

std::filesystem::path NewFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "tds-server.XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  return name;
}

// Starts a program whose standard output is `output`; it ends with this process at the latest.
pid_t Start(std::vector<std::string>& command, int output) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  const pid_t process = fork();
  if (process == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(output, STDOUT_FILENO);
    execv(arguments.front(), arguments.data());
    _exit(127);
  }
  return process;
}

}  // namespace

TdsServer::TdsServer(const Options& options) : folder_(NewFolder()) {
  std::ofstream(folder_ / "answers.json") << options.answers;
  std::vector<std::string> command = {"/usr/bin/python3",       kScript, "--answers",
                                      folder_ / "answers.json", "--log", folder_ / "log"};
  command.insert(command.end(), options.arguments.begin(), options.arguments.end());
  std::array<int, 2> pipe_ends{};
  if (pipe(pipe_ends.data()) != 0) throw std::runtime_error("no pipe");
  process_ = Start(command, pipe_ends[1]);
  close(pipe_ends[1]);
  std::array<char, 16> line{};
  FILE* output = fdopen(pipe_ends[0], "r");
  const bool started = fgets(line.data(), line.size(), output) != nullptr;
  fclose(output);
  if (!started) throw std::runtime_error("tds_server.py does not start");
  port_ = static_cast<std::uint16_t>(std::strtoul(line.data(), nullptr, 10));
}

TdsServer::~TdsServer() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::vector<std::string> TdsServer::Log() const {
  std::ifstream log(folder_ / "log");
  std::vector<std::string> lines;
  for (std::string line; std::getline(log, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> TdsServer::Log(const std::string& kind) const {
  std::vector<std::string> found;
  for (const std::string& line : Log()) {
    if (line.starts_with(kind + '\t')) found.push_back(line.substr(kind.size() + 1));
  }
  return found;
}

}  // namespace pxscheduler
