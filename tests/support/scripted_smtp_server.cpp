#include "tests/support/scripted_smtp_server.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

extern char** environ;  // NOLINT(readability-redundant-declaration): POSIX leaves it to the program

namespace pxscheduler {

namespace {

constexpr auto kPatience = std::chrono::seconds(10);

// Returns the file's name.
std::string WriteScript(const std::filesystem::path& folder, const std::string& script) {
  const std::filesystem::path file = folder / "script.json";
  const std::filesystem::path part = folder / "script.part";
  std::ofstream(part, std::ios::binary) << script;
  std::filesystem::rename(part, file);
  return file;
}

std::vector<std::string> ServerArguments(const std::filesystem::path& folder,
                                         const std::string& script, const std::string& host) {
  return {"/usr/bin/python3",
          std::filesystem::path(TEST_DATA_FOLDER).parent_path() / "support" / "smtp_server.py",
          "--port-file",
          folder / "port",
          "--mailbox",
          folder / "mailbox",
          "--transcript",
          folder / "transcript",
          "--script",
          script,
          "--host",
          host};
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const std::filesystem::path& output) {
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  const std::string file = output.empty() ? "/dev/null" : output.string();
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, file.c_str(),
                                   O_WRONLY | O_CREAT | O_APPEND, 0600);
  posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
  const int error =
      posix_spawnp(&process_, pointers[0], &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    throw std::runtime_error("cannot start " + arguments[0]);
  }
}

ChildProcess::~ChildProcess() {
  kill(process_, SIGTERM);
  for (int i = 0; i < 200; ++i) {
    if (waitpid(process_, nullptr, WNOHANG) != 0) {
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

std::string ReadWholeFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string AwaitFile(const std::filesystem::path& path) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!std::filesystem::exists(path)) {
    if (std::chrono::steady_clock::now() > deadline) {
      return {};
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return ReadWholeFile(path);
}

ScriptedSmtpServer::ScriptedSmtpServer(const std::string& script, const std::string& host)
    : process_(ServerArguments(folder_.Path(), WriteScript(folder_.Path(), script), host),
               folder_.Path("output")) {
  const std::string port = AwaitFile(folder_.Path("port"));
  if (port.empty()) {
    throw std::runtime_error("no server: " + ReadWholeFile(folder_.Path("output")));
  }
  port_ = std::stoi(port);
}

void ScriptedSmtpServer::SetScript(const std::string& script) {
  WriteScript(folder_.Path(), script);
}

std::vector<std::string> ScriptedSmtpServer::Messages() const {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.Path("mailbox"))) {
    if (entry.path().extension() == ".eml") {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end());
  std::vector<std::string> messages;
  std::transform(files.begin(), files.end(), std::back_inserter(messages), ReadWholeFile);
  return messages;
}

std::string ScriptedSmtpServer::Envelope(std::size_t index) const {
  std::string name = std::to_string(index + 1);
  name.insert(0, 4 - std::min<std::size_t>(4, name.size()), '0');
  return ReadWholeFile(folder_.Path("mailbox/" + name + ".json"));
}

std::vector<std::string> ScriptedSmtpServer::Commands() const {
  std::istringstream lines(ReadWholeFile(folder_.Path("transcript")));
  std::vector<std::string> commands;
  for (std::string line; std::getline(lines, line);) {
    commands.push_back(line);
  }
  return commands;
}

}  // namespace pxscheduler
