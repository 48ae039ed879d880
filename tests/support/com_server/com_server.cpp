#include "tests/support/com_server/com_server.h"

#include <objbase.h>
#include <olectl.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <stdexcept>

#include "tests/support/com_server/automation.h"
#include "text/utf8.h"

namespace pxscheduler {
namespace {

const std::wstring kClassesKey = L"Software\\Classes\\";

struct PlayedClass {
  const wchar_t* program_id;
  IDispatch* (*make)(ComScript&);
};

// The provider is only looked for.
constexpr PlayedClass kPlayedClasses[] = {{L"ADODB.Connection", NewConnectionObject},
                                          {L"ADODB.Recordset", NewRecordsetObject},
                                          {L"Tx4oleLib.TXTextControl", NewTextControlObject},
                                          {L"SQLOLEDB", nullptr}};

ComScript* current_script = nullptr;  // COM hands nothing over that could hold it

CLSID ClassIdOf(const PlayedClass& played) {
  const auto place = static_cast<unsigned char>(&played - kPlayedClasses);
  return {0x5b0e61c2, 0x3d94, 0x4f0a, {0x9a, 0x41, 0x7c, 0x10, 0x2e, 0x86, 0xd3, place}};
}

void Write(const std::wstring& key, const wchar_t* name, const std::wstring& text) {
  const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  if (::RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_SZ, text.c_str(), bytes) !=
      ERROR_SUCCESS)
    throw std::runtime_error("a class cannot be registered");
}

// Makes objects of one class. Lives as long as the program.
class Factory : public IClassFactory {
 public:
  explicit Factory(const PlayedClass& played) : played_(played) {}

  STDMETHODIMP QueryInterface(REFIID wanted, void** found) override {
    const bool known = wanted == __uuidof(IUnknown) || wanted == __uuidof(IClassFactory);
    *found = known ? static_cast<IClassFactory*>(this) : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP CreateInstance(IUnknown* /*outer*/, REFIID wanted, void** found) override {
    *found = nullptr;
    const auto failure =
        current_script->TakeFailure(ToUtf8(played_.program_id) + ".CreateInstance");
    if (failure) return failure->result;
    IDispatch* const object = played_.make(*current_script);
    const HRESULT result = object->QueryInterface(wanted, found);
    object->Release();
    return result;
  }
  STDMETHODIMP LockServer(WINBOOL /*lock*/) override { return S_OK; }

 private:
  const PlayedClass& played_;
};

}  // namespace

ComServer::ComServer() { current_script = &script; }

ComServer::~ComServer() {
  for (const auto& [program_key, class_key, replaced] : registrations_) {
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, class_key.c_str());
    if (replaced)
      Write(program_key, nullptr, *replaced);
    else
      ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, program_key.c_str());
  }
}

void ComServer::Install(const std::wstring& program_id) {
  std::array<wchar_t, 40> identifier{};
  ::StringFromGUID2(
      ClassIdOf(*std::ranges::find(kPlayedClasses, program_id, &PlayedClass::program_id)),
      identifier.data(), static_cast<int>(identifier.size()));
  Registration& added = registrations_.emplace_back(kClassesKey + program_id + L"\\CLSID",
                                                    kClassesKey + L"CLSID\\" + identifier.data());
  std::array<wchar_t, 40> before{};
  DWORD size = sizeof before;
  if (::RegGetValueW(HKEY_LOCAL_MACHINE, added.program_key.c_str(), nullptr, RRF_RT_REG_SZ, nullptr,
                     before.data(), &size) == ERROR_SUCCESS)
    added.replaced = before.data();
  std::array<wchar_t, 32768> program{};
  ::GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
  Write(added.program_key, nullptr, identifier.data());
  Write(added.class_key + L"\\InprocServer32", nullptr, program.data());
  Write(added.class_key + L"\\InprocServer32", L"ThreadingModel", L"Apartment");
}

}  // namespace pxscheduler

extern "C" __declspec(dllexport) HRESULT STDAPICALLTYPE
    DllGetClassObject(REFCLSID class_id, REFIID wanted, void** found) {
  using pxscheduler::kPlayedClasses;
  static std::array<pxscheduler::Factory, 3> factories{pxscheduler::Factory(kPlayedClasses[0]),
                                                       pxscheduler::Factory(kPlayedClasses[1]),
                                                       pxscheduler::Factory(kPlayedClasses[2])};
  *found = nullptr;
  for (std::size_t i = 0; i < factories.size(); ++i)
    if (class_id == ClassIdOf(kPlayedClasses[i])) return factories[i].QueryInterface(wanted, found);
  return CLASS_E_CLASSNOTAVAILABLE;
}
