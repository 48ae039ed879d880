#include "tests/support/scripted_smtp_server.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <stdexcept>

namespace pxscheduler {

namespace {

// The server reads it again for every connection. Returns the file's name.
std::string WriteScript(const ScratchFolder& folder, const std::string& script) {
  const std::filesystem::path part = folder.Write("script.part", script);
  std::filesystem::rename(part, folder.Path("script.json"));
  return folder.Path("script.json");
}

std::vector<std::string> ServerArguments(const ScratchFolder& folder, const std::string& script,
                                         const std::string& host) {
  return {"/usr/bin/python3",
          HostPath(TESTS_FOLDER "/support/smtp_server.py"),
          "--port-file=" + HostPath(folder.Path("port")),
          "--mailbox=" + HostPath(folder.Path("mailbox")),
          "--transcript=" + HostPath(folder.Path("transcript")),
          "--script=" + HostPath(script),
          "--host=" + host};
}

}  // namespace

ScriptedSmtpServer::ScriptedSmtpServer(const std::string& script, const std::string& host)
    : process_(ServerArguments(folder_, WriteScript(folder_, script), host),
               folder_.Path("output")) {
  const std::string port = AwaitLine(folder_.Path("port"));
  if (port.empty()) throw std::runtime_error("no server: " + ReadWholeFile(folder_.Path("output")));
  port_ = std::stoi(port);
}

void ScriptedSmtpServer::SetScript(const std::string& script) { WriteScript(folder_, script); }

std::vector<std::string> ScriptedSmtpServer::Filed(const std::string& extension) const {
  std::set<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.Path("mailbox")))
    if (entry.path().extension() == extension) files.insert(entry.path());
  std::vector<std::string> contents;
  std::transform(files.begin(), files.end(), std::back_inserter(contents), ReadWholeFile);
  return contents;
}

}  // namespace pxscheduler
