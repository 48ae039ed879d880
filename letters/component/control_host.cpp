#include "letters/component/control_host.h"

#include <ocidl.h>

#include "platform/com/com_error.h"

namespace pxscheduler {
namespace {

constexpr RECT kControlArea{0, 0, 640, 480};  // pixels; nobody sees them

// What a control asks of whoever hosts it, as far as one that is never shown can ask.
class ControlSite final : public IOleClientSite, public IOleInPlaceSite, public IOleInPlaceFrame {
 public:
  // The window must outlive the control's use of the site. The caller owns the first reference.
  explicit ControlSite(HWND window) : window_(window) {}
  ControlSite(const ControlSite&) = delete;
  ControlSite& operator=(const ControlSite&) = delete;
  virtual ~ControlSite() = default;

  STDMETHODIMP QueryInterface(REFIID wanted, void** found) override {
    if (wanted == __uuidof(IUnknown) || wanted == __uuidof(IOleClientSite))
      *found = static_cast<IOleClientSite*>(this);
    else if (wanted == __uuidof(IOleWindow) || wanted == __uuidof(IOleInPlaceSite))
      *found = static_cast<IOleInPlaceSite*>(this);
    else if (wanted == __uuidof(IOleInPlaceUIWindow) || wanted == __uuidof(IOleInPlaceFrame))
      *found = static_cast<IOleInPlaceFrame*>(this);
    else
      *found = nullptr;
    if (*found == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  // IOleClientSite
  STDMETHODIMP SaveObject() override { return E_NOTIMPL; }
  STDMETHODIMP GetMoniker(DWORD /*assign*/, DWORD /*which*/, IMoniker** moniker) override {
    *moniker = nullptr;
    return E_NOTIMPL;
  }
  STDMETHODIMP GetContainer(IOleContainer** container) override {
    *container = nullptr;
    return E_NOINTERFACE;
  }
  STDMETHODIMP ShowObject() override { return S_OK; }
  STDMETHODIMP OnShowWindow(WINBOOL /*shown*/) override { return S_OK; }
  STDMETHODIMP RequestNewObjectLayout() override { return E_NOTIMPL; }

  // IOleWindow, as site and as frame
  STDMETHODIMP GetWindow(HWND* window) override {
    *window = window_;
    return S_OK;
  }
  STDMETHODIMP ContextSensitiveHelp(WINBOOL /*enter*/) override { return E_NOTIMPL; }

  // IOleInPlaceSite
  STDMETHODIMP CanInPlaceActivate() override { return S_OK; }
  STDMETHODIMP OnInPlaceActivate() override { return S_OK; }
  STDMETHODIMP OnUIActivate() override { return S_OK; }
  STDMETHODIMP GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** document,
                                RECT* position, RECT* clip, OLEINPLACEFRAMEINFO* info) override {
    AddRef();
    *frame = this;
    *document = nullptr;  // the frame's window is the document's
    *position = kControlArea;
    *clip = kControlArea;
    info->fMDIApp = FALSE;
    info->hwndFrame = window_;
    info->haccel = nullptr;
    info->cAccelEntries = 0;
    return S_OK;
  }
  STDMETHODIMP Scroll(SIZE /*extent*/) override { return E_NOTIMPL; }
  STDMETHODIMP OnUIDeactivate(WINBOOL /*undoable*/) override { return S_OK; }
  STDMETHODIMP OnInPlaceDeactivate() override { return S_OK; }
  STDMETHODIMP DiscardUndoState() override { return S_OK; }
  STDMETHODIMP DeactivateAndUndo() override { return S_OK; }
  STDMETHODIMP OnPosRectChange(const RECT* /*position*/) override { return S_OK; }

  // IOleInPlaceFrame, which has neither menus nor tools
  STDMETHODIMP GetBorder(RECT* /*border*/) override { return INPLACE_E_NOTOOLSPACE; }
  STDMETHODIMP RequestBorderSpace(const BORDERWIDTHS* /*widths*/) override {
    return INPLACE_E_NOTOOLSPACE;
  }
  STDMETHODIMP SetBorderSpace(const BORDERWIDTHS* /*widths*/) override { return S_OK; }
  STDMETHODIMP SetActiveObject(IOleInPlaceActiveObject* /*active*/,
                               const wchar_t* /*name*/) override {
    return S_OK;
  }
  STDMETHODIMP InsertMenus(HMENU /*shared*/, OLEMENUGROUPWIDTHS* /*widths*/) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP SetMenu(HMENU /*shared*/, HOLEMENU /*descriptor*/, HWND /*active*/) override {
    return S_OK;
  }
  STDMETHODIMP RemoveMenus(HMENU /*shared*/) override { return E_NOTIMPL; }
  STDMETHODIMP SetStatusText(const wchar_t* /*text*/) override { return S_OK; }
  STDMETHODIMP EnableModeless(WINBOOL /*enable*/) override { return S_OK; }
  STDMETHODIMP TranslateAccelerator(MSG* /*message*/, WORD /*command*/) override { return S_FALSE; }

 private:
  HWND window_;
  ULONG references_ = 1;  // of one thread
};

OwnedWindow NewHiddenWindow() {
  OwnedWindow window(::CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_CLIPCHILDREN, 0, 0,
                                       kControlArea.right, kControlArea.bottom, nullptr, nullptr,
                                       ::GetModuleHandleW(nullptr), nullptr));
  if (!window) throw ComError(HRESULT_FROM_WIN32(::GetLastError()));
  return window;
}

void StartEmpty(IUnknown& control) {
  const auto persistence = QueryInterfaceOf<IPersistStreamInit>(control);
  if (persistence) CheckResult(persistence->InitNew());
}

}  // namespace

ControlHost::ControlHost(IUnknown& control) : control_(QueryInterfaceOf<IOleObject>(control)) {
  if (!control_) return;
  window_ = NewHiddenWindow();
  const ComPointer<IOleClientSite> site(new ControlSite(window_.get()));
  DWORD status = 0;
  if (FAILED(control_->GetMiscStatus(DVASPECT_CONTENT, &status))) status = 0;
  const bool site_first = (status & OLEMISC_SETCLIENTSITEFIRST) != 0;
  if (!site_first) StartEmpty(control);
  CheckResult(control_->SetClientSite(site.get()));
  if (site_first) StartEmpty(control);
  // A failure shows itself in what is asked of the control next, if it matters there.
  static_cast<void>(control_->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, site.get(), 0,
                                     window_.get(), &kControlArea));
}

ControlHost::~ControlHost() {
  if (!control_) return;
  control_->Close(OLECLOSE_NOSAVE);
  control_->SetClientSite(nullptr);
}

}  // namespace pxscheduler
