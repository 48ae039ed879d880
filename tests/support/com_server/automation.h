#pragma once

#include <ole2.h>
#include <oleauto.h>
#include <windows.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/com_server/com_server.h"

namespace pxscheduler {

using Arguments = std::vector<VARIANT>;  // first to last, borrowed

// An object that is used through its dispatch interface.
class Automation : public IDispatch {
 public:
  // Carries out a call. `result` is empty before.
  using Member = std::function<HRESULT(const Arguments& arguments, VARIANT& result)>;

  // A member's identifier is its place among them, 1-based.
  Automation(ComScript& script, std::string name,
             std::vector<std::pair<std::wstring, Member>> members)
      : script_(script), name_(std::move(name)), members_(std::move(members)) {}
  Automation(const Automation&) = delete;
  Automation& operator=(const Automation&) = delete;
  virtual ~Automation() = default;

  STDMETHODIMP QueryInterface(REFIID wanted, void** found) override;
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override;
  STDMETHODIMP GetTypeInfoCount(UINT* count) override;
  STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
  STDMETHODIMP GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                             DISPID* identifiers) override;
  STDMETHODIMP Invoke(DISPID member, REFIID reserved, LCID locale, WORD kind,
                      DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* details,
                      UINT* wrong_argument) override;

  const std::string& Name() const { return name_; }

 protected:
  void Record(const std::string& what) { script_.calls.push_back(name_ + what); }
  // For objects without names of members.
  virtual HRESULT Carry(DISPID member, WORD kind, const Arguments& arguments, VARIANT& result);

 private:
  ComScript& script_;
  std::string name_;
  std::vector<std::pair<std::wstring, Member>> members_;
  ULONG references_ = 1;
};

HRESULT Give(VARIANT& result, LONG number);
HRESULT Give(VARIANT& result, const std::wstring& text);
HRESULT Give(VARIANT& result, IDispatch* object);  // with the caller's reference

// The caller owns the first reference.
IDispatch* NewConnectionObject(ComScript& script);
IDispatch* NewRecordsetObject(ComScript& script);
IDispatch* NewTextControlObject(ComScript& script);

}  // namespace pxscheduler
