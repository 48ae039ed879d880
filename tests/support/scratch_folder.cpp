#include "tests/support/scratch_folder.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

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

std::string ScratchFolder::Read(const std::string& name) const {
  std::ifstream file(Path(name), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace pxscheduler
