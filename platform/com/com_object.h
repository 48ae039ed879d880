#pragma once

#include <oaidl.h>
#include <objbase.h>
#include <windows.h>

#include <initializer_list>
#include <map>
#include <optional>
#include <string>

#include "platform/com/com_pointer.h"
#include "platform/com/variant.h"

namespace pxscheduler {

// Keeps the component object model ready on this thread, for in-process classes that belong to one
// thread, windows of controls included. Whoever holds an object holds an apartment too, which must
// be destroyed after it.
class ComApartment {
 public:
  ComApartment();
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;
  ~ComApartment();

 private:
  bool entered_;
};

// The identifier of the class that is registered under this name, for instance "ADODB.Connection",
// with an in-process server that this program could load: one of the other word size does not
// count.
std::optional<CLSID> FindClass(const std::wstring& program_id);

// An object that is used through its dispatch interface alone. Every call raises what the object
// raises, as ComException and ComError put it.
class ComObject {
 public:
  using Arguments = std::initializer_list<Variant>;

  explicit ComObject(ComPointer<IDispatch> object) : object_(std::move(object)) {}
  // Raises ObjectRequired (424) for a value that is no object.
  explicit ComObject(const Variant& value);
  // A new object of the class. Raises CannotCreateObject (429), or CLASS_E_NOTLICENSED
  // (-2147221230) where the class is licensed to other programs only.
  static ComObject Create(const std::wstring& program_id);

  // Members by their name.
  Variant Call(const std::wstring& name, Arguments arguments) const;
  Variant Get(const std::wstring& name, Arguments arguments = {}) const;
  void Put(const std::wstring& name, Variant value) const;

  // Members by their dispatch identifier. The arguments come first to last; of a property that is
  // put, the value is the last.
  Variant Call(DISPID member, Arguments arguments) const;
  Variant Get(DISPID member, Arguments arguments = {}) const;
  void Put(DISPID member, Arguments arguments) const;

  IDispatch& Dispatch() const { return *object_; }

 private:
  DISPID IdentifierOf(const std::wstring& name) const;
  Variant Invoke(DISPID member, WORD kind, Arguments arguments) const;

  ComPointer<IDispatch> object_;
  mutable std::map<std::wstring, DISPID> identifiers_;  // those that were asked for
};

}  // namespace pxscheduler
