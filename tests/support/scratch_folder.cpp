#include "tests/support/scratch_folder.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <random>
#include <thread>

namespace pxscheduler {

namespace {

// Under Wine a place that the programs of the host know as well.
std::filesystem::path ScratchRoot() {
#ifdef _WIN32
  return "Z:/tmp";
#else
  return std::filesystem::temp_directory_path();
#endif
}

}  // namespace

ScratchFolder::ScratchFolder() {
  std::random_device random;
  std::filesystem::path path;
  do {
    path = ScratchRoot() / ("scheduler-test-" + std::to_string(random()));
  } while (!std::filesystem::create_directory(path));
  path_ = path.string();
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string ScratchFolder::Write(const std::string& name, const std::string& bytes) const {
  std::ofstream(Path(name), std::ios::binary) << bytes;
  return Path(name);
}

std::string ScratchFolder::Read(const std::string& name) const { return ReadWholeFile(Path(name)); }

std::vector<std::string> ScratchFolder::ReadLines(const std::string& name) const {
  std::ifstream file(Path(name), std::ios::binary);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

std::string ReadWholeFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string AwaitLine(const std::filesystem::path& path) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (std::chrono::steady_clock::now() < deadline) {
    std::string content = ReadWholeFile(path);
    if (content.find('\n') != std::string::npos) return content;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return {};
}

}  // namespace pxscheduler
