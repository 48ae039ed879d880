#pragma once

#include <unknwn.h>
#include <windows.h>

#include <memory>

namespace pxscheduler {

struct ComRelease {
  void operator()(IUnknown* object) const { object->Release(); }
};

// Owns one reference to an object.
template <typename Interface>
using ComPointer = std::unique_ptr<Interface, ComRelease>;

// A reference of its own to an object that somebody else owns.
template <typename Interface>
ComPointer<Interface> ShareComObject(Interface& object) {
  object.AddRef();
  return ComPointer<Interface>(&object);
}

// Another interface of the object, null where it lacks that.
template <typename Wanted>
ComPointer<Wanted> QueryInterfaceOf(IUnknown& object) {
  void* found = nullptr;
  if (FAILED(object.QueryInterface(__uuidof(Wanted), &found))) return nullptr;
  return ComPointer<Wanted>(static_cast<Wanted*>(found));
}

}  // namespace pxscheduler
