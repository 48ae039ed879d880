#pragma once

#include <ole2.h>
#include <oleauto.h>
#include <windows.h>

#include <atomic>
#include <string>
#include <vector>

namespace pxscheduler {

std::wstring EnvironmentText(const wchar_t* name);
std::string ReadWhole(const std::wstring& path);
void Record(const std::wstring& line);
BSTR NewText(const std::wstring& text);

using Arguments = std::vector<VARIANT>;  // first to last, borrowed

// An object of the server that is used through its dispatch interface. Every call is recorded as
// "Name.Member(argument, ...)", "Name.Member" or "Name.Member = value" before it is carried out.
class Automation : public IDispatch {
 public:
  Automation(std::wstring name, std::vector<std::wstring> members)
      : name_(std::move(name)), members_(std::move(members)) {}
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

  const std::wstring& Name() const { return name_; }

 protected:
  // `member` is what GetIDsOfNames gave: 1-based, in the order of the constructor.
  virtual HRESULT Carry(DISPID member, WORD kind, const Arguments& arguments, VARIANT* result) = 0;

 private:
  std::wstring name_;
  std::vector<std::wstring> members_;
  ULONG references_ = 1;
};

// The caller owns the first reference.
IDispatch* NewConnectionObject();
IDispatch* NewRecordsetObject();
IDispatch* NewTextControlObject();

}  // namespace pxscheduler
