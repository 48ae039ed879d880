#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

#include "tests/support/child_process.h"

namespace pxscheduler {

namespace {

constexpr auto kPatience = std::chrono::seconds(10);

}  // namespace

std::string ReadWholeFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string AwaitLine(const std::filesystem::path& path) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  for (;;) {
    std::string content = ReadWholeFile(path);
    if (content.find('\n') != std::string::npos) {
      return content;
    }
    if (std::chrono::steady_clock::now() > deadline) {
      return {};
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

}  // namespace pxscheduler
