#include "tests/support/child_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>

namespace pxscheduler {

struct ChildProcess::Process {
  pid_t identifier = -1;
  bool has_ended = false;
  int status = -1;

  // Whether it ends within `time`.
  bool EndsWithin(std::chrono::milliseconds time) {
    const auto deadline = std::chrono::steady_clock::now() + time;
    while (!has_ended) {
      int status_word = 0;
      if (waitpid(identifier, &status_word, WNOHANG) != 0) {
        has_ended = true;
        status = WIFEXITED(status_word) ? WEXITSTATUS(status_word) : -1;
      } else if (std::chrono::steady_clock::now() > deadline) {
        return false;
      } else {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
      }
    }
    return true;
  }
};

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const std::filesystem::path& output)
    : process_(std::make_unique<Process>()) {
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  process_->identifier = fork();
  if (process_->identifier == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // should this process not come to its own end
    const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    dup2(file, STDOUT_FILENO);
    dup2(file, STDERR_FILENO);
    execv(pointers.front(), pointers.data());
    _exit(127);
  }
  if (process_->identifier < 0) {
    throw std::runtime_error("cannot start " + arguments.front());
  }
}

ChildProcess::~ChildProcess() {
  if (process_->has_ended) {
    return;
  }
  kill(process_->identifier, SIGTERM);
  if (!process_->EndsWithin(std::chrono::seconds(2))) {
    kill(process_->identifier, SIGKILL);
    process_->EndsWithin(std::chrono::seconds(2));
  }
}

int ChildProcess::Wait() {
  return process_->EndsWithin(std::chrono::seconds(20)) ? process_->status : -1;
}

std::string HostPath(const std::filesystem::path& path) { return path.string(); }

}  // namespace pxscheduler
