#include "data/rows/connection_settings.h"

#include "platform/letter_case.h"
#include "text/text.h"

namespace pxscheduler {
namespace {

void Assign(std::wstring_view keyword, std::wstring_view value, ConnectionSettings& settings) {
  const std::wstring name = LowerCase(TrimBlanks(keyword));
  if (name == L"password" || name == L"pwd")
    settings.password = value;
  else if (name == L"provider")
    settings.provider = TrimBlanks(value);
  else if (name == L"user id" || name == L"uid")
    settings.user_id = TrimBlanks(value);
  else if (name == L"initial catalog" || name == L"database")
    settings.initial_catalog = TrimBlanks(value);
  else if (name == L"data source" || name == L"server")
    settings.data_source = TrimBlanks(value);
}

}  // namespace

ConnectionSettings ReadConnectionString(std::wstring_view text) {
  ConnectionSettings settings;
  while (!text.empty()) {
    const std::wstring_view pair = text.substr(0, text.find(L';'));
    text.remove_prefix(pair.size() == text.size() ? pair.size() : pair.size() + 1);
    const std::size_t equals = pair.find(L'=');
    if (equals != std::wstring_view::npos)
      Assign(pair.substr(0, equals), pair.substr(equals + 1), settings);
  }
  return settings;
}

std::optional<std::wstring> EmbeddedDatabasePath(std::wstring_view data_source) {
  constexpr std::wstring_view kPrefix = L"sqlite:";
  if (LowerCase(data_source.substr(0, kPrefix.size())) != kPrefix) return std::nullopt;
  return std::wstring{data_source.substr(kPrefix.size())};
}

}  // namespace pxscheduler
