// A library of stand-ins for the data objects and the rich-text component (com_server.h).

#include "tests/support/com_server/com_server.h"

#include <olectl.h>

#include "tests/support/com_server/automation.h"

namespace pxscheduler {
namespace {

using Maker = IDispatch* (*)();

Maker MakerOf(REFCLSID class_id) {
  if (class_id == kConnectionClass) return NewConnectionObject;
  if (class_id == kRecordsetClass) return NewRecordsetObject;
  if (class_id == kTextControlClass) return NewTextControlObject;
  return nullptr;
}

class Factory : public IClassFactory {
 public:
  explicit Factory(Maker maker) : maker_(maker) {}
  Factory(const Factory&) = delete;
  Factory& operator=(const Factory&) = delete;
  virtual ~Factory() = default;

  STDMETHODIMP QueryInterface(REFIID wanted, void** found) override {
    const bool known = wanted == __uuidof(IUnknown) || wanted == __uuidof(IClassFactory);
    *found = known ? static_cast<IClassFactory*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  STDMETHODIMP CreateInstance(IUnknown* /*outer*/, REFIID wanted, void** found) override {
    *found = nullptr;
    if (EnvironmentText(kComFailure) == L"unlicensed") return CLASS_E_NOTLICENSED;
    IDispatch* const object = maker_();
    const HRESULT result = object->QueryInterface(wanted, found);
    object->Release();
    return result;
  }
  STDMETHODIMP LockServer(WINBOOL /*lock*/) override { return S_OK; }

 private:
  Maker maker_;
  ULONG references_ = 1;
};

}  // namespace
}  // namespace pxscheduler

STDAPI DllGetClassObject(REFCLSID class_id, REFIID wanted, void** found) {
  *found = nullptr;
  const pxscheduler::Maker maker = pxscheduler::MakerOf(class_id);
  if (maker == nullptr) return CLASS_E_CLASSNOTAVAILABLE;
  auto* const factory = new pxscheduler::Factory(maker);
  const HRESULT result = factory->QueryInterface(wanted, found);
  factory->Release();
  return result;
}

STDAPI DllCanUnloadNow() { return S_FALSE; }
