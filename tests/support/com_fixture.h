#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "platform/code_page.h"
#include "tests/support/com_server/com_server.h"
#include "tests/support/com_server/registration.h"
#include "tests/support/fake_platform.h"
#include "tests/support/raised_by.h"
#include "tests/support/scratch_folder.h"

namespace pxscheduler {

// The test server with its record and its rows. Classes count as installed once Install is called.
class ComFixture : public testing::Test {
 protected:
  ComFixture() {
    ::SetEnvironmentVariableW(kComRecord, record_.c_str());
    ::SetEnvironmentVariableW(kComRows, rows_.c_str());
    ::SetEnvironmentVariableW(kComFailure, nullptr);
  }
  void Install(const std::wstring& program_id, const CLSID& class_id) {
    installed_.push_back(std::make_unique<ComRegistration>(program_id, class_id));
  }
  void InstallDataObjects() {
    Install(L"ADODB.Connection", kConnectionClass);
    Install(L"ADODB.Recordset", kRecordsetClass);
    Install(L"SQLOLEDB", kProviderClass);
  }
  void SetRows(const std::string& rows) const { std::ofstream(rows_, std::ios::binary) << rows; }
  const std::filesystem::path& RecordFile() const { return record_; }
  static void Fail(const wchar_t* failure) { ::SetEnvironmentVariableW(kComFailure, failure); }

  std::vector<std::string> Calls() const {
    std::ifstream file(record_);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }

  FakeSystem system_;

 private:
  ScratchFolder folder_;
  std::filesystem::path record_ = folder_.Path("record");
  std::filesystem::path rows_ = folder_.Path("rows");
  std::vector<std::unique_ptr<ComRegistration>> installed_;
};

}  // namespace pxscheduler
