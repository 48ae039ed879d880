#pragma once

#include <windows.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace pxscheduler {

struct ResultSet {
  std::vector<std::wstring> columns;
  std::vector<std::vector<std::optional<std::wstring>>> rows;  // nullopt is Null
};

// What the objects are told to do, and what they have been asked for.
struct ComScript {
  struct Failure {
    std::string call;
    HRESULT result;
    std::wstring description;  // empty: no exception is described
  };

  // "Name.Member(argument, ...)", "Name.Member", "Name.Member = value" or "Name released" each.
  std::vector<std::string> calls;
  std::optional<Failure> failure;                 // of the next such call
  std::map<std::wstring, ResultSet> result_sets;  // by their statement

  std::optional<Failure> TakeFailure(const std::string& call) {
    return failure && failure->call == call ? std::exchange(failure, std::nullopt) : std::nullopt;
  }
};

// Plays the data objects and the rich-text component. This program is the in-process server of
// their classes itself.
class ComServer {
 public:
  ComServer();
  ComServer(const ComServer&) = delete;
  ComServer& operator=(const ComServer&) = delete;
  // Brings back what was registered before.
  ~ComServer();

  // Registers the class of this name for the whole machine. "<Class>.CreateInstance" is a call that
  // can fail.
  void Install(const std::wstring& program_id);

  ComScript script;

 private:
  struct Registration {
    std::wstring program_key;
    std::wstring class_key;
    std::optional<std::wstring> replaced;
  };
  std::vector<Registration> registrations_;
};

}  // namespace pxscheduler
