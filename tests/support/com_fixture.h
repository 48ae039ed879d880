#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/com_server/com_server.h"
#include "tests/support/fake_platform.h"
#include "tests/support/raised_by.h"

namespace pxscheduler {

// Classes count as installed once Install is called.
class ComFixture : public testing::Test {
 protected:
  void InstallDataObjects() {
    for (const wchar_t* name : {L"ADODB.Connection", L"ADODB.Recordset", L"SQLOLEDB"})
      server_.Install(name);
  }
  void FailNext(const char* call, HRESULT result, const wchar_t* description = L"") {
    server_.script.failure = {call, result, description};
  }
  const std::vector<std::string>& Calls() const { return server_.script.calls; }

  FakeSystem system_;
  ComServer server_;
};

}  // namespace pxscheduler
