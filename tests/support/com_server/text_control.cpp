#include <oleidl.h>

#include <array>
#include <map>

#include "tests/support/com_server/automation.h"

namespace pxscheduler {
namespace {

// A control that loads and saves only while it is active in place on a window that is not shown.
// The page values of its document are 11906, 0, -5, 1440, 0 and 720; its own settings 1 to 6.
class TextControlObject : public Automation, public IOleObject {
 public:
  explicit TextControlObject(ComScript& script) : Automation(script, "Control", {}) {}
  ~TextControlObject() override {
    if (site_ != nullptr) site_->Release();
  }

  STDMETHODIMP QueryInterface(REFIID wanted, void** found) override {
    if (wanted != __uuidof(IOleObject)) return Automation::QueryInterface(wanted, found);
    *found = static_cast<IOleObject*>(this);
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return Automation::AddRef(); }
  STDMETHODIMP_(ULONG) Release() override { return Automation::Release(); }

  STDMETHODIMP SetClientSite(IOleClientSite* site) override {
    Record(site != nullptr ? " site" : " no site");
    if (site != nullptr) site->AddRef();
    if (site_ != nullptr) site_->Release();
    site_ = site;
    return S_OK;
  }
  STDMETHODIMP DoVerb(LONG verb, MSG* /*message*/, IOleClientSite* site, LONG /*index*/,
                      HWND /*parent*/, const RECT* /*position*/) override {
    void* found = nullptr;
    if (verb != OLEIVERB_INPLACEACTIVATE ||
        FAILED(site->QueryInterface(__uuidof(IOleInPlaceSite), &found)))
      return E_FAIL;
    auto* place = static_cast<IOleInPlaceSite*>(found);
    HWND window = nullptr;
    active_ = place->CanInPlaceActivate() == S_OK && place->GetWindow(&window) == S_OK &&
              ::IsWindow(window) != FALSE && ::IsWindowVisible(window) == FALSE;
    place->Release();
    Record(active_ ? " active on a hidden window" : " not active");
    return S_OK;
  }
  STDMETHODIMP Close(DWORD option) override {
    active_ = false;
    Record(option == OLECLOSE_NOSAVE ? " closed" : " closed and saved");
    return S_OK;
  }
  STDMETHODIMP GetMiscStatus(DWORD /*aspect*/, DWORD* status) override {
    *status = 0;
    return S_OK;
  }

  // What no host of this program asks for.
  STDMETHODIMP GetClientSite(IOleClientSite** /*site*/) override { return E_NOTIMPL; }
  STDMETHODIMP SetHostNames(LPCOLESTR /*a*/, LPCOLESTR /*b*/) override { return E_NOTIMPL; }
  STDMETHODIMP SetMoniker(DWORD /*which*/, IMoniker* /*moniker*/) override { return E_NOTIMPL; }
  STDMETHODIMP GetMoniker(DWORD /*a*/, DWORD /*b*/, IMoniker** /*moniker*/) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP InitFromData(IDataObject* /*d*/, WINBOOL /*c*/, DWORD /*r*/) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP GetClipboardData(DWORD /*r*/, IDataObject** /*data*/) override { return E_NOTIMPL; }
  STDMETHODIMP EnumVerbs(IEnumOLEVERB** /*verbs*/) override { return E_NOTIMPL; }
  STDMETHODIMP Update() override { return E_NOTIMPL; }
  STDMETHODIMP IsUpToDate() override { return E_NOTIMPL; }
  STDMETHODIMP GetUserClassID(CLSID* /*class_id*/) override { return E_NOTIMPL; }
  STDMETHODIMP GetUserType(DWORD /*form*/, LPOLESTR* /*type*/) override { return E_NOTIMPL; }
  STDMETHODIMP SetExtent(DWORD /*aspect*/, SIZEL* /*size*/) override { return E_NOTIMPL; }
  STDMETHODIMP GetExtent(DWORD /*aspect*/, SIZEL* /*size*/) override { return E_NOTIMPL; }
  STDMETHODIMP Advise(IAdviseSink* /*sink*/, DWORD* /*cookie*/) override { return E_NOTIMPL; }
  STDMETHODIMP Unadvise(DWORD /*cookie*/) override { return E_NOTIMPL; }
  STDMETHODIMP EnumAdvise(IEnumSTATDATA** /*advises*/) override { return E_NOTIMPL; }
  STDMETHODIMP SetColorScheme(LOGPALETTE* /*palette*/) override { return E_NOTIMPL; }

 private:
  HRESULT Carry(DISPID member, WORD kind, const Arguments& arguments, VARIANT& result) override {
    constexpr DISPID kLoad = 99;
    constexpr DISPID kSave = 100;
    constexpr DISPID kPageValue = 112;
    if (member == kLoad || member == kSave) return active_ ? S_OK : E_UNEXPECTED;
    LONG& value = member == kPageValue
                      ? document_.at(static_cast<std::size_t>(V_I4(&arguments.at(0))))
                      : settings_.at(member);
    if (kind != DISPATCH_PROPERTYPUT) return Give(result, value);
    value = V_I4(&arguments.back());
    return S_OK;
  }

  std::array<LONG, 6> document_{11906, 0, -5, 1440, 0, 720};
  std::map<DISPID, LONG> settings_{{12, 1}, {13, 2}, {22, 3}, {23, 4}, {24, 5}, {25, 6}};
  IOleClientSite* site_ = nullptr;
  bool active_ = false;
};

}  // namespace

IDispatch* NewTextControlObject(ComScript& script) {
  return static_cast<Automation*>(new TextControlObject(script));
}

}  // namespace pxscheduler
