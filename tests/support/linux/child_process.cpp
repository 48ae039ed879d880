#include "tests/support/child_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

namespace pxscheduler {

struct ChildProcess::Process {
  pid_t identifier = -1;
  bool has_ended = false;

  int Wait() {
    int status = -1;
    waitpid(identifier, &status, 0);
    has_ended = true;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
};

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const std::filesystem::path& output)
    : process_(std::make_unique<Process>()) {
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments)
    pointers.push_back(const_cast<char*>(argument.c_str()));
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
  if (process_->identifier < 0) throw std::runtime_error("cannot start " + arguments.front());
}

ChildProcess::~ChildProcess() {
  if (process_->has_ended) return;
  kill(process_->identifier, SIGKILL);
  process_->Wait();
}

int ChildProcess::Wait() { return process_->Wait(); }

std::string HostPath(const std::filesystem::path& path) { return path.string(); }

}  // namespace pxscheduler
