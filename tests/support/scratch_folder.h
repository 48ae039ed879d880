#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace pxscheduler {

// A new folder on disk, removed with everything in it.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& Path() const { return path_; }
  std::string Path(const std::string& name) const { return path_ + "/" + name; }

  // Makes or replaces a file; gives its path.
  std::string Write(const std::string& name, const std::string& bytes) const;
  std::string Read(const std::string& name) const;
  std::vector<std::string> ReadLines(const std::string& name) const;

 private:
  std::string path_;
};

std::string ReadWholeFile(const std::filesystem::path& path);

// Waits until the file holds a line, at most ten seconds, and returns the file's content; "" when
// it never does.
std::string AwaitLine(const std::filesystem::path& path);

}  // namespace pxscheduler
