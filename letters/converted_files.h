#pragma once

#include <map>
#include <string>

namespace pxscheduler {

// The document that each converted HTML file was made from. Relative paths in the file start at the
// document's folder.
class ConvertedFiles {
 public:
  void Add(const std::wstring& converted, const std::wstring& document) {
    documents_[converted] = document;
  }

  // The document that the file was made from; the path itself for any other file.
  const std::wstring& DocumentOf(const std::wstring& path) const {
    const auto found = documents_.find(path);
    return found == documents_.end() ? path : found->second;
  }

 private:
  std::map<std::wstring, std::wstring> documents_;
};

}  // namespace pxscheduler
