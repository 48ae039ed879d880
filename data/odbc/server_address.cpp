#include "data/odbc/server_address.h"

#include "data/rows/session.h"
#include "platform/letter_case.h"
#include "text/text.h"

namespace pxscheduler {
namespace {

constexpr std::size_t kNone = std::wstring_view::npos;

[[noreturn]] void RefuseDataSource(std::wstring_view data_source, const wchar_t* reason) {
  throw ProviderFailure(L"The data source \"" + std::wstring(data_source) + L"\" " + reason);
}

std::uint16_t ParsePort(std::wstring_view text, std::wstring_view data_source) {
  std::uint32_t port = 0;
  for (const wchar_t digit : text) {
    if (digit < L'0' || digit > L'9' || port > UINT16_MAX) {
      port = 0;
      break;
    }
    port = port * 10 + static_cast<std::uint32_t>(digit - L'0');
  }
  if (port == 0 || port > UINT16_MAX)
    RefuseDataSource(data_source, L"has no port after its comma.");
  return static_cast<std::uint16_t>(port);
}

bool IsHostCharacter(wchar_t character) {
  constexpr std::wstring_view kSeparators = L"\"'(){}[];=,\\/";
  return character > L' ' && character != 0x7F && kSeparators.find(character) == kNone;
}

}  // namespace

ServerAddress ParseServerAddress(std::wstring_view data_source) {
  std::wstring_view rest = TrimBlanks(data_source);
  constexpr std::wstring_view kProtocol = L"tcp:";
  if (LowerCase(rest.substr(0, kProtocol.size())) == kProtocol)
    rest = TrimBlanks(rest.substr(kProtocol.size()));

  ServerAddress address;
  if (const std::size_t comma = rest.find(L','); comma != kNone) {
    address.port = ParsePort(TrimBlanks(rest.substr(comma + 1)), data_source);
    rest = TrimBlanks(rest.substr(0, comma));
  }
  if (const std::size_t backslash = rest.find(L'\\'); backslash != kNone) {
    const std::wstring_view instance = TrimBlanks(rest.substr(backslash + 1));
    if (instance.empty()) RefuseDataSource(data_source, L"has no instance after its backslash.");
    if (address.port == 0 && UpperCase(instance) != L"MSSQLSERVER") address.instance = instance;
    rest = TrimBlanks(rest.substr(0, backslash));
  }
  if (rest.empty() || rest == L"." || LowerCase(rest) == L"(local)") rest = L"localhost";
  for (const wchar_t character : rest)
    if (!IsHostCharacter(character)) RefuseDataSource(data_source, L"names no host.");
  for (const wchar_t character : address.instance)
    if (!IsHostCharacter(character)) RefuseDataSource(data_source, L"names no instance.");
  address.host = rest;
  return address;
}

}  // namespace pxscheduler
